#pragma once

// Small blocks: the texts of short strings, and the map nodes of the libraries built on this
// one.
//
// A tree of settings is hundreds of thousands of objects of a few sizes, made and freed together.
// The general heap keeps such blocks on lists that it merges and sorts again whenever a larger
// block is asked for, which costs more than the reading itself. The pool keeps freed blocks of
// up to 128 bytes per size on a list of the thread that freed them (a bounded number; the rest
// goes to lists shared by all threads) and hands them out again as they are. Memory of the pool
// is kept for reuse while the process runs; blocks freed on one thread may be used on another.
//
// Built with AddressSanitizer, every block comes from the general heap, so that the sanitizer
// sees each object's life.

#include <cstddef>

#include "dorl/DorlExport.h"

DORL_API void* DorlPoolAllocate(size_t size);
DORL_API void DorlPoolFree(void* block, size_t size) noexcept;

// For node-based standard containers.
template <class T> class CDorlPoolAllocator {
public:
    typedef T value_type;

    CDorlPoolAllocator() noexcept = default;
    template <class U> CDorlPoolAllocator(const CDorlPoolAllocator<U>&) noexcept {}

    T* allocate(size_t count) { return static_cast<T*>(DorlPoolAllocate(count * sizeof(T))); }
    void deallocate(T* block, size_t count) noexcept { DorlPoolFree(block, count * sizeof(T)); }

    template <class U> bool operator==(const CDorlPoolAllocator<U>&) const noexcept { return true; }
};
