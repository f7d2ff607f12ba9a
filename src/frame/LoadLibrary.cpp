#include "vesk/LoadLibrary.h"

#include <map>

#include <dorl/DorlDiag.h>

namespace {

// Keyed by the name as the caller wrote it.
std::map<CDorlString, HINSTANCE>& LoadedLibraries()
{
    static std::map<CDorlString, HINSTANCE> s_libraries;
    return s_libraries;
}

} // namespace

HINSTANCE VeskLoadLibrary(const CDorlString& name)
{
    std::map<CDorlString, HINSTANCE>& libraries = LoadedLibraries();
    auto found = libraries.find(name);
    // A name seen before neither loads again nor runs initialisers.
    if (found != libraries.end())
        return found->second;
    HINSTANCE handle = LoadLibraryExA(name, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (handle)
        libraries.emplace(name, handle);
    // Also after a failure: initialisers that other code registered meanwhile, this library's
    // own among them, come to run here.
    DorlRunInitialisers();
    return handle;
}

void VeskFreeLibraries()
{
    for (const auto& [name, handle] : LoadedLibraries())
        FreeLibrary(handle);
}
