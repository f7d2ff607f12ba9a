#include "vesk/DelayRelease.h"

#include <atomic>
#include <cstdint>
#include <mutex>

#include <dorl/DorlList.h>
#include <dorl/DorlThread.h>
#include <dorl/DorlTimer.h>

#include "vesk/COMObject.h"

namespace {

// One per thread that has used delayed release. Only its own thread touches the queue: the
// alarm is raised on the thread that owns the timer, which is the thread that built it.
class DelayedReleaser : CDorlTimer, public CDorlThreadLocalStorage {
public:
    // Takes over the caller's reference.
    void Queue(IUnknown* object)
    {
        m_pending.AddTail(object);
        // Later entries ride on the alarm that is pending.
        if (m_pending.GetCount() == 1)
            SetAlarm(0);
    }

    void Drain()
    {
        // A release that drains again (through VeskReleaseNow) would release the entry that is
        // being released once more; the loop under way takes whatever is queued meanwhile.
        if (m_bDraining)
            return;
        m_bDraining = true;
        // The entry stays in the list while its release runs, so an object that queues another
        // does not arm a new alarm and this loop takes the newcomer too.
        while (!m_pending.IsEmpty()) {
            m_pending.GetHead()->Release();
            m_pending.RemoveHead();
        }
        m_bDraining = false;
    }

    void OnAlarm(long) override { Drain(); }

    // Without bThreadEnding the entries still queued are given up unreleased.
    void DisposeThreadObject(bool bThreadEnding) override
    {
        if (bThreadEnding)
            Drain();
        delete this;
    }

private:
    CDorlList<IUnknown*> m_pending; // in order of arrival, one reference each
    bool m_bDraining = false;
};

std::atomic<int32_t> s_nDelayedReleaseTlsIndex{-1};

// The first call of any thread takes the index; racing first calls take one between them.
int32_t TlsIndexForQueueing()
{
    int32_t index = s_nDelayedReleaseTlsIndex.load(std::memory_order_acquire);
    if (index >= 0)
        return index;
    static std::mutex s_allocation;
    std::lock_guard<std::mutex> lock(s_allocation);
    index = s_nDelayedReleaseTlsIndex.load(std::memory_order_relaxed);
    if (index < 0) {
        index = DorlAllocateThreadLocalStorageIndex();
        s_nDelayedReleaseTlsIndex.store(index, std::memory_order_release);
    }
    return index;
}

DelayedReleaser* CurrentReleaser(int32_t index)
{
    return static_cast<DelayedReleaser*>(DorlGetThreadLocalStorageObj(index));
}

} // namespace

void VeskDelayRelease(IUnknown* object)
{
    if (!object)
        return;
    int32_t index = TlsIndexForQueueing();
    if (index < 0)
        return;
    DelayedReleaser* releaser = CurrentReleaser(index);
    if (!releaser) {
        releaser = new DelayedReleaser;
        DorlSetThreadLocalStorageObj(index, releaser);
    }
    releaser->Queue(object);
}

void VeskDelayRelease(CVeskCOMObject* object)
{
    if (!object)
        return;
    IUnknown* unknown = nullptr;
    if (FAILED(object->ExternalQueryInterface(&IID_IUnknown, reinterpret_cast<void**>(&unknown))))
        return;
    // The queue holds the query's reference from here; giving one up now leaves the caller's
    // reference as the one that the queue consumes.
    VeskDelayRelease(unknown);
    object->ExternalRelease();
}

void VeskReleaseNow()
{
    int32_t index = s_nDelayedReleaseTlsIndex.load(std::memory_order_acquire);
    if (index < 0)
        return;
    // The alarm stays armed and finds the queue empty.
    if (DelayedReleaser* releaser = CurrentReleaser(index))
        releaser->Drain();
}
