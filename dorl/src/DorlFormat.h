#pragma once

#include "dorl/DorlString.h"

#include <cstdarg>

// printf formatting of any length, shared by CDorlString::Format and DorlDump. Internal to
// the library.
CDorlString DorlFormatV(const char* format, va_list args) __attribute__((format(printf, 1, 0)));
