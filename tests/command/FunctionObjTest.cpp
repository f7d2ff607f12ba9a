#include <string>
#include <vector>

#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

class FunctionObjects : public StartedTest {};

// Keeps to the callee's side of the protocol: fetch, check, work, return 1.
int Sum(CVeskCommandContext* context)
{
    double a = 0, b = 0;
    context->GetParam("a", &a, 0);
    context->GetParam("b", &b, 0);
    if (!context->CanProceed(0))
        return 1;
    context->SetReturnValueNoRef(CVeskGdDouble::Allocate(a + b));
    return 1;
}

std::vector<std::string> s_handled;
void Handle(const char* text) { s_handled.emplace_back(text); }

} // namespace

TEST_F(FunctionObjects, FreeFunctionIsCalledThroughTheProtocol)
{
    CVeskFreeFunctionObj* sum = new CVeskFreeFunctionObj("sum", "Adds two numbers", &Sum);
    {
        CVeskCommandContext context;
        context.AddParam(DorlPchNil, 2.0);
        context.AddParam(DorlPchNil, 40.0);
        ASSERT_EQ(sum->CallMethod(&context), 1);
        Ref<CVeskGenericData> result(context.GetReturnValue());
        ASSERT_EQ(result->GetType(), CVeskGenericData::dtNumber);
        EXPECT_EQ(static_cast<CVeskGdDouble*>(result.get())->m_dValue, 42.0);
    }
    {
        // Wrong parameters: still 1, the complaint went through the context.
        s_handled.clear();
        CVeskCommandContext context;
        context.SetErrorHandler(&Handle);
        context.SetCalledFunctionName("sum");
        context.AddParam("a", CDorlString("2"));
        context.AddParam("b", 1.0);
        EXPECT_EQ(sum->CallMethod(&context), 1);
        Ref<CVeskGenericData> result(context.GetReturnValue());
        EXPECT_EQ(result.get(), CVeskGdNone::Allocate());
        EXPECT_EQ(s_handled, std::vector<std::string>{"Incorrect type for parameter 'a', was "
                                                      "String, expected Number for function sum"});
    }
    EXPECT_EQ(sum->Release(), 0u);
}

TEST_F(FunctionObjects, FunctionsDescribeThemselves)
{
    Ref<CVeskFreeFunctionObj> sum(new CVeskFreeFunctionObj("sum", "Adds two numbers", &Sum));
    EXPECT_EQ(sum->GetProperty("name", 1), nullptr);
    Ref<CVeskGenericData> name(sum->GetProperty("name", 0));
    Ref<CVeskGenericData> starName(sum->GetProperty("*name", 0));
    Ref<CVeskGenericData> description(sum->GetProperty("description", 0));
    EXPECT_EQ(Text(name.get()), "sum");
    EXPECT_EQ(Text(starName.get()), "sum");
    EXPECT_EQ(Text(description.get()), "Adds two numbers");
    EXPECT_EQ(sum->GetProperty("other", 0), nullptr);
    EXPECT_EQ(sum->SetProperty("name", name.get()), 0);

    CVeskPropertyEnum* properties = sum->GetPropertyEnumerator();
    std::vector<std::string> expected = {"name|Name of the function|String|0",
                                         "description|Description of the function|String|0"};
    EXPECT_EQ(Described(properties), expected);
    properties->Reset();
    EXPECT_EQ(Described(properties), expected);
    CVeskGenericData* value = nullptr;
    EXPECT_EQ(properties->GetCurrentValue(&value), 0);
    properties->Delete();
}

TEST_F(FunctionObjects, SimpleCommandObjectAnswersNothing)
{
    CVeskSimpleCommandObject* object = new CVeskSimpleCommandObject();
    CVeskCommandContext context;
    EXPECT_EQ(object->GetProperty("name", 0), nullptr);
    EXPECT_EQ(object->SetProperty("name", CVeskGdNull::Allocate()), 0);
    EXPECT_EQ(object->CallMethod(&context), 0);
    EXPECT_EQ(object->GetPropertyEnumerator(), nullptr);
    void* pv = nullptr;
    EXPECT_EQ(object->QueryInterface(IID_IVeskCommand, &pv), S_OK);
    EXPECT_EQ(pv, static_cast<IVeskCommand*>(object));
    EXPECT_EQ(object->QueryInterface(IID_IVeskEnumerate, &pv), E_NOINTERFACE);
    EXPECT_EQ(object->Release(), 1u);
    EXPECT_EQ(object->Release(), 0u);
}

TEST_F(FunctionObjects, ProxyForwardsUntilCleared)
{
    Ref<CVeskFreeFunctionObj> sum(new CVeskFreeFunctionObj("sum", "Adds", &Sum));
    CVeskObjectProxy* proxy = new CVeskObjectProxy(sum.get(), "summer");
    Capture capture;
    {
        Ref<CVeskGenericData> name(proxy->GetProperty("name", 0));
        EXPECT_EQ(Text(name.get()), "sum");
        CVeskCommandContext context;
        context.AddParam(DorlPchNil, 1.0);
        context.AddParam(DorlPchNil, 2.0);
        EXPECT_EQ(proxy->CallMethod(&context), 1);
        CVeskPropertyEnum* properties = proxy->GetPropertyEnumerator();
        EXPECT_EQ(Described(properties).size(), 2u);
        properties->Delete();
    }
    EXPECT_TRUE(capture.dumps.empty());

    proxy->ClearObject();
    Ref<CVeskGenericData> ghost(proxy->GetProperty("name", 0));
    EXPECT_EQ(Text(ghost.get()), "summer's ghost");
    Ref<CVeskGenericData> starGhost(proxy->GetProperty("*name", 0));
    EXPECT_EQ(Text(starGhost.get()), "summer's ghost");
    EXPECT_EQ(proxy->GetProperty("description", 0), nullptr);
    EXPECT_EQ(proxy->SetProperty("x", CVeskGdNull::Allocate()), 0);
    CVeskCommandContext context;
    EXPECT_EQ(proxy->CallMethod(&context), 0);
    CVeskPropertyEnum* properties = proxy->GetPropertyEnumerator();
    ASSERT_NE(properties, nullptr);
    EXPECT_TRUE(Described(properties).empty());
    CVeskGenericData* value = nullptr;
    EXPECT_EQ(properties->GetCurrentValue(&value), 0);
    properties->Delete();
    std::vector<std::string> expected(6, "Reference to defunct object summer");
    EXPECT_EQ(capture.dumps, expected);
    EXPECT_EQ(proxy->Release(), 0u);
}
