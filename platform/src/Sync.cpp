#include "standin/Sync.h"

#include <mutex>
#include <new>

static_assert(sizeof(std::recursive_mutex) <= sizeof(CRITICAL_SECTION::opaque),
              "a critical section holds its mutex in place");
static_assert(alignof(std::recursive_mutex) <= alignof(CRITICAL_SECTION),
              "a critical section holds its mutex in place");

namespace {

std::recursive_mutex& Mutex(LPCRITICAL_SECTION section)
{
    return *std::launder(reinterpret_cast<std::recursive_mutex*>(section->opaque));
}

} // namespace

void InitializeCriticalSection(LPCRITICAL_SECTION section)
{
    new (section->opaque) std::recursive_mutex();
}

void DeleteCriticalSection(LPCRITICAL_SECTION section) { Mutex(section).~recursive_mutex(); }

void EnterCriticalSection(LPCRITICAL_SECTION section) { Mutex(section).lock(); }

BOOL TryEnterCriticalSection(LPCRITICAL_SECTION section)
{
    return Mutex(section).try_lock() ? TRUE : FALSE;
}

void LeaveCriticalSection(LPCRITICAL_SECTION section) { Mutex(section).unlock(); }
