#include <dlfcn.h>

#include <string>

#include "ExampleModule.h"
#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

// Whether the system's loader still has the library, without loading it.
bool StillLoaded(const char* path)
{
    void* handle = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
    if (handle)
        dlclose(handle);
    return handle != nullptr;
}

template <class I> I* Query(IUnknown* object, const IID& iid)
{
    void* pv = nullptr;
    return SUCCEEDED(object->QueryInterface(iid, &pv)) ? static_cast<I*>(pv) : nullptr;
}

} // namespace

// One test: the library table is the process's, and freeing it is the process's last step.
TEST(LoadLibrary, AModuleIsLoadedOnceStartedWalkedCalledAndFreed)
{
    const std::string missing = std::string(VESK_EXAMPLE_MODULE_DIR) + "/libvesk_no_module.so";
    EXPECT_EQ(VeskLoadLibrary(missing.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
    EXPECT_NE(std::string(StandinGetLoadErrorText()).find(missing + ": cannot open"),
              std::string::npos)
        << StandinGetLoadErrorText();

    const char* path = VESK_EXAMPLE_MODULE;
    ASSERT_FALSE(StillLoaded(path));
    EXPECT_STRNE(VeskTranslateInterfaceId(CLSID_ExampleModule), "ExampleModule");
    HINSTANCE library = VeskLoadLibrary(path);
    ASSERT_NE(library, nullptr) << StandinGetLoadErrorText();
    EXPECT_STREQ(VeskTranslateInterfaceId(CLSID_ExampleModule), "ExampleModule")
        << "the module's start-up routine ran";
    EXPECT_EQ(VeskLoadLibrary(path), library);
    // Another spelling of the same file is an entry of its own, and a load of its own.
    const std::string spelling =
        std::string(VESK_EXAMPLE_MODULE_DIR) + "/./" + VESK_EXAMPLE_MODULE_NAME;
    EXPECT_EQ(VeskLoadLibrary(spelling.c_str()), library);

    auto getModule =
        reinterpret_cast<PFN_VeskGetModule>(GetProcAddress(library, EXAMPLE_MODULE_ENTRY));
    ASSERT_NE(getModule, nullptr) << StandinGetLoadErrorText();
    IVeskDLL* module = getModule();
    EXPECT_STREQ(module->GetName(), "example");
    EXPECT_EQ(module->Startup(nullptr), 1);

    IVeskEnumerate* objects = Query<IVeskEnumerate>(module, IID_IVeskEnumerate);
    ASSERT_NE(objects, nullptr);
    std::string names;
    IVeskCommand* valves = nullptr;
    unsigned long cursor = objects->Open();
    while (IUnknown* object = objects->Next(cursor)) {
        IVeskCommand* command = Query<IVeskCommand>(object, IID_IVeskCommand);
        ASSERT_NE(command, nullptr);
        Ref<CVeskGenericData> name(command->GetProperty("name", 0));
        names += Text(name.get()) + ";";
        if (Text(name.get()) == "valves")
            valves = command;
        else
            command->Release();
    }
    objects->Close(cursor);
    objects->Release();
    EXPECT_EQ(names, "pumps;valves;alarms;");
    ASSERT_NE(valves, nullptr);
    {
        // The values go before the module: they hold the counter.
        Ref<CVeskGenericData> add(valves->GetProperty("Add", 0));
        ASSERT_NE(add.get(), nullptr);
        CVeskCommandContext context;
        context.AddParam("step", 2.5);
        EXPECT_EQ(add->CallMethod(&context), 1);
        Ref<CVeskGenericData> result(context.GetReturnValue());
        EXPECT_EQ(Printed(result.get()), "12.5");
        Ref<CVeskGenericData> count(valves->GetProperty("count", 0));
        EXPECT_EQ(Printed(count.get()), "12.5");
    }
    valves->Release();

    EXPECT_EQ(module->Shutdown(), 1);
    module->Release();
    VeskFreeLibraries();
    EXPECT_FALSE(StillLoaded(path)) << "each entry was loaded once and freed once";
}
