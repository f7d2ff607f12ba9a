#pragma once

#include "DorlExport.h"

// Reports a failed check and returns: the caller decides how to go on.
DORL_API void DorlDisplayAssert(const char* expression, const char* source, int line);
typedef void (*DorlAssertHandler)(const char* expression, const char* source, int line);
// Null restores the default (standard error); yields the previous handler, null for the default.
DORL_API DorlAssertHandler DorlSetAssertHandler(DorlAssertHandler handler);

// Hands the formatted text, exactly as formatted, to the dump handler.
DORL_API void DorlDump(const char* format, ...) __attribute__((format(printf, 1, 2)));
typedef void (*DorlDumpHandler)(const char* text);
DORL_API DorlDumpHandler DorlSetDumpHandler(DorlDumpHandler handler);

// Registration is safe from the static initialisers of any library; the result is nonzero so
// that it can initialise a namespace-scope int. DorlRunInitialisers runs, in registration
// order, those not run yet.
DORL_API int DorlAddInitialiser(void (*initialiser)());
DORL_API void DorlRunInitialisers();

// Registering a name again replaces its handler; null removes it. Run yields 1 if a handler ran.
DORL_API void DorlRegisterProcessInfoHandler(const char* name, void (*handler)());
DORL_API int DorlRunProcessInfoHandler(const char* name);
