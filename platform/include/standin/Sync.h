#pragma once

// Interlocked counts and critical sections under their platform names. Counts are 32-bit, as on
// the platform, whatever the width of long.

#include "standin/Types.h"

// Inline: reference counts change on every call, and a call into the library would cost more
// than the locked instruction itself.
inline LONG InterlockedIncrement(LONG volatile* target)
{
    return __atomic_add_fetch(target, 1, __ATOMIC_SEQ_CST);
}
inline LONG InterlockedDecrement(LONG volatile* target)
{
    return __atomic_sub_fetch(target, 1, __ATOMIC_SEQ_CST);
}
inline LONG InterlockedExchange(LONG volatile* target, LONG value)
{
    return __atomic_exchange_n(target, value, __ATOMIC_SEQ_CST);
}
inline LONG InterlockedExchangeAdd(LONG volatile* target, LONG value)
{
    return __atomic_fetch_add(target, value, __ATOMIC_SEQ_CST);
}
// Yields the value that was there; the exchange happened when that equals the comparand.
inline LONG InterlockedCompareExchange(LONG volatile* target, LONG exchange, LONG comparand)
{
    __atomic_compare_exchange_n(target, &comparand, exchange, false, __ATOMIC_SEQ_CST,
                                __ATOMIC_SEQ_CST);
    return comparand;
}

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
