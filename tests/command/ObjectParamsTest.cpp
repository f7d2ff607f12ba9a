#include <string>
#include <vector>

#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

std::vector<std::string> s_messages;
void Keep(const char* text) { s_messages.emplace_back(text); }

class ObjectParams : public StartedTest {
protected:
    void SetUp() override
    {
        StartedTest::SetUp();
        s_messages.clear();
    }
};

struct Watched : CVeskCommandContext {
    Watched()
    {
        SetErrorHandler(&Keep);
        SetCalledFunctionName("f");
    }
};

const IID IID_ITestPlain = {0x5e5e0301, 0x0001, 0x0001, {1, 2, 3, 4, 5, 6, 7, 8}};

// An object that speaks neither the protocol nor automation.
class CPlain : public CVeskCOMObject {
    VESK_DECLARE_INTERFACE_MAP(CPlain)
    VESK_BEGIN_INTERFACE_PART(TestPlain, IUnknown)
    VESK_END_INTERFACE_PART(TestPlain)
    LONG Count() const { return m_dwRef; }
};

VESK_BEGIN_INTERFACE_MAP(CPlain, CVeskCOMObject)
    VESK_INTERFACE(IID_ITestPlain, TestPlain)
VESK_END_INTERFACE_MAP()

class QueryRecorder : public CVeskSimpleCommandObject {
public:
    int STDMETHODCALLTYPE CallMethod(CVeskCommandContext* context) override
    {
        CDorlString name, type;
        int byRef = 0, optional = 0;
        context->GetParam("name", &name, 0);
        context->GetParam("type", &type, 0);
        context->GetParam("byRef", &byRef, 0);
        context->GetParam("optional", &optional, 0);
        calls.push_back(std::string(type) + "|" + std::to_string(byRef));
        return 1;
    }
    std::vector<std::string> calls;
};

} // namespace

TEST_F(ObjectParams, ObjectsAreDeliveredWithAReferenceAndTheTargetIsReleasedFirst)
{
    CPlain* plain = new CPlain();
    CPlain* previous = new CPlain();
    CVeskFreeFunctionObj* function = new CVeskFreeFunctionObj("g", "", nullptr);
    CDorlProberVariable* live = DorlFindProbe("\\Resources", "CVeskCOMObject");
    long liveBefore = live->GetValue();
    {
        Watched context;
        context.AddParam("plain", plain); // as a counted object
        context.AddParam("command", static_cast<IUnknown*>(function));
        EXPECT_EQ(plain->Count(), 2);
        IUnknown* unknown = static_cast<IUnknown*>(&previous->m_xTestPlain);
        ASSERT_EQ(context.GetParam("plain", &unknown, 0), 1);
        EXPECT_EQ(unknown, static_cast<IUnknown*>(&plain->m_xTestPlain));
        EXPECT_EQ(plain->Count(), 3);
        unknown->Release();

        IVeskCommand* command = nullptr;
        ASSERT_EQ(context.GetParam("command", &command, 0), 1);
        EXPECT_EQ(command, static_cast<IVeskCommand*>(function));
        command->Release();
        EXPECT_EQ(context.CanProceed(0), 1);
    }
    EXPECT_EQ(plain->Count(), 1);
    EXPECT_EQ(function->Release(), 0u);
    plain->Release();
    // The target's old reference was given up, so that object is gone too.
    EXPECT_EQ(live->GetValue(), liveBefore - 2);
}

TEST_F(ObjectParams, NullOrEmptyObjectsGiveNoObjectAndAWrongKindIsATypeError)
{
    CPlain* plain = new CPlain();
    Watched context;
    context.AddParamNoRef("empty", CVeskGdObject::Allocate(nullptr, 1));
    context.AddParam("null", CVeskGdNull::Allocate());
    context.AddParamNoRef("empty2", CVeskGdObject::Allocate(nullptr, 1));
    for (const char* name : {"p", "q", "r"})
        context.AddParam(name, static_cast<IUnknown*>(&plain->m_xTestPlain));
    IUnknown* unknown = nullptr;
    IVeskCommand* command = nullptr;
    void* pv = nullptr;
    EXPECT_EQ(context.GetParam("null", &unknown, 0), 1);
    EXPECT_EQ(context.GetParam("empty", &command, 0), 1);
    EXPECT_EQ(context.GetParam("empty2", IID_ITestPlain, &pv, 0, DorlPchNil), 1);
    EXPECT_EQ(unknown, nullptr);
    EXPECT_EQ(command, nullptr);
    EXPECT_EQ(pv, nullptr);
    EXPECT_EQ(context.GetParam("p", &command, 0), 0);
    EXPECT_EQ(context.GetParam("q", IID_IVeskEnumerate, &pv, 0, DorlPchNil), 0);
    EXPECT_EQ(context.GetParam("r", IID_IVeskDLL, &pv, 0, "owner"), 0);
    EXPECT_EQ(context.CanProceed(0), 0);
    std::vector<std::string> expected = {
        "Incorrect type for parameter 'p', expected IVeskCommand for function f",
        "Incorrect type for parameter 'q', expected IVeskEnumerate for function f",
        "Incorrect type for parameter 'r', expected "
        "067f5721-8416-11d0-bdfd-0020af6fa161(owner) for function f"};
    EXPECT_EQ(s_messages, expected);
    plain->Release();
}

TEST_F(ObjectParams, IndirectsCarryWritesBackToTheCaller)
{
    Ref<CVeskGdIndirect> callerSlot(CVeskGdIndirect::Allocate());
    Ref<CVeskGdDouble> two(CVeskGdDouble::Allocate(2));
    callerSlot->SetValue(two.get());
    {
        Watched context;
        context.AddParam("byRef", callerSlot.get());
        context.AddParam("direct", 5.0);
        context.AddParam("plain", callerSlot.get());

        // The parameter's type is what the indirect refers to when it was added.
        double plainValue = 0;
        ASSERT_EQ(context.GetParam("plain", &plainValue, 0), 1);
        EXPECT_EQ(plainValue, 2.0);

        CVeskGdIndirect* out = nullptr;
        ASSERT_EQ(context.GetParam("byRef", &out, 0), 1);
        EXPECT_EQ(out, callerSlot.get());
        Ref<CVeskGdString> answer(CVeskGdString::Allocate("answer"));
        out->SetValue(answer.get());
        out->Release();

        CVeskGdIndirect* local = nullptr;
        ASSERT_EQ(context.GetParam("direct", &local, 0), 1);
        EXPECT_NE(local, nullptr);
        EXPECT_EQ(static_cast<CVeskGdDouble*>(local->GetValue(0))->m_dValue, 5.0);
        local->SetValue(answer.get());
        local->Release();
        EXPECT_EQ(context.CanProceed(0), 1);
    }
    EXPECT_EQ(Text(callerSlot->GetValue(0)), "answer");
}

TEST_F(ObjectParams, DefaultsAndQueriesCoverTheObjectForms)
{
    {
        Watched context;
        context.DefaultParameters();
        IVeskCommand* command = nullptr;
        CVeskGdIndirect* indirect = nullptr;
        EXPECT_EQ(context.GetParam("missing", &command, 0), 1);
        EXPECT_EQ(command, nullptr);
        ASSERT_EQ(context.GetParam("missing2", &indirect, 0), 1);
        EXPECT_EQ(indirect->GetValue(0), CVeskGdNone::Allocate());
        indirect->Release();
        EXPECT_TRUE(s_messages.empty());
    }
    QueryRecorder* recorder = new QueryRecorder();
    {
        CVeskCommandContext context;
        context.QueryParameters(recorder);
        IUnknown* unknown = nullptr;
        IVeskCommand* command = nullptr;
        CVeskGdIndirect* indirect = nullptr;
        void* pv = nullptr;
        EXPECT_EQ(context.GetParam("a", &unknown, 0), 0);
        EXPECT_EQ(context.GetParam("b", &command, 0), 0);
        EXPECT_EQ(context.GetParam("c", IID_IVeskCommand, &pv, 0, "inner"), 0);
        EXPECT_EQ(context.GetParam("d", &indirect, 0), 0);
    }
    std::vector<std::string> expected = {"IUnknown|0", "IVeskCommand|0", "IVeskCommand(inner)|0",
                                         "Any|1"};
    EXPECT_EQ(recorder->calls, expected);
    recorder->Release();
}
