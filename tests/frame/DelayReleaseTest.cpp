#include <thread>
#include <vector>

#include "frame/Tracked.h"
#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

// Any class with an interface in its map will do: IUnknown is its first interface.
class CCountedThing : public CVeskEnumerate {
public:
    explicit CCountedThing(std::vector<Gone>* log) : m_pLog(log) {}
    ~CCountedThing() override { m_pLog->push_back({99, std::this_thread::get_id()}); }

private:
    std::vector<Gone>* m_pLog;
};

} // namespace

TEST(DelayRelease, QueuedObjectsGoInOrderOfArrivalAtTheNextTimerTurn)
{
    std::vector<Gone> log;
    Tracked* first = new Tracked(&log, 1);
    // Its release queues another object and drains again: the newcomer rides on the same drain,
    // and the nested drain releases nothing twice.
    first->m_onLastRelease = [&log] {
        VeskDelayRelease(new Tracked(&log, 4));
        VeskReleaseNow();
    };
    VeskDelayRelease(first);
    VeskDelayRelease(new Tracked(&log, 2));
    CCountedThing* thing = new CCountedThing(&log);
    thing->AddRef();
    VeskDelayRelease(thing);
    EXPECT_TRUE(log.empty());

    EXPECT_EQ(DorlRunTimers(), 1);
    EXPECT_EQ(Ids(log), (std::vector<int>{1, 2, 4}));
    EXPECT_EQ(DorlRunTimers(), 0) << "an object queued during the drain arms no new alarm";
    thing->Release();
    EXPECT_EQ(Ids(log), (std::vector<int>{1, 2, 4, 99})) << "the queue consumed one reference";
}

TEST(DelayRelease, EachThreadReleasesOnlyWhatItQueued)
{
    std::vector<Gone> log;
    std::vector<Gone> otherLog;
    VeskDelayRelease(new Tracked(&log, 1));
    std::thread::id other;
    std::thread([&] {
        other = std::this_thread::get_id();
        VeskReleaseNow();
        VeskDelayRelease(new Tracked(&otherLog, 2));
        VeskReleaseNow();
        // Left queued: the end of the thread releases it.
        VeskDelayRelease(new Tracked(&otherLog, 3));
    }).join();
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(otherLog, (std::vector<Gone>{{2, other}, {3, other}}));

    VeskReleaseNow();
    EXPECT_EQ(log, (std::vector<Gone>{{1, std::this_thread::get_id()}}));
    EXPECT_EQ(DorlRunTimers(), 1) << "the alarm stays armed after VeskReleaseNow";
    EXPECT_EQ(log.size(), 1u);
}

// Run under ThreadSanitizer: the queues share nothing but the thread-local index.
TEST(DelayRelease, ThreadsQueueAndDrainTheirOwnObjectsAtOnce)
{
    constexpr int kThreads = 6;
    constexpr int kRounds = 200;
    std::vector<std::vector<Gone>> logs(kThreads);
    std::vector<std::thread::id> ids(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([t, &logs, &ids] {
            ids[t] = std::this_thread::get_id();
            int next = 0;
            for (int round = 0; round < kRounds; ++round) {
                for (int i = 0; i <= round % 7; ++i)
                    VeskDelayRelease(new Tracked(&logs[t], next++));
                if (round % 3 == 0)
                    VeskReleaseNow();
                else
                    DorlRunTimers();
            }
            for (int i = 0; i < 5; ++i)
                VeskDelayRelease(new Tracked(&logs[t], next++));
        });
    for (std::thread& thread : threads)
        thread.join();

    int expected = 0;
    for (int round = 0; round < kRounds; ++round)
        expected += round % 7 + 1;
    expected += 5;
    for (int t = 0; t < kThreads; ++t) {
        ASSERT_EQ(static_cast<int>(logs[t].size()), expected) << "thread " << t;
        for (int i = 0; i < expected; ++i)
            ASSERT_EQ(logs[t][i], (Gone{i, ids[t]})) << "thread " << t << ", entry " << i;
    }
}
