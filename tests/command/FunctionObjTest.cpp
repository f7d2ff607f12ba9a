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

// The named property as text, its reference given back.
std::string Prop(IVeskCommand* object, const char* name)
{
    return Text(Ref<CVeskGenericData>(object->GetProperty(name, 0)).get());
}

} // namespace

TEST_F(FunctionObjects, FreeFunctionIsCalledThroughTheProtocolAndDescribesItself)
{
    CVeskFreeFunctionObj* sum = new CVeskFreeFunctionObj("sum", "Adds two numbers", &Sum);
    {
        CVeskCommandContext context;
        context.AddParam(DorlPchNil, 2.0);
        context.AddParam(DorlPchNil, 40.0);
        ASSERT_EQ(sum->CallMethod(&context), 1);
        EXPECT_EQ(Printed(Ref<CVeskGenericData>(context.GetReturnValue()).get()), "42");
    }
    {
        // Wrong parameters: still 1, the complaint went through the context.
        Capture capture;
        CVeskCommandContext context;
        context.AddParam("a", CDorlString("2"));
        context.AddParam("b", 1.0);
        EXPECT_EQ(sum->CallMethod(&context), 1);
        EXPECT_EQ(Ref<CVeskGenericData>(context.GetReturnValue()).get(), CVeskGdNone::Allocate());
        EXPECT_EQ(capture.dumps.size(), 1u);
    }

    EXPECT_EQ(sum->GetProperty("name", 1), nullptr);
    EXPECT_EQ(Prop(sum, "name") + Prop(sum, "*name"), "sumsum");
    EXPECT_EQ(Prop(sum, "description"), "Adds two numbers");
    EXPECT_EQ(sum->GetProperty("other", 0), nullptr);
    Ref<CVeskGenericData> name(CVeskGdString::Allocate("other"));
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
    EXPECT_EQ(sum->Release(), 0u) << "calls and reads keep no reference";
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
        EXPECT_EQ(Prop(proxy, "name"), "sum");
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
    EXPECT_EQ(Prop(proxy, "name"), "summer's ghost");
    EXPECT_EQ(Prop(proxy, "*name"), "summer's ghost");
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
