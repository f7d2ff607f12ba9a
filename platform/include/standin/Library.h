#pragma once

// Dynamic libraries under the platform's names, over the system's loader. A failure leaves its
// code in the thread's last-error value and the loader's own words in the thread's load error
// text, where the platform would have them for FormatMessage.

#include "standin/Types.h"

struct HINSTANCE__;
typedef HINSTANCE__* HINSTANCE;
typedef HINSTANCE HMODULE;
typedef void* HANDLE;
// Cast to the real type of the function before calling. The type has no result, unlike the
// platform's, since that is the one function type that compilers let such a cast go from.
typedef void (*FARPROC)();

constexpr DWORD LOAD_WITH_ALTERED_SEARCH_PATH = 0x00000008;
constexpr DWORD ERROR_SUCCESS = 0;
constexpr DWORD ERROR_INVALID_HANDLE = 6;
constexpr DWORD ERROR_MOD_NOT_FOUND = 126;
constexpr DWORD ERROR_PROC_NOT_FOUND = 127;

// A name with a slash is a path; any other is searched for as the system's loader does. The
// reserved handle must be null. Every flag is accepted: the loader always looks for a library's
// own dependencies along the library's own search path.
STANDIN_API HMODULE LoadLibraryExA(const char* fileName, HANDLE reserved, DWORD flags);
// Each successful load is undone by one call; the library goes with the last.
STANDIN_API BOOL FreeLibrary(HMODULE module);
STANDIN_API FARPROC GetProcAddress(HMODULE module, const char* procName);

STANDIN_API DWORD GetLastError();
STANDIN_API void SetLastError(DWORD code);
// What the loader said about the calling thread's last failure of the three calls above; empty
// when none failed.
STANDIN_API const char* StandinGetLoadErrorText();
