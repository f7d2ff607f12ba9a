// Drives the thermostat module the way a script host would: through IVeskCommand alone, by
// name, without knowing the class behind it.

#include <iomanip>
#include <iostream>

#include <vesk/vesk.h>

#include "Thermostat.h"

namespace {

// Prints a value and releases it; a read of a name the object does not have gives null.
void Show(const char* label, CVeskGenericData* value)
{
    std::cout << label << " = ";
    if (!value) {
        std::cout << "(no such property)\n";
        return;
    }
    std::cout << *value << " (" << CVeskGenericData::GetTypeName(value->GetType()) << ")\n";
    value->Release();
}

void Read(IVeskCommand* object, const char* name) { Show(name, object->GetProperty(name, 0)); }

// SetProperty never takes over the caller's reference.
void Write(IVeskCommand* object, const char* name, CVeskGenericData* value)
{
    std::cout << name << " <- " << *value << ": "
              << (object->SetProperty(name, value) ? "stored" : "refused") << "\n";
    value->Release();
}

// A method is a property whose value is a function object; calling it takes a context.
void Call(IVeskCommand* object, const char* method, CVeskCommandContext& context)
{
    CVeskGenericData* function = object->GetProperty(method, 0);
    if (!function) {
        std::cout << method << ": no such method\n";
        return;
    }
    context.SetCalledFunctionName(method);
    function->CallMethod(&context);
    function->Release();
    Show(method, context.GetReturnValue());
}

void ListProperties(IVeskCommand* object)
{
    static const char* const statuses[] = {"read-only", "read-write", "notified"};
    CVeskPropertyEnum* properties = object->GetPropertyEnumerator();
    CDorlString name, description, type;
    CVeskPropertyEnum::ReadOnlyStatus status;
    while (properties->Next(&name, &description, &type, &status))
        std::cout << "  " << std::left << std::setw(12) << name << std::setw(14) << type
                  << std::setw(12) << statuses[status] << description << "\n";
    properties->Delete();
}

void RouteDump(const char* text) { std::cout << "  [message] " << text; }

void Monitor(void*, const char* name, int bCreated)
{
    std::cout << (bCreated ? "created " : "destroyed ") << name << "\n";
}

} // namespace

int main()
{
    DorlRunInitialisers(); // once per process, before anything else of the library
    DorlSetDumpHandler(&RouteDump);
    CVeskComponent::SetAllocationMonitor(&Monitor);

    IVeskCommand* thermostat = ThermostatCreate("Kitchen");

    std::cout << "-- properties\n";
    for (const char* name : {"name", "room", "target", "online", "temperature", "colour"})
        Read(thermostat, name);

    std::cout << "-- writes\n";
    Write(thermostat, "target", CVeskGdDouble::Allocate(21));
    Write(thermostat, "target", CVeskGdString::Allocate("warm"));
    Write(thermostat, "online", CVeskGdBoolean::Allocate(1));
    Write(thermostat, "temperature", CVeskGdDouble::Allocate(18.5));
    Write(thermostat, "name", CVeskGdString::Allocate("boiler"));
    for (const char* name : {"target", "online", "temperature"})
        Read(thermostat, name);

    std::cout << "-- methods\n";
    {
        CVeskCommandContext context; // positional: Adjust(1.5)
        context.AddParam(DorlPchNil, 1.5);
        Call(thermostat, "Adjust", context);
    }
    {
        CVeskCommandContext context; // named: Adjust(by=10, max=25)
        context.AddParam("max", 25.0);
        context.AddParam("by", 10.0);
        Call(thermostat, "Adjust", context);
    }
    {
        CVeskCommandContext context; // both: Report("F", brief=true)
        context.AddParam("brief", 1);
        context.AddParam(DorlPchNil, CDorlString("F"));
        Call(thermostat, "Report", context);
    }
    {
        CVeskCommandContext context;
        Call(thermostat, "Report", context);
    }
    {
        // A string where a number belongs: the context reports it, the method does nothing,
        // and the call yields None.
        CVeskCommandContext context;
        context.AddParam("by", CDorlString("lots"));
        Call(thermostat, "Adjust", context);
    }

    std::cout << "-- listing\n";
    ListProperties(thermostat);

    thermostat->Release();
    CVeskComponent::SetAllocationMonitor(nullptr);
    return 0;
}
