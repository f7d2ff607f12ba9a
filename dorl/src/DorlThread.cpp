#include "dorl/DorlThread.h"

#include <atomic>
#include <pthread.h>

namespace {

constexpr int kSlotCount = 64;

struct ThreadSlots {
    CDorlThreadLocalStorage* objects[kSlotCount] = {};
};

std::atomic<int> s_allocatedSlots{0};

void DisposeThreadSlots(void* value)
{
    ThreadSlots* slots = static_cast<ThreadSlots*>(value);
    for (CDorlThreadLocalStorage*& object : slots->objects) {
        // Cleared first so that a disposal looking at its own slot finds it empty. An object
        // set during disposal lands in fresh slots, which the thread library disposes next.
        CDorlThreadLocalStorage* disposing = object;
        object = nullptr;
        if (disposing)
            disposing->DisposeThreadObject(true);
    }
    delete slots;
}

// A key destructor, unlike a thread_local destructor, does not run for the main thread at
// exit, when the objects' own dependencies may already be gone.
pthread_key_t SlotsKey()
{
    static pthread_key_t key = [] {
        pthread_key_t created;
        pthread_key_create(&created, DisposeThreadSlots);
        return created;
    }();
    return key;
}

ThreadSlots* CurrentSlots() { return static_cast<ThreadSlots*>(pthread_getspecific(SlotsKey())); }

bool IsAllocatedIndex(int index)
{
    return index >= 0 && index < s_allocatedSlots.load(std::memory_order_acquire);
}

} // namespace

CDorlThreadLocalStorage::~CDorlThreadLocalStorage() = default;

int DorlAllocateThreadLocalStorageIndex()
{
    int index = s_allocatedSlots.load(std::memory_order_relaxed);
    do {
        if (index >= kSlotCount)
            return -1;
    } while (!s_allocatedSlots.compare_exchange_weak(index, index + 1, std::memory_order_acq_rel));
    return index;
}

int DorlSetThreadLocalStorageObj(int index, CDorlThreadLocalStorage* obj)
{
    if (!IsAllocatedIndex(index))
        return 0;
    ThreadSlots* slots = CurrentSlots();
    if (!slots) {
        if (!obj)
            return 1;
        slots = new ThreadSlots;
        pthread_setspecific(SlotsKey(), slots);
    }
    slots->objects[index] = obj;
    return 1;
}

CDorlThreadLocalStorage* DorlGetThreadLocalStorageObj(int index)
{
    if (!IsAllocatedIndex(index))
        return nullptr;
    ThreadSlots* slots = CurrentSlots();
    return slots ? slots->objects[index] : nullptr;
}
