#include <dorl/DorlTimer.h>

#include <gtest/gtest.h>

#include <functional>
#include <thread>
#include <vector>

namespace {

class RecordingTimer : public CDorlTimer {
public:
    void OnAlarm(long delayMs) override
    {
        delays.push_back(delayMs);
        threads.push_back(std::this_thread::get_id());
        if (action)
            action();
    }

    std::vector<long> delays;
    std::vector<std::thread::id> threads;
    std::function<void()> action;
};

int RunTimersOnAnotherThread()
{
    int ran = -1;
    std::thread([&ran] { ran = DorlRunTimers(); }).join();
    return ran;
}

} // namespace

TEST(DorlTimer, DueAlarmsRunOnceAndOnlyInTheOwningThreadsTurn)
{
    RecordingTimer timer;
    timer.SetAlarm(0);
    EXPECT_EQ(RunTimersOnAnotherThread(), 0);
    EXPECT_TRUE(timer.delays.empty());

    EXPECT_EQ(DorlRunTimers(), 1);
    EXPECT_EQ(DorlRunTimers(), 0);
    ASSERT_EQ(timer.delays.size(), 1u);
    EXPECT_EQ(timer.delays[0], 0);

    timer.SetAlarm(3600000);
    EXPECT_EQ(DorlRunTimers(), 0);
    timer.SetAlarm(1);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_EQ(DorlRunTimers(), 1);
    EXPECT_EQ(timer.delays.back(), 1);

    timer.SetAlarm(0);
    timer.KillAlarm();
    EXPECT_EQ(DorlRunTimers(), 0);

    // Armed from elsewhere, it still fires on its owner.
    std::thread([&timer] { timer.SetAlarm(0); }).join();
    EXPECT_EQ(DorlRunTimers(), 1);
    EXPECT_EQ(timer.threads.back(), std::this_thread::get_id());

    {
        RecordingTimer doomed;
        doomed.SetAlarm(0);
    }
    EXPECT_EQ(DorlRunTimers(), 0);
}

TEST(DorlTimer, AlarmsMayRearmAndDestroyTimersDuringTheTurn)
{
    RecordingTimer repeating;
    repeating.action = [&repeating] { repeating.SetAlarm(0); };
    repeating.SetAlarm(0);
    // Re-armed during the turn, it waits for the next one instead of looping.
    EXPECT_EQ(DorlRunTimers(), 1);
    EXPECT_EQ(DorlRunTimers(), 1);
    repeating.KillAlarm();

    auto* victim = new RecordingTimer;
    auto* killer = new RecordingTimer;
    bool victimRan = false;
    victim->action = [&victimRan] { victimRan = true; };
    killer->action = [&killer, &victim] {
        delete victim;
        delete killer;
    };
    killer->SetAlarm(0);
    victim->SetAlarm(0);
    EXPECT_EQ(DorlRunTimers(), 1);
    EXPECT_FALSE(victimRan);
}
