#include <cstdint>
#include <cstring>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <dorl/DorlPool.h>

namespace {

struct Block {
    unsigned char* data;
    size_t size;
};

Block Fill(size_t size, unsigned char mark)
{
    Block block{static_cast<unsigned char*>(DorlPoolAllocate(size)), size};
    std::memset(block.data, mark, size);
    return block;
}

bool Intact(const Block& block, unsigned char mark)
{
    for (size_t i = 0; i < block.size; ++i)
        if (block.data[i] != mark)
            return false;
    return true;
}

} // namespace

TEST(DorlPool, BlocksOfEverySizeAreAlignedDistinctAndKeepTheirContent)
{
    std::vector<Block> blocks;
    // Each size several times over a batch, so that blocks come from more than one carving.
    for (int round = 0; round < 600; ++round)
        for (size_t size : {1, 16, 17, 48, 100, 128, 129, 1000})
            blocks.push_back(Fill(size, static_cast<unsigned char>(round + size)));
    std::set<uintptr_t> starts;
    for (size_t i = 0; i < blocks.size(); ++i) {
        uintptr_t start = reinterpret_cast<uintptr_t>(blocks[i].data);
        EXPECT_EQ(start % alignof(std::max_align_t), 0u);
        starts.insert(start);
    }
    EXPECT_EQ(starts.size(), blocks.size());
    for (size_t i = 0; i < blocks.size(); ++i) {
        unsigned char mark = static_cast<unsigned char>(i / 8 + blocks[i].size);
        ASSERT_TRUE(Intact(blocks[i], mark)) << "block " << i << " of " << blocks[i].size;
        DorlPoolFree(blocks[i].data, blocks[i].size);
    }
    DorlPoolFree(nullptr, 48);

#if !defined(__SANITIZE_ADDRESS__)
    // A freed block is the next one of its size.
    void* first = DorlPoolAllocate(40);
    DorlPoolFree(first, 40);
    void* again = DorlPoolAllocate(33);
    EXPECT_EQ(again, first);
    DorlPoolFree(again, 33);
#endif
}

// Blocks made on one thread and freed on another, by threads that end while others still work.
TEST(DorlPool, BlocksCrossThreadsAndOutliveTheirThreads)
{
    const int kThreads = 4;
    const int kPerThread = 3000;
    std::mutex lock;
    std::vector<std::pair<Block, unsigned char>> handed;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            std::vector<Block> own;
            for (int i = 0; i < kPerThread; ++i) {
                unsigned char mark = static_cast<unsigned char>(t * 31 + i);
                Block block = Fill(16 + (i % 8) * 16, mark);
                if (i % 2) {
                    std::lock_guard<std::mutex> guard(lock);
                    handed.push_back({block, mark});
                } else {
                    own.push_back(block);
                }
                // Free what another thread made.
                std::pair<Block, unsigned char> other{};
                {
                    std::lock_guard<std::mutex> guard(lock);
                    if (handed.size() > 100) {
                        other = handed.front();
                        handed.erase(handed.begin());
                    }
                }
                if (other.first.data) {
                    EXPECT_TRUE(Intact(other.first, other.second));
                    DorlPoolFree(other.first.data, other.first.size);
                }
            }
            for (size_t i = 0; i < own.size(); ++i) {
                EXPECT_TRUE(Intact(own[i], static_cast<unsigned char>(t * 31 + 2 * i)));
                DorlPoolFree(own[i].data, own[i].size);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (auto& [block, mark] : handed) {
        EXPECT_TRUE(Intact(block, mark));
        DorlPoolFree(block.data, block.size);
    }
}

namespace {

// Made before the thread's first block, so it is destroyed after the pool has handed the
// thread's lists back; what it frees and makes then goes through the shared lists.
struct LateHolder {
    void* block = nullptr;
    ~LateHolder()
    {
        DorlPoolFree(block, 64);
        void* late = DorlPoolAllocate(64);
        std::memset(late, 1, 64);
        DorlPoolFree(late, 64);
    }
};
thread_local LateHolder t_late;

} // namespace

TEST(DorlPool, ThreadDestructorsMayStillFreeAndAllocate)
{
    for (int i = 0; i < 3; ++i) {
        std::thread([] {
            LateHolder& holder = t_late;
            std::vector<void*> blocks;
            for (int j = 0; j < 1000; ++j)
                blocks.push_back(DorlPoolAllocate(64));
            for (void* block : blocks)
                DorlPoolFree(block, 64);
            holder.block = DorlPoolAllocate(64);
        }).join();
    }
    void* block = DorlPoolAllocate(64);
    EXPECT_NE(block, nullptr);
    DorlPoolFree(block, 64);
}
