#include "dorl/DorlTimer.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

struct TimerEntry {
    std::thread::id owner;
    bool armed = false;
    // Unique per arming across all timers, so a turn can tell an alarm it saw from one armed
    // since, even on a new timer at a recycled address.
    uint64_t arming = 0;
    Clock::time_point due;
    long delayMs = 0;
};

struct TimerRegistry {
    std::mutex mutex;
    std::unordered_map<CDorlTimer*, TimerEntry> entries;
    uint64_t lastArming = 0;
};

// Never destroyed: timers in other libraries' statics may outlive this library's statics.
TimerRegistry& Registry()
{
    static TimerRegistry* registry = new TimerRegistry;
    return *registry;
}

struct DueAlarm {
    CDorlTimer* timer;
    uint64_t arming;
    Clock::time_point due;
};

std::vector<DueAlarm> CollectDueAlarms()
{
    TimerRegistry& registry = Registry();
    std::thread::id self = std::this_thread::get_id();
    Clock::time_point now = Clock::now();
    std::vector<DueAlarm> due;
    std::lock_guard<std::mutex> lock(registry.mutex);
    for (auto& [timer, entry] : registry.entries) {
        if (entry.owner == self && entry.armed && entry.due <= now)
            due.push_back({timer, entry.arming, entry.due});
    }
    return due;
}

// Disarms the alarm if it is still the one collected: an earlier alarm of this turn may have
// killed, re-armed or destroyed it.
bool ClaimAlarm(const DueAlarm& alarm, long& delayMs)
{
    TimerRegistry& registry = Registry();
    std::lock_guard<std::mutex> lock(registry.mutex);
    auto found = registry.entries.find(alarm.timer);
    if (found == registry.entries.end())
        return false;
    TimerEntry& entry = found->second;
    if (!entry.armed || entry.arming != alarm.arming)
        return false;
    entry.armed = false;
    delayMs = entry.delayMs;
    return true;
}

} // namespace

CDorlTimer::CDorlTimer()
{
    TimerRegistry& registry = Registry();
    std::lock_guard<std::mutex> lock(registry.mutex);
    registry.entries[this].owner = std::this_thread::get_id();
}

CDorlTimer::~CDorlTimer()
{
    TimerRegistry& registry = Registry();
    std::lock_guard<std::mutex> lock(registry.mutex);
    registry.entries.erase(this);
}

void CDorlTimer::SetAlarm(long delayMs)
{
    Clock::time_point due = Clock::now() + std::chrono::milliseconds(std::max(delayMs, 0L));
    TimerRegistry& registry = Registry();
    std::lock_guard<std::mutex> lock(registry.mutex);
    TimerEntry& entry = registry.entries[this];
    entry.armed = true;
    entry.arming = ++registry.lastArming;
    entry.due = due;
    entry.delayMs = delayMs;
}

void CDorlTimer::KillAlarm()
{
    TimerRegistry& registry = Registry();
    std::lock_guard<std::mutex> lock(registry.mutex);
    auto found = registry.entries.find(this);
    if (found != registry.entries.end())
        found->second.armed = false;
}

void CDorlTimer::OnAlarm(long) {}

int DorlRunTimers()
{
    std::vector<DueAlarm> due = CollectDueAlarms();
    std::sort(due.begin(), due.end(), [](const DueAlarm& left, const DueAlarm& right) {
        return left.due != right.due ? left.due < right.due : left.arming < right.arming;
    });
    int ran = 0;
    for (const DueAlarm& alarm : due) {
        long delayMs;
        if (!ClaimAlarm(alarm, delayMs))
            continue;
        // No lock is held here: the alarm may arm, kill or destroy any timer.
        alarm.timer->OnAlarm(delayMs);
        ++ran;
    }
    return ran;
}
