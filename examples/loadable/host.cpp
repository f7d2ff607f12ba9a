// A host of a loadable module: loads it through the framework's library table, starts its
// module object, walks and calls the objects it holds, shuts it down and frees the libraries.
//
//     vesk_module_host <path of the module>

#include <iostream>

#include "ExampleModule.h"

namespace {

void PrintProperty(IVeskCommand* object, const char* name)
{
    CVeskGenericData* value = object->GetProperty(name, 0);
    if (!value) {
        std::cout << " " << name << "=?";
        return;
    }
    std::cout << " " << name << "=" << *value;
    value->Release();
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: vesk_module_host <path of the module>\n";
        return 2;
    }
    // The framework's own start-up routine runs here too: VeskLoadLibrary runs whatever
    // initialisers wait, the new module's among them.
    HINSTANCE library = VeskLoadLibrary(argv[1]);
    if (!library) {
        std::cerr << "cannot load " << argv[1] << ": " << StandinGetLoadErrorText() << "\n";
        return 1;
    }
    std::cout << "loaded; registered name: " << VeskTranslateInterfaceId(CLSID_ExampleModule)
              << "\n";
    PFN_VeskGetModule getModule =
        reinterpret_cast<PFN_VeskGetModule>(GetProcAddress(library, EXAMPLE_MODULE_ENTRY));
    if (!getModule) {
        std::cerr << "no " << EXAMPLE_MODULE_ENTRY << ": " << StandinGetLoadErrorText() << "\n";
        return 1;
    }

    IVeskDLL* module = getModule();
    module->Startup(nullptr);
    std::cout << "module " << module->GetName() << ", version " << std::hex << module->GetVersion()
              << std::dec << "\n";

    void* pv = nullptr;
    module->QueryInterface(IID_IVeskEnumerate, &pv);
    IVeskEnumerate* objects = static_cast<IVeskEnumerate*>(pv);
    unsigned long cursor = objects->Open();
    while (IUnknown* object = objects->Next(cursor)) {
        if (FAILED(object->QueryInterface(IID_IVeskCommand, &pv)))
            continue;
        IVeskCommand* command = static_cast<IVeskCommand*>(pv);
        std::cout << "object:";
        PrintProperty(command, "name");
        PrintProperty(command, "count");
        // A method is a property whose value is a function object.
        if (CVeskGenericData* add = command->GetProperty("Add", 0)) {
            CVeskCommandContext context;
            context.AddParam("step", 2.5);
            add->CallMethod(&context);
            add->Release();
            if (CVeskGenericData* result = context.GetReturnValue()) {
                std::cout << " -> Add(2.5): " << *result;
                result->Release();
            }
        }
        std::cout << "\n";
        command->Release();
    }
    objects->Close(cursor);
    objects->Release();

    module->Shutdown();
    module->Release();
    VeskFreeLibraries();
    std::cout << "shut down and freed\n";
    return 0;
}
