#pragma once

// What the value classes share inside the library: the probe path of their instance counters and
// the bookkeeping of construction and destruction.

#include <dorl/DorlDiag.h>
#include <dorl/DorlProbe.h>

#include "vesk/GenericData.h"

#define VESK_GD_PROBE_PATH "\\Resources\\GenericData"

// Assertions of the value classes name this source and the line of the check.
#define VESK_GD_ASSERT(expr) DorlDisplayAssert(#expr, "GenericData", __LINE__)

namespace vesk {

// Counters are read by monitoring while values come and go on any thread: the increments are
// atomic so that the figure stays exact.
inline void CountCreated(CDorlProbedLong& count, CVeskGenericData::AllocationMonitor monitor,
                         void* object, const char* monitorName)
{
    __atomic_add_fetch(&static_cast<long&>(count), 1, __ATOMIC_RELAXED);
    if (monitor)
        monitor(object, monitorName, 1);
}

inline void CountDestroyed(CDorlProbedLong& count, CVeskGenericData::AllocationMonitor monitor,
                           void* object, const char* monitorName)
{
    __atomic_sub_fetch(&static_cast<long&>(count), 1, __ATOMIC_RELAXED);
    if (monitor)
        monitor(object, monitorName, 0);
}

// The text of a value's "name" property: one string that lives for the whole process and is
// handed out with a reference per caller. Its first reference is never given up.
CVeskGenericData* SharedName(CVeskGdString& name);

// The first Boolean registers the process information handler that prints the counters.
void RegisterGenericDataInfoHandler();

// The archive forms nest (vectors in vectors, indirects onto vectors). A damaged or hostile
// archive could nest deep enough to exhaust the stack, so a reader gives the archive up past
// this depth; no archive that the library writes from a real value comes near it.
class ArchiveNesting {
public:
    static constexpr int kMaxDepth = 256;

    ArchiveNesting() { ++Depth(); }
    ~ArchiveNesting() { --Depth(); }
    ArchiveNesting(const ArchiveNesting&) = delete;
    ArchiveNesting& operator=(const ArchiveNesting&) = delete;

    // Reports and abandons the archive when the reader is too deep.
    bool TooDeep(CDorlArchive& archive) const
    {
        if (Depth() <= kMaxDepth)
            return false;
        if (!archive.HasFailed())
            DorlDump("Archive nested deeper than %d levels: the rest is not read\n", kMaxDepth);
        archive.SkipRest();
        return true;
    }

private:
    static int& Depth()
    {
        static thread_local int s_depth = 0;
        return s_depth;
    }
};

} // namespace vesk
