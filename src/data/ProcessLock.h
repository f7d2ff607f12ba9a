#pragma once

// A process-wide lock that a thread may enter again, with its depth beside it. One serves all
// indirect values, another all associative arrays; each is a local static of its file.

#include <atomic>

#include <standin/Sync.h>

namespace vesk {

class ProcessLock {
public:
    ProcessLock() { InitializeCriticalSection(&m_section); }
    ~ProcessLock() { DeleteCriticalSection(&m_section); }
    ProcessLock(const ProcessLock&) = delete;
    ProcessLock& operator=(const ProcessLock&) = delete;

    void Enter()
    {
        EnterCriticalSection(&m_section);
        m_nDepth.fetch_add(1, std::memory_order_relaxed);
    }
    void Leave()
    {
        m_nDepth.fetch_sub(1, std::memory_order_relaxed);
        LeaveCriticalSection(&m_section);
    }
    // How many entries are held now: 0 when no thread is inside.
    int Depth() const { return m_nDepth.load(std::memory_order_relaxed); }

private:
    CRITICAL_SECTION m_section;
    std::atomic<int> m_nDepth{0};
};

// Holds a lock for a scope and leaves it on every way out.
class ProcessLockHolder {
public:
    explicit ProcessLockHolder(ProcessLock& lock) : m_lock(lock) { m_lock.Enter(); }
    ~ProcessLockHolder() { m_lock.Leave(); }
    ProcessLockHolder(const ProcessLockHolder&) = delete;
    ProcessLockHolder& operator=(const ProcessLockHolder&) = delete;

private:
    ProcessLock& m_lock;
};

// The holder of one particular lock, for a file whose lock is a local static behind getLock.
template <ProcessLock& (*getLock)()> class ScopedProcessLock : public ProcessLockHolder {
public:
    ScopedProcessLock() : ProcessLockHolder(getLock()) {}
};

} // namespace vesk
