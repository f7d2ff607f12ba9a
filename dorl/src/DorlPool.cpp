// The pool of small blocks: per size, a list of each thread and one shared list.

#include <dorl/DorlPool.h>

#include <atomic>
#include <cstdlib>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define DORL_POOL_BYPASS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define DORL_POOL_BYPASS 1
#endif
#endif

#ifndef DORL_POOL_BYPASS

namespace {

const size_t kGranule = 16;
const int kClasses = 8; // 16, 32, ... 128 bytes
// Blocks move between a thread and the shared lists as whole batches, so that no list is ever
// walked: walking freed blocks scattered over the heap would miss the cache at every step.
const int kBatch = 256;

// A free block; the first of a batch on a shared list also links the next batch.
struct FreeBlock {
    FreeBlock* next;
    FreeBlock* nextBatch;
};

// Held only for the few instructions of a splice.
class SpinLock {
public:
    void Lock()
    {
        while (m_flag.test_and_set(std::memory_order_acquire))
            while (m_flag.test(std::memory_order_relaxed))
                ;
    }
    void Unlock() { m_flag.clear(std::memory_order_release); }

private:
    std::atomic_flag m_flag = ATOMIC_FLAG_INIT;
};

struct SharedList {
    SpinLock lock;
    FreeBlock* batches = nullptr;
};

// Constant-initialised and never destroyed: values are freed until the last static destructor.
constinit SharedList g_shared[kClasses];

// Per size, the list that blocks are taken from and freed to, and one full batch in reserve,
// so that a thread freeing and taking blocks around a batch boundary does not go to the shared
// lists each time. Plain data, so that it needs no initialisation on first use and stays usable
// after the thread's destructors have run. Counts may be high after a partial batch; they only
// decide when a list is full.
struct ThreadLists {
    FreeBlock* head[kClasses];
    int count[kClasses];
    FreeBlock* spare[kClasses];
    bool bGone;
};
thread_local ThreadLists t_lists;

// Gives the thread's blocks to the shared lists when the thread ends; blocks freed after that
// go straight to the shared lists.
struct ThreadListsOwner {
    ~ThreadListsOwner();
    bool bArmed = false;
};
thread_local ThreadListsOwner t_owner;

int ClassOf(size_t size) { return static_cast<int>((size + kGranule - 1) / kGranule) - 1; }

void GiveBatch(int sizeClass, FreeBlock* first)
{
    SharedList& shared = g_shared[sizeClass];
    shared.lock.Lock();
    first->nextBatch = shared.batches;
    shared.batches = first;
    shared.lock.Unlock();
}

// A batch from the shared list, else a new one carved from the heap.
FreeBlock* TakeBatch(int sizeClass)
{
    SharedList& shared = g_shared[sizeClass];
    shared.lock.Lock();
    FreeBlock* first = shared.batches;
    if (first)
        shared.batches = first->nextBatch;
    shared.lock.Unlock();
    if (first)
        return first;

    size_t size = (sizeClass + 1) * kGranule;
    char* slab = static_cast<char*>(std::malloc(size * kBatch));
    if (!slab)
        throw std::bad_alloc();
    for (int i = 0; i < kBatch - 1; ++i)
        reinterpret_cast<FreeBlock*>(slab + i * size)->next =
            reinterpret_cast<FreeBlock*>(slab + (i + 1) * size);
    reinterpret_cast<FreeBlock*>(slab + (kBatch - 1) * size)->next = nullptr;
    return reinterpret_cast<FreeBlock*>(slab);
}

ThreadListsOwner::~ThreadListsOwner()
{
    ThreadLists& lists = t_lists;
    for (int sizeClass = 0; sizeClass < kClasses; ++sizeClass) {
        if (lists.head[sizeClass])
            GiveBatch(sizeClass, lists.head[sizeClass]);
        if (lists.spare[sizeClass])
            GiveBatch(sizeClass, lists.spare[sizeClass]);
        lists.head[sizeClass] = nullptr;
        lists.spare[sizeClass] = nullptr;
        lists.count[sizeClass] = 0;
    }
    lists.bGone = true;
}

} // namespace

void* DorlPoolAllocate(size_t size)
{
    if (size == 0 || size > kClasses * kGranule)
        return ::operator new(size);
    int sizeClass = ClassOf(size);
    ThreadLists& lists = t_lists;
    FreeBlock* block = lists.head[sizeClass];
    if (block) {
        // Freed blocks lie scattered: fetching the next one now saves the wait for it at the
        // next allocation of this size.
        FreeBlock* next = block->next;
        __builtin_prefetch(next, 1);
        lists.head[sizeClass] = next;
        lists.count[sizeClass]--;
        return block;
    }
    if (lists.bGone) {
        // The thread is ending: one block for the caller, the rest back to all.
        block = TakeBatch(sizeClass);
        if (block->next)
            GiveBatch(sizeClass, block->next);
        return block;
    }
    // Set here, so that the thread gives its blocks back when it ends.
    t_owner.bArmed = true;
    block = lists.spare[sizeClass];
    if (block)
        lists.spare[sizeClass] = nullptr;
    else
        block = TakeBatch(sizeClass);
    lists.head[sizeClass] = block->next;
    lists.count[sizeClass] = kBatch - 1;
    return block;
}

void DorlPoolFree(void* pointer, size_t size) noexcept
{
    if (!pointer)
        return;
    if (size == 0 || size > kClasses * kGranule) {
        ::operator delete(pointer);
        return;
    }
    int sizeClass = ClassOf(size);
    FreeBlock* block = static_cast<FreeBlock*>(pointer);
    ThreadLists& lists = t_lists;
    if (lists.bGone) {
        block->next = nullptr;
        GiveBatch(sizeClass, block);
        return;
    }
    block->next = lists.head[sizeClass];
    lists.head[sizeClass] = block;
    if (++lists.count[sizeClass] < kBatch)
        return;
    // A full list becomes the reserve; a reserve already there goes to all.
    t_owner.bArmed = true;
    if (lists.spare[sizeClass])
        GiveBatch(sizeClass, lists.spare[sizeClass]);
    lists.spare[sizeClass] = block;
    lists.head[sizeClass] = nullptr;
    lists.count[sizeClass] = 0;
}

#else // DORL_POOL_BYPASS

void* DorlPoolAllocate(size_t size) { return ::operator new(size); }

void DorlPoolFree(void* block, size_t) noexcept { ::operator delete(block); }

#endif
