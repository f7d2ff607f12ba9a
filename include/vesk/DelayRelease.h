#pragma once

// Giving up a reference later, on the same thread, once the thread's current work is done: an
// object can drop the last reference to itself or to its caller from inside a call. The
// releases run in order of arrival at the thread's next DorlRunTimers, or at VeskReleaseNow, or
// when the thread ends.

#include <standin/Unknown.h>

#include "vesk/VeskExport.h"

class CVeskCOMObject;

// Takes over one reference of the caller. Should the process run out of thread-local slots,
// the object is neither queued nor released.
VESK_API void VeskDelayRelease(IUnknown* object);
// As above, through the object's external IUnknown.
VESK_API void VeskDelayRelease(CVeskCOMObject* object);
// Releases what the calling thread has queued, at once; other threads' queues are untouched.
VESK_API void VeskReleaseNow();
