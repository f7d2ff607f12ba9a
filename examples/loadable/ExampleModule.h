#pragma once

// What a host knows of the example module: the one function it exports, and the class
// identifier whose name the module's start-up routine registers.

#include <vesk/vesk.h>

// Yields the module object with a reference for the caller.
typedef IVeskDLL* (*PFN_VeskGetModule)();
#define EXAMPLE_MODULE_ENTRY "VeskGetModule"

inline const GUID CLSID_ExampleModule = {
    0x6b1d0e57, 0x3c2a, 0x4f1e, {0x9a, 0x41, 0x52, 0x0c, 0x7e, 0x13, 0xd8, 0x66}};
