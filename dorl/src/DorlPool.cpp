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
// Blocks moved between a thread's list and the shared one at a time, and carved at once from
// the heap when both are empty.
const int kBatch = 256;
// A thread keeps at most this many free blocks of a size.
const int kThreadMax = 2 * kBatch;

struct FreeBlock {
    FreeBlock* next;
};

// Held only for the few instructions of a splice or for one walk of a batch.
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
    FreeBlock* head = nullptr;
};

// Constant-initialised and never destroyed: values are freed until the last static destructor.
constinit SharedList g_shared[kClasses];

// Plain data, so that it needs no initialisation on first use and stays usable after the
// thread's destructors have run.
struct ThreadLists {
    FreeBlock* head[kClasses];
    int count[kClasses];
    bool bGone;
};
thread_local ThreadLists t_lists;

// Gives the thread's blocks to the shared lists when the thread ends; frees after that go
// straight to the shared lists.
struct ThreadListsOwner {
    ~ThreadListsOwner();
    bool bArmed = false;
};
thread_local ThreadListsOwner t_owner;

int ClassOf(size_t size) { return static_cast<int>((size + kGranule - 1) / kGranule) - 1; }

// Puts the chain first..last on the shared list of its size.
void GiveShared(int sizeClass, FreeBlock* first, FreeBlock* last)
{
    SharedList& shared = g_shared[sizeClass];
    shared.lock.Lock();
    last->next = shared.head;
    shared.head = first;
    shared.lock.Unlock();
}

// Takes up to a batch from the shared list, else carves a new one; yields the count.
int TakeBatch(int sizeClass, FreeBlock** pFirst)
{
    SharedList& shared = g_shared[sizeClass];
    shared.lock.Lock();
    FreeBlock* first = shared.head;
    int count = 0;
    if (first) {
        FreeBlock* last = first;
        for (count = 1; count < kBatch && last->next; ++count)
            last = last->next;
        shared.head = last->next;
        last->next = nullptr;
    }
    shared.lock.Unlock();
    if (first) {
        *pFirst = first;
        return count;
    }

    size_t size = (sizeClass + 1) * kGranule;
    char* slab = static_cast<char*>(std::malloc(size * kBatch));
    if (!slab)
        throw std::bad_alloc();
    for (int i = 0; i < kBatch - 1; ++i)
        reinterpret_cast<FreeBlock*>(slab + i * size)->next =
            reinterpret_cast<FreeBlock*>(slab + (i + 1) * size);
    reinterpret_cast<FreeBlock*>(slab + (kBatch - 1) * size)->next = nullptr;
    *pFirst = reinterpret_cast<FreeBlock*>(slab);
    return kBatch;
}

ThreadListsOwner::~ThreadListsOwner()
{
    for (int sizeClass = 0; sizeClass < kClasses; ++sizeClass) {
        FreeBlock* first = t_lists.head[sizeClass];
        if (!first)
            continue;
        FreeBlock* last = first;
        while (last->next)
            last = last->next;
        GiveShared(sizeClass, first, last);
        t_lists.head[sizeClass] = nullptr;
        t_lists.count[sizeClass] = 0;
    }
    t_lists.bGone = true;
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
        lists.head[sizeClass] = block->next;
        lists.count[sizeClass]--;
        return block;
    }
    int count = TakeBatch(sizeClass, &block);
    if (lists.bGone) {
        // The thread is ending: one block for the caller, the rest back to all.
        if (block->next) {
            FreeBlock* last = block->next;
            while (last->next)
                last = last->next;
            GiveShared(sizeClass, block->next, last);
        }
        return block;
    }
    // Touched here, so that the thread gives its blocks back when it ends.
    t_owner.bArmed = true;
    lists.head[sizeClass] = block->next;
    lists.count[sizeClass] = count - 1;
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
        GiveShared(sizeClass, block, block);
        return;
    }
    block->next = lists.head[sizeClass];
    lists.head[sizeClass] = block;
    if (++lists.count[sizeClass] <= kThreadMax)
        return;
    // Keep the newest half, hand the rest on.
    FreeBlock* last = block;
    for (int i = 1; i < kThreadMax - kBatch; ++i)
        last = last->next;
    FreeBlock* first = last->next;
    last->next = nullptr;
    FreeBlock* end = first;
    while (end->next)
        end = end->next;
    GiveShared(sizeClass, first, end);
    lists.count[sizeClass] = kThreadMax - kBatch;
}

#else // DORL_POOL_BYPASS

void* DorlPoolAllocate(size_t size) { return ::operator new(size); }

void DorlPoolFree(void* block, size_t) noexcept { ::operator delete(block); }

#endif
