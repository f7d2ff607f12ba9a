// A tour of the framework's core: values, a function called by name through the call protocol,
// the messages of a call with a wrong parameter, and the instance counters.

#include <iostream>

#include <vesk/vesk.h>

namespace {

// A function as the protocol sees it: fetch the parameters, ask whether to go on, work, answer.
int Describe(CVeskCommandContext* context)
{
    double width = 0;
    double height = 0;
    CDorlString unit("cm");
    context->GetParam("width", &width, 0);
    context->GetParam("height", &height, 0);
    context->GetParam("unit", &unit, 1);
    if (!context->CanProceed(0))
        return 1;

    CDorlString text;
    text.Format("%g x %g %s, area %g", width, height, static_cast<const char*>(unit),
                width * height);
    context->SetReturnValueNoRef(CVeskGdString::Allocate(text));
    return 1;
}

void PrintResult(const char* label, CVeskCommandContext& context)
{
    CVeskGenericData* result = context.GetReturnValue();
    std::cout << label << ": " << *result << " ("
              << CVeskGenericData::GetTypeName(result->GetType()) << ")\n";
    result->Release();
}

void PrintCounter(const char* name)
{
    CDorlProberVariable* probe = DorlFindProbe("\\Resources\\GenericData", name);
    std::cout << "  " << name << ": " << (probe ? probe->GetValue() : 0) << "\n";
}

void RouteDump(const char* text) { std::cout << "  [message] " << text; }

} // namespace

int main()
{
    // A host runs the library's start-up routine once after loading it.
    DorlRunInitialisers();
    DorlSetDumpHandler(&RouteDump);

    CVeskGdDouble* number = CVeskGdDouble::Allocate(2.5);
    CVeskGdString* text = CVeskGdString::Allocate("hello");
    std::cout << "values: " << *number << ", " << *text << ", " << *CVeskGdBoolean::Allocate(1)
              << ", " << *CVeskGdNull::Allocate() << ", " << *CVeskGdNone::Allocate() << "\n";

    // Values are objects of the protocol too.
    CVeskGenericData* length = text->GetProperty("length", 0);
    CVeskGenericData* name = number->GetProperty("name", 0);
    std::cout << "\"hello\".length = " << *length << ", (2.5).name = " << *name << "\n";
    length->Release();
    name->Release();

    CVeskFreeFunctionObj* describe =
        new CVeskFreeFunctionObj("describe", "Describes a rectangle", &Describe);

    {
        // Positional parameters are fetched last added first: add height, then width.
        CVeskCommandContext context;
        context.SetCalledFunctionName("describe");
        context.AddParam(DorlPchNil, 3.0);
        context.AddParam(DorlPchNil, 4.0);
        describe->CallMethod(&context);
        PrintResult("positional", context);
    }
    {
        CVeskCommandContext context;
        context.SetCalledFunctionName("describe");
        context.AddParam("unit", CDorlString("m"));
        context.AddParam("height", 2.0);
        context.AddParam("width", 5.0);
        describe->CallMethod(&context);
        PrintResult("named", context);
    }
    {
        // A string where a number belongs: the call is taken, the context complains, and the
        // function does no work, so the return value stays None.
        CVeskCommandContext context;
        context.SetCalledFunctionName("describe");
        context.AddParam("width", CDorlString("wide"));
        context.AddParam("height", 2.0);
        std::cout << "wrong parameter:\n";
        int taken = describe->CallMethod(&context);
        std::cout << "  CallMethod returned " << taken << "\n";
        PrintResult("wrong", context);
    }

    std::cout << "live values:\n";
    for (const char* counter : {"String", "Double", "Boolean"})
        PrintCounter(counter);

    describe->Release();
    number->Release();
    text->Release();

    // What remains is process-wide: the two shared Booleans and the "name" texts of the classes.
    std::cout << "after release:\n";
    for (const char* counter : {"String", "Double", "Boolean"})
        PrintCounter(counter);
    DorlSetDumpHandler(nullptr);
    return 0;
}
