#include <map>
#include <set>
#include <string>

#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

class PropertyAccessor : public StartedTest {};

// An object with stored properties. It hands out copies, as components do, and refuses to
// store a read-only one.
class PropertyBag : public CVeskSimpleCommandObject {
public:
    ~PropertyBag() override
    {
        for (auto& [name, value] : m_values)
            value->Release();
    }
    // Takes over the reference of value.
    void Put(const std::string& name, CVeskGenericData* value, bool bReadOnly = false)
    {
        std::swap(m_values[name], value);
        if (value)
            value->Release();
        if (bReadOnly)
            m_readOnly.insert(name);
    }
    std::string Printed(const std::string& name) { return vesk_test::Printed(m_values[name]); }

    CVeskGenericData* STDMETHODCALLTYPE GetProperty(const CDorlString& name, int) override
    {
        auto found = m_values.find(std::string(name));
        return found == m_values.end() ? nullptr : found->second->Copy();
    }
    int STDMETHODCALLTYPE SetProperty(const CDorlString& name, CVeskGenericData* value) override
    {
        ++m_nWrites;
        if (m_readOnly.count(std::string(name)))
            return 0;
        Put(std::string(name), value->Copy());
        return 1;
    }

    int m_nWrites = 0;

private:
    std::map<std::string, CVeskGenericData*> m_values;
    std::set<std::string> m_readOnly;
};

int s_nCalls = 0;
int Twice(CVeskCommandContext* context)
{
    double value = 0;
    context->GetParam("value", &value, 0);
    ++s_nCalls;
    context->SetReturnValueNoRef(CVeskGdDouble::Allocate(2 * value));
    return 1;
}

} // namespace

TEST_F(PropertyAccessor, ReadsTakeNoConversionAndReportAnIndexPastTheEnd)
{
    Ref<PropertyBag> bag(new PropertyBag);
    bag->Put("null", CVeskGdNull::Allocate());
    bag->Put("flag", CVeskGdBoolean::Allocate(1));
    bag->Put("level", CVeskGdDouble::Allocate(-2.7));
    bag->Put("huge", CVeskGdDouble::Allocate(1e300));
    bag->Put("name", CVeskGdString::Allocate("pump"));
    bag->Put("list", MakeVector({CVeskGdDouble::Allocate(1.5), CVeskGdString::Allocate("two")}));
    CVeskPropertyAccessor accessor(bag.get());
    Capture capture;

    struct TypeCase {
        const char* name;
        int index;
        int type;
    };
    for (const TypeCase& each : {TypeCase{"missing", -1, -1},
                                 {"null", -1, 1},
                                 {"flag", -1, 2},
                                 {"list", -1, 5},
                                 {"list", 1, 4},
                                 {"name", 0, -1}})
        EXPECT_EQ(accessor.GetType(each.name, each.index), each.type) << each.name;

    CDorlString text;
    int flag = 0;
    double number = 0;
    long whole = 0;
    EXPECT_TRUE(accessor.GetString("name", text, -1) && text == "pump");
    EXPECT_TRUE(accessor.GetString("list", text, 1) && text == "two");
    EXPECT_TRUE(accessor.GetBool("flag", flag, -1) && flag == 1);
    EXPECT_TRUE(accessor.GetDouble("list", number, 0) && number == 1.5);
    EXPECT_TRUE(accessor.GetLong("level", whole, -1) && whole == -2);
    EXPECT_TRUE(accessor.GetLong("huge", whole, -1) && whole == std::numeric_limits<long>::max());
    EXPECT_EQ(accessor.GetString("level", text, -1), 0);
    EXPECT_EQ(accessor.GetLong("flag", whole, -1), 0);
    EXPECT_EQ(accessor.GetDouble("missing", number, -1), 0);
    EXPECT_EQ(capture.Asserted(), "");

    number = 7;
    EXPECT_EQ(accessor.GetDouble("list", number, 2), 0);
    EXPECT_EQ(number, 7);
    EXPECT_EQ(capture.Asserted(), "nIndex < pVector->GetSize()@PropertyAccessor;");

    int length = 0;
    EXPECT_TRUE(accessor.GetVectorLength("list", length) && length == 2);
    EXPECT_TRUE(!accessor.GetVectorLength("name", length) && length == -1);
}

TEST_F(PropertyAccessor, WritesGoThroughTheObjectAndAnElementWriteStoresTheVectorBack)
{
    Ref<PropertyBag> bag(new PropertyBag);
    bag->Put("list", MakeVector({CVeskGdDouble::Allocate(1)}));
    bag->Put("fixed", MakeVector({CVeskGdDouble::Allocate(1)}), true);
    bag->Put("name", CVeskGdString::Allocate("pump"));
    CVeskPropertyAccessor accessor(bag.get());
    Capture capture;

    EXPECT_EQ(accessor.SetBool("flag", 5, -1), 1);
    EXPECT_EQ(bag->Printed("flag"), "True");
    EXPECT_EQ(accessor.SetLong("count", -3, -1), 1);
    EXPECT_EQ(accessor.GetType("count", -1), 3) << "a long goes in as a Number";
    EXPECT_EQ(accessor.SetString("fixed", "x", -1), 0);

    EXPECT_EQ(accessor.SetDouble("list", 2.5, 1), 1);
    EXPECT_EQ(bag->Printed("list"), "[1, 2.5]");
    EXPECT_EQ(capture.Asserted(), "") << "growing by one is no error when writing";

    int writes = bag->m_nWrites;
    EXPECT_EQ(accessor.SetString("fixed", "x", 0), 1) << "the result is that of the element";
    EXPECT_EQ(bag->m_nWrites, writes + 1);
    EXPECT_EQ(bag->Printed("fixed"), "[1]");
    EXPECT_EQ(accessor.SetString("name", "x", 0), 0);
    EXPECT_EQ(accessor.SetString("missing", "x", 0), 0);
    EXPECT_EQ(bag->m_nWrites, writes + 1) << "nothing is written without a vector";
}

TEST_F(PropertyAccessor, CallFunctionCallsOnlyAnObjectAndANullObjectDoesNothing)
{
    Ref<PropertyBag> bag(new PropertyBag);
    CVeskFreeFunctionObj* function = new CVeskFreeFunctionObj("twice", "", &Twice);
    bag->Put("twice", CVeskGdObject::Allocate(function, 0));
    function->Release();
    bag->Put("name", CVeskGdString::Allocate("pump"));
    CVeskPropertyAccessor accessor(bag.get());

    s_nCalls = 0;
    CVeskCommandContext context;
    context.AddParam("value", 21.0);
    EXPECT_EQ(accessor.CallFunction("twice", context), 1);
    EXPECT_EQ(Printed(Ref<CVeskGenericData>(context.GetReturnValue()).get()), "42");
    CVeskCommandContext unused;
    EXPECT_EQ(accessor.CallFunction("name", unused), 0);
    EXPECT_EQ(accessor.CallFunction("missing", unused), 0);
    EXPECT_EQ(s_nCalls, 1);

    accessor.SetCommand(nullptr);
    int length = 0;
    EXPECT_EQ(accessor.GetType("name", -1), -1);
    EXPECT_EQ(accessor.SetBool("name", 1, -1) + accessor.CallFunction("twice", unused), 0);
    EXPECT_TRUE(!accessor.GetVectorLength("list", length) && length == -1);
}
