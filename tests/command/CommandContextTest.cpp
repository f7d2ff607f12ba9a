#include <string>
#include <vector>

#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

std::vector<std::string> s_handled;
void Handle(const char* text) { s_handled.emplace_back(text); }

class CommandContext : public StartedTest {
protected:
    void SetUp() override
    {
        StartedTest::SetUp();
        s_handled.clear();
    }
};

// A context for the named function whose messages land in s_handled.
struct Watched : CVeskCommandContext {
    explicit Watched(const char* function)
    {
        SetErrorHandler(&Handle);
        SetCalledFunctionName(function);
    }
};

// The Number fetched under name, or -999 when the fetch fails.
double Num(CVeskCommandContext& context, const char* name)
{
    double value = -999;
    return context.GetParam(name, &value, 0) ? value : -999;
}

// One target of every plain kind, fetched under its own name.
struct Targets {
    int b = 7;
    double d = 7, *dr = nullptr;
    CDorlString s{"x"}, *sr = nullptr;
    CVeskGenericData* v = nullptr;
    int Fetch(CVeskCommandContext& context)
    {
        int fetched = context.GetParam("b", &b, 0);
        fetched += context.GetParam("d", &d, 0);
        fetched += context.GetParam("dr", &dr, 0);
        fetched += context.GetParam("s", &s, 0);
        fetched += context.GetParam("sr", &sr, 0);
        return fetched + context.GetParam("v", &v, 0);
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

// Records what a query call describes: name, type, by-reference flag, optional flag.
class QueryRecorder : public CVeskSimpleCommandObject {
public:
    int STDMETHODCALLTYPE CallMethod(CVeskCommandContext* context) override
    {
        CDorlString name, type;
        int byRef = -1, optional = -1;
        context->GetParam("name", &name, 0);
        context->GetParam("type", &type, 0);
        context->GetParam("byRef", &byRef, 0);
        context->GetParam("optional", &optional, 0);
        EXPECT_EQ(context->CanProceed(0), 1);
        calls.push_back(std::string(name) + "|" + std::string(type) + "|" + std::to_string(byRef) +
                        "|" + std::to_string(optional));
        return 1;
    }
    std::vector<std::string> calls;
};

} // namespace

TEST_F(CommandContext, ReturnValueStartsAsNoneAndCanBeTakenOnce)
{
    CVeskCommandContext context;
    Ref<CVeskGenericData> first(context.GetReturnValue());
    EXPECT_EQ(first.get(), CVeskGdNone::Allocate());
    EXPECT_EQ(context.GetReturnValueOnce(), CVeskGdNone::Allocate());
    EXPECT_EQ(context.GetReturnValue(), nullptr);

    // SetReturnValue takes its own reference; SetReturnValueNoRef takes the caller's.
    CVeskGdDouble* number = CVeskGdDouble::Allocate(7.0);
    context.SetReturnValue(number);
    EXPECT_EQ(number->Release(), 1u);
    CVeskGenericData* held = context.GetReturnValue();
    EXPECT_EQ(held, number);
    EXPECT_EQ(held->Release(), 1u);
    long before = Probe("Double");
    context.SetReturnValueNoRef(CVeskGdBoolean::Allocate(1));
    EXPECT_EQ(Probe("Double"), before - 1);
    context.SetReturnValueNoRef(nullptr);
    EXPECT_EQ(context.GetReturnValue(), nullptr);
}

TEST_F(CommandContext, PositionalParametersAreAStackAndOptionalOnesKeepTheDefault)
{
    Capture capture;
    CVeskCommandContext context;
    for (double value : {1.0, 2.0, 3.0})
        context.AddParam(DorlPchNil, value);
    // Names play no part for positional parameters.
    for (double expected : {3.0, 2.0, 1.0})
        EXPECT_EQ(Num(context, "any"), expected);
    EXPECT_EQ(context.GetNumParams(), 3);
    double value = 42.0;
    CDorlString text("default");
    EXPECT_EQ(context.GetParam("missing", &value, 1) + context.GetParam("missing", &text, 1), 0);
    EXPECT_EQ(value, 42.0);
    EXPECT_STREQ(text, "default");
    EXPECT_EQ(context.CanProceed(0), 1);
    EXPECT_TRUE(capture.dumps.empty());
}

TEST_F(CommandContext, TypeChecksHaveNoConversion)
{
    Watched context("f");
    context.AddParam("flag", 1);
    context.AddParam("null", CVeskGdNull::Allocate());
    context.AddParam("number", 2.0);
    context.AddParam("text", CDorlString("t"));
    double number = -1;
    int flag = -1;
    CDorlString text("untouched");
    EXPECT_EQ(context.GetParam("flag", &number, 0), 0);
    EXPECT_EQ(context.GetParam("null", &text, 0), 0);
    EXPECT_EQ(context.GetParam("number", &flag, 0), 0);
    EXPECT_EQ(context.GetParam("text", &number, 0), 0);
    EXPECT_EQ(number, -1);
    EXPECT_EQ(flag, -1);
    EXPECT_STREQ(text, "untouched");
    EXPECT_EQ(context.CanProceed(0), 0);
    // A mismatched parameter counts as used: no "not expected" message follows.
    std::vector<std::string> expected = {
        "Incorrect type for parameter 'flag', was Boolean, expected Number for function f",
        "Incorrect type for parameter 'null', was Null, expected String for function f",
        "Incorrect type for parameter 'number', was Number, expected Boolean for function f",
        "Incorrect type for parameter 'text', was String, expected Number for function f",
    };
    EXPECT_EQ(s_handled, expected);
}

TEST_F(CommandContext, EveryOverloadDeliversItsTargetOrTheDefault)
{
    Ref<CVeskGdString> any(CVeskGdString::Allocate("any"));
    {
        CVeskCommandContext context;
        context.AddParam("b", 1);
        context.AddParam("d", 2.5);
        context.AddParam("dr", 3.5);
        context.AddParam("s", CDorlString("text"));
        context.AddParam("sr", CDorlString("ref"));
        context.AddParam("v", any.get());
        EXPECT_EQ(any->AddRef(), 3u);
        any->Release();
        Targets got;
        EXPECT_EQ(got.Fetch(context), 6);
        EXPECT_EQ(got.b, 1);
        EXPECT_EQ(got.d, 2.5);
        EXPECT_EQ(*got.dr, 3.5);
        EXPECT_STREQ(got.s, "text");
        EXPECT_STREQ(*got.sr, "ref");
        EXPECT_EQ(got.v, any.get());
        got.v->Release(); // the reference moved to us
        EXPECT_EQ(context.CanProceed(0), 1);
    }
    Watched context("d");
    context.DefaultParameters();
    context.AddParam("wrong", CDorlString("text"));
    Targets got;
    EXPECT_EQ(got.Fetch(context), 6);
    EXPECT_EQ(got.b, 0);
    EXPECT_EQ(got.d, 0.0);
    EXPECT_EQ(*got.dr, 0.0);
    EXPECT_STREQ(got.s, "");
    EXPECT_STREQ(*got.sr, "");
    EXPECT_EQ(got.v, CVeskGdNone::Allocate());
    IVeskCommand* command = nullptr;
    CVeskGdIndirect* indirect = nullptr;
    EXPECT_EQ(context.GetParam("c", &command, 0), 1);
    EXPECT_EQ(command, nullptr);
    ASSERT_EQ(context.GetParam("i", &indirect, 0), 1);
    EXPECT_EQ(indirect->GetValue(0), CVeskGdNone::Allocate());
    indirect->Release();
    EXPECT_TRUE(s_handled.empty());
    // A wrong type still complains, delivers the default and blocks the call.
    EXPECT_EQ(context.GetParam("wrong", &got.d, 0), 1);
    EXPECT_EQ(got.d, 0.0);
    EXPECT_EQ(context.CanProceed(0), 0);
    EXPECT_EQ(s_handled, std::vector<std::string>{"Incorrect type for parameter 'wrong', was "
                                                  "String, expected Number for function d"});
}

TEST_F(CommandContext, PositionalFillsFetchesBeforeNames)
{
    {
        Watched context("cell");
        context.AddParam("colId", 2.0);
        context.AddParam(DorlPchNil, 1.0);
        EXPECT_EQ(Num(context, "rowId"), 1.0);
        EXPECT_EQ(Num(context, "colId"), 2.0);
        EXPECT_EQ(context.CanProceed(0), 1);
    }
    Watched context("cell");
    context.AddParam("colId", 2.0);
    context.AddParam(DorlPchNil, 1.0);
    EXPECT_EQ(Num(context, "colId"), 1.0);
    EXPECT_EQ(Num(context, "rowId"), -999);
    EXPECT_EQ(context.CanProceed(0), 0);
    std::vector<std::string> expected = {"Parameter 'rowId' missing for function cell",
                                         "Parameter 'colId' is not expected by function cell"};
    EXPECT_EQ(s_handled, expected);
}

TEST_F(CommandContext, ExcessUnexpectedAndReusedParameters)
{
    {
        Watched context("g");
        context.AddParam(DorlPchNil, 1.0);
        context.AddParam(DorlPchNil, 2.0);
        EXPECT_EQ(context.CanProceed(0), 0);
    }
    {
        Watched context("");
        context.AddParam(DorlPchNil, 1.0);
        context.AddParam(DorlPchNil, 2.0);
        EXPECT_EQ(context.CanProceed(1), 1);
    }
    {
        Watched context("g");
        context.AddParam("x", 1.0);
        context.AddParam("y", 1.0);
        EXPECT_EQ(context.CanProceed(1), 0);
    }
    {
        Watched context("g");
        context.FetchNamedOnly(1);
        context.AddParam(DorlPchNil, 5.0);
        context.AddParam("p", 6.0);
        EXPECT_EQ(Num(context, "p"), 6.0);
        EXPECT_EQ(context.CanProceed(0), 0);
    }
    {
        // The search stops at the newest match, which is used: the older one is never reached.
        Watched context("h");
        context.AddParam("n", 1.0);
        context.AddParam("n", 2.0);
        EXPECT_EQ(Num(context, "n"), 2.0);
        EXPECT_EQ(Num(context, "n"), -999);
        EXPECT_EQ(context.CanProceed(0), 0);
    }
    std::vector<std::string> expected = {
        "2 excess positional parameters supplied to g",
        "Parameter 'y' is not expected by function g",
        "Parameter 'x' is not expected by function g",
        "1 excess positional parameters supplied to g",
        "Parameter 'n' already used",
        "Parameter 'n' is not expected by function h",
    };
    EXPECT_EQ(s_handled, expected);
}

TEST_F(CommandContext, MessagesGoToTheHandlerOrDorlDumpAndStayWithinTheBuffer)
{
    Capture capture;
    CVeskCommandContext context;
    double value;
    EXPECT_EQ(context.GetParam("x", &value, 0), 0);
    // The function name is empty unless the caller set it.
    EXPECT_EQ(capture.dumps, std::vector<std::string>{"Parameter 'x' missing for function \n"});

    context.SetErrorHandler(&Handle);
    context.OutputErrorString("to handler %d", 1);
    std::string longName(10000, 'n');
    context.SetCalledFunctionName(CDorlString(longName.c_str()));
    EXPECT_EQ(context.GetParam(longName.c_str(), &value, 0), 0);
    context.SetErrorHandler(nullptr);
    context.OutputErrorString("to dump %s", "again");
    ASSERT_EQ(s_handled.size(), 2u);
    EXPECT_EQ(s_handled[0], "to handler 1");
    EXPECT_EQ(s_handled[1].size(), 2047u);
    EXPECT_EQ(s_handled[1].substr(0, 11), "Parameter '");
    EXPECT_EQ(capture.dumps.back(), "to dump again\n");
}

TEST_F(CommandContext, ObjectsAreDeliveredWithAReferenceAndTheTargetIsReleasedFirst)
{
    CPlain* plain = new CPlain();
    CPlain* previous = new CPlain();
    CVeskFreeFunctionObj* function = new CVeskFreeFunctionObj("g", "", nullptr);
    CDorlProberVariable* live = DorlFindProbe("\\Resources", "CVeskCOMObject");
    long liveBefore = live->GetValue();
    {
        Watched context("f");
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

TEST_F(CommandContext, NullOrEmptyObjectsGiveNoObjectAndAWrongKindIsATypeError)
{
    CPlain* plain = new CPlain();
    Watched context("f");
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
    EXPECT_EQ(s_handled, expected);
    plain->Release();
}

TEST_F(CommandContext, IndirectsCarryWritesBackToTheCaller)
{
    Ref<CVeskGdIndirect> callerSlot(CVeskGdIndirect::Allocate());
    Ref<CVeskGdDouble> two(CVeskGdDouble::Allocate(2));
    callerSlot->SetValue(two.get());
    {
        Watched context("f");
        context.AddParam("byRef", callerSlot.get());
        context.AddParam("direct", 5.0);
        context.AddParam("plain", callerSlot.get());

        // The parameter's type is what the indirect refers to when it was added.
        EXPECT_EQ(Num(context, "plain"), 2.0);

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

TEST_F(CommandContext, QueryCallsDescribeInsteadOfFetching)
{
    QueryRecorder* recorder = new QueryRecorder();
    {
        CVeskCommandContext context;
        context.QueryParameters(recorder);
        EXPECT_EQ(recorder->AddRef(), 3u);
        recorder->Release();
        context.AddParam("s", CDorlString("not fetched"));
        CDorlString text("kept");
        double* number = nullptr;
        CVeskGenericData* any = nullptr;
        int flag = 0;
        EXPECT_EQ(context.GetParam("s", &text, 0), 0);
        EXPECT_EQ(context.GetParam("n", &number, 1), 0);
        EXPECT_EQ(context.GetParam("v", &any, 0), 0);
        EXPECT_EQ(context.GetParam("f", &flag, 1), 0);
        IUnknown* unknown = nullptr;
        IVeskCommand* command = nullptr;
        CVeskGdIndirect* indirect = nullptr;
        void* pv = nullptr;
        EXPECT_EQ(context.GetParam("a", &unknown, 0), 0);
        EXPECT_EQ(context.GetParam("b", &command, 0), 0);
        EXPECT_EQ(context.GetParam("c", IID_IVeskCommand, &pv, 0, "inner"), 0);
        EXPECT_EQ(context.GetParam("d", &indirect, 0), 0);
        EXPECT_EQ(context.CanProceed(1), 0);
        EXPECT_STREQ(text, "kept");
        EXPECT_EQ(any, nullptr);
    }
    std::vector<std::string> expected = {"s|String|0|0",
                                         "n|Number|1|1",
                                         "v|Any|0|0",
                                         "f|Boolean|0|1",
                                         "a|IUnknown|0|0",
                                         "b|IVeskCommand|0|0",
                                         "c|IVeskCommand(inner)|0|0",
                                         "d|Any|1|0",
                                         "|any|0|1"};
    EXPECT_EQ(recorder->calls, expected);
    EXPECT_EQ(recorder->Release(), 0u);

    // Without a query object the descriptions are discarded and nothing is fetched.
    Capture capture;
    CVeskCommandContext discarded;
    discarded.QueryParameters(nullptr);
    discarded.AddParam(DorlPchNil, 1.0);
    double value = 3;
    EXPECT_EQ(discarded.GetParam("x", &value, 0), 0);
    EXPECT_EQ(value, 3);
    EXPECT_EQ(discarded.CanProceed(1), 0);
    EXPECT_EQ(discarded.CanProceed(0), 0);
    EXPECT_TRUE(capture.dumps.empty());
}

TEST_F(CommandContext, TransferMovesWhatWasNotFetchedAndTheDestructorReleasesTheRest)
{
    Capture capture;
    long doubles = Probe("Double"), strings = Probe("String");
    {
        // Twelve positional (0..11) and six named, so the table overflows between both ends.
        CVeskCommandContext source;
        for (int i = 0; i < 12; ++i)
            source.AddParam(DorlPchNil, static_cast<double>(i));
        const char* names[] = {"a", "b", "c", "d", "e", "f"};
        for (int i = 0; i < 6; ++i)
            source.AddParam(names[i], 10.0 + i);
        EXPECT_EQ(source.GetNumParams(), 18);
        EXPECT_EQ(Num(source, "p"), 11);
        source.FetchNamedOnly(1);
        EXPECT_EQ(Num(source, "f"), 15);

        CVeskCommandContext target;
        target.TransferContext(&source);
        EXPECT_EQ(target.GetNumParams(), 16);
        EXPECT_EQ(source.GetNumParams(), 2);
        // Source keeps only what was fetched, and nothing is left to complain about.
        EXPECT_EQ(source.CanProceed(0), 1);
        EXPECT_EQ(Probe("Double"), doubles + 18);
        for (int i = 10; i >= 0; --i)
            EXPECT_EQ(Num(target, "p"), i);
        for (int i = 4; i >= 0; --i)
            EXPECT_EQ(Num(target, names[i]), 10.0 + i);
        EXPECT_EQ(target.CanProceed(0), 1);
        // Twenty more: the table doubles again.
        for (int i = 0; i < 20; ++i)
            target.AddParam(DorlPchNil, 1.0);
        EXPECT_EQ(target.GetNumParams(), 36);

        CVeskCommandContext context;
        context.AddParam("a", CDorlString("x"));
        context.AddParam(DorlPchNil, CDorlString("y"));
        CVeskGenericData* fetched = nullptr;
        ASSERT_EQ(context.GetParam("p", &fetched, 0), 1);
        EXPECT_EQ(Probe("String"), strings + 2);
        fetched->Release();
        EXPECT_EQ(Probe("String"), strings + 1);
    }
    EXPECT_EQ(Probe("Double"), doubles);
    EXPECT_EQ(Probe("String"), strings);
    EXPECT_TRUE(capture.dumps.empty());
}
