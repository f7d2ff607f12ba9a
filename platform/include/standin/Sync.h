#pragma once

// Interlocked counts and critical sections under their platform names. Counts are 32-bit, as on
// the platform, whatever the width of long.

#include "standin/Types.h"

STANDIN_API LONG InterlockedIncrement(LONG volatile* target);
STANDIN_API LONG InterlockedDecrement(LONG volatile* target);
STANDIN_API LONG InterlockedExchange(LONG volatile* target, LONG value);
STANDIN_API LONG InterlockedExchangeAdd(LONG volatile* target, LONG value);
STANDIN_API LONG InterlockedCompareExchange(LONG volatile* target, LONG exchange, LONG comparand);

// A critical section may be entered again by the thread that holds it. The record is opaque and
// large enough for the recursive mutex behind it on both builds.
struct CRITICAL_SECTION {
    alignas(16) unsigned char opaque[64];
};
typedef CRITICAL_SECTION* LPCRITICAL_SECTION;

STANDIN_API void InitializeCriticalSection(LPCRITICAL_SECTION section);
STANDIN_API void DeleteCriticalSection(LPCRITICAL_SECTION section);
STANDIN_API void EnterCriticalSection(LPCRITICAL_SECTION section);
STANDIN_API BOOL TryEnterCriticalSection(LPCRITICAL_SECTION section);
STANDIN_API void LeaveCriticalSection(LPCRITICAL_SECTION section);
