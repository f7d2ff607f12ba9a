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

} // namespace vesk
