#include "standin/Library.h"

#include <dlfcn.h>
#include <string>

namespace {

thread_local DWORD t_dwLastError = ERROR_SUCCESS;
thread_local std::string t_sLoadError;

// dlerror's text lives only until the next loader call on this thread, so it is copied at once.
void Fail(DWORD code)
{
    const char* text = dlerror();
    t_sLoadError = text ? text : "unknown loader error";
    t_dwLastError = code;
}

} // namespace

HMODULE LoadLibraryExA(const char* fileName, HANDLE, DWORD)
{
    if (!fileName || !*fileName) {
        t_sLoadError = "no library name";
        t_dwLastError = ERROR_MOD_NOT_FOUND;
        return nullptr;
    }
    void* handle = dlopen(fileName, RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        Fail(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    return static_cast<HMODULE>(handle);
}

BOOL FreeLibrary(HMODULE module)
{
    if (!module) {
        t_sLoadError = "no library handle";
        t_dwLastError = ERROR_INVALID_HANDLE;
        return FALSE;
    }
    if (dlclose(module) != 0) {
        Fail(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    return TRUE;
}

FARPROC GetProcAddress(HMODULE module, const char* procName)
{
    dlerror();
    void* address = module && procName ? dlsym(module, procName) : nullptr;
    if (!address) {
        Fail(ERROR_PROC_NOT_FOUND);
        return nullptr;
    }
    return reinterpret_cast<FARPROC>(address);
}

DWORD GetLastError() { return t_dwLastError; }

void SetLastError(DWORD code) { t_dwLastError = code; }

const char* StandinGetLoadErrorText() { return t_sLoadError.c_str(); }
