#pragma once

// The table of the dynamic libraries that the process loaded through the framework. Each name
// is loaded once; the table has no lock, for loading belongs to the start and the end of a
// process, or the caller serialises it.

#include <dorl/DorlString.h>
#include <standin/Library.h>

#include "vesk/VeskExport.h"

// The handle of the library, loaded at the first call for the name as written (two spellings of
// one file are two entries), then the initialisers that are waiting, the new library's among
// them, are run. Null when the load fails: GetLastError and StandinGetLoadErrorText tell why,
// and the next call tries again.
VESK_API HINSTANCE VeskLoadLibrary(const CDorlString& name);
// Frees every library of the table, in ascending order of the names. The last step of a
// process: the entries stay, so no library may be loaded through the table afterwards.
VESK_API void VeskFreeLibraries();
