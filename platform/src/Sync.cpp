#include "standin/Sync.h"

#include <atomic>
#include <mutex>
#include <new>

static_assert(sizeof(std::atomic<LONG>) == sizeof(LONG), "interlocked counts stay 32 bits wide");
static_assert(sizeof(std::recursive_mutex) <= sizeof(CRITICAL_SECTION::opaque),
              "a critical section holds its mutex in place");
static_assert(alignof(std::recursive_mutex) <= alignof(CRITICAL_SECTION),
              "a critical section holds its mutex in place");

namespace {

// The count is a plain LONG in the caller's object; std::atomic_ref gives it atomic access
// without changing its layout.
std::atomic_ref<LONG> Counter(LONG volatile* target)
{
    return std::atomic_ref<LONG>(*const_cast<LONG*>(target));
}

std::recursive_mutex& Mutex(LPCRITICAL_SECTION section)
{
    return *std::launder(reinterpret_cast<std::recursive_mutex*>(section->opaque));
}

} // namespace

LONG InterlockedIncrement(LONG volatile* target) { return Counter(target).fetch_add(1) + 1; }

LONG InterlockedDecrement(LONG volatile* target) { return Counter(target).fetch_sub(1) - 1; }

LONG InterlockedExchange(LONG volatile* target, LONG value)
{
    return Counter(target).exchange(value);
}

LONG InterlockedExchangeAdd(LONG volatile* target, LONG value)
{
    return Counter(target).fetch_add(value);
}

LONG InterlockedCompareExchange(LONG volatile* target, LONG exchange, LONG comparand)
{
    Counter(target).compare_exchange_strong(comparand, exchange);
    return comparand;
}

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
