#include <dorl/DorlThread.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

std::atomic<int> s_disposals{0};
std::atomic<int> s_endingDisposals{0};

class CountingObject : public CDorlThreadLocalStorage {
public:
    void DisposeThreadObject(bool bThreadEnding) override
    {
        ++s_disposals;
        if (bThreadEnding)
            ++s_endingDisposals;
        delete this;
    }
};

} // namespace

TEST(DorlThreadLocalStorage, ObjectsAreDisposedOnceWhenTheirThreadEnds)
{
    int first = DorlAllocateThreadLocalStorageIndex();
    int second = DorlAllocateThreadLocalStorageIndex();
    ASSERT_GE(first, 0);
    ASSERT_NE(first, second);

    std::thread([first, second] {
        auto* object = new CountingObject;
        EXPECT_EQ(DorlSetThreadLocalStorageObj(first, object), 1);
        EXPECT_EQ(DorlGetThreadLocalStorageObj(first), object);
        EXPECT_EQ(DorlSetThreadLocalStorageObj(second, new CountingObject), 1);
    }).join();
    EXPECT_EQ(s_disposals, 2);
    EXPECT_EQ(s_endingDisposals, 2);
    EXPECT_EQ(DorlGetThreadLocalStorageObj(first), nullptr);

    // A cleared slot is not disposed; its object stays the caller's.
    CountingObject kept;
    std::thread([first, &kept] {
        DorlSetThreadLocalStorageObj(first, &kept);
        DorlSetThreadLocalStorageObj(first, nullptr);
        EXPECT_EQ(DorlGetThreadLocalStorageObj(first), nullptr);
    }).join();
    EXPECT_EQ(s_disposals, 2);

    EXPECT_EQ(DorlSetThreadLocalStorageObj(-1, &kept), 0);
    EXPECT_EQ(DorlSetThreadLocalStorageObj(1000, &kept), 0);
    EXPECT_EQ(DorlSetThreadLocalStorageObj(second + 1, &kept), 0);
    EXPECT_EQ(DorlGetThreadLocalStorageObj(-1), nullptr);

    int last = second;
    for (int i = 0; i < 1000 && last >= 0; ++i)
        last = DorlAllocateThreadLocalStorageIndex();
    EXPECT_LT(last, 0);
}
