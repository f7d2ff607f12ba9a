#pragma once

#include "DorlExport.h"

// A one-shot alarm that belongs to the thread that constructed it. The alarm only ever fires
// inside that thread's DorlRunTimers(), so OnAlarm never races the owner's own code. SetAlarm
// and KillAlarm may be called from any thread; destroy the timer on its owning thread.
class DORL_API CDorlTimer {
protected:
    CDorlTimer();

public:
    virtual ~CDorlTimer();
    CDorlTimer(const CDorlTimer&) = delete;
    CDorlTimer& operator=(const CDorlTimer&) = delete;

    // Arming again replaces the pending alarm.
    void SetAlarm(long delayMs);
    void KillAlarm();
    // The timer is already disarmed here, so it may re-arm or destroy itself.
    virtual void OnAlarm(long delayMs);
};

// The host's timer turn: runs the due alarms of the calling thread's timers and yields how
// many ran. Alarms armed during the turn wait for the next one.
DORL_API int DorlRunTimers();
