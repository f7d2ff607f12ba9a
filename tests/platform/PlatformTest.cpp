#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <standin/standin.h>

TEST(Platform, ResultCodesAndIdentifiersKeepThePlatformValues)
{
    static_assert(sizeof(LONG) == 4 && sizeof(OLECHAR) == 2 && sizeof(GUID) == 16);
    EXPECT_EQ(static_cast<uint32_t>(E_NOINTERFACE), 0x80004002u);
    EXPECT_TRUE(FAILED(E_NOINTERFACE));
    EXPECT_TRUE(SUCCEEDED(S_FALSE));
    GUID copy = IID_IUnknown;
    EXPECT_TRUE(IsEqualGUID(copy, IID_IUnknown));
    copy.Data4[7] = 0;
    EXPECT_FALSE(IsEqualIID(copy, IID_IUnknown));
    EXPECT_EQ(CoDisconnectObject(nullptr, 0), S_OK);
}

TEST(Platform, InterlockedOperationsAreAtomicAndYieldThePlatformResults)
{
    LONG volatile count = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&count] {
            for (int i = 0; i < 20000; ++i) {
                InterlockedIncrement(&count);
                InterlockedDecrement(&count);
                InterlockedIncrement(&count);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(count, 80000);

    LONG volatile value = 5;
    EXPECT_EQ(InterlockedIncrement(&value), 6);
    EXPECT_EQ(InterlockedDecrement(&value), 5);
    EXPECT_EQ(InterlockedExchange(&value, 9), 5);
    EXPECT_EQ(InterlockedExchangeAdd(&value, 3), 9);
    EXPECT_EQ(value, 12);
    EXPECT_EQ(InterlockedCompareExchange(&value, 1, 99), 12); // no match: unchanged
    EXPECT_EQ(value, 12);
    EXPECT_EQ(InterlockedCompareExchange(&value, 1, 12), 12);
    EXPECT_EQ(value, 1);
}

TEST(Platform, CriticalSectionsAreReentrantAndExclusive)
{
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    EnterCriticalSection(&section);
    EnterCriticalSection(&section); // the owner may enter again
    bool otherGotIn = true;
    std::thread other([&] { otherGotIn = TryEnterCriticalSection(&section) != FALSE; });
    other.join();
    EXPECT_FALSE(otherGotIn);
    LeaveCriticalSection(&section);
    LeaveCriticalSection(&section);

    int shared = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 10000; ++i) {
                EnterCriticalSection(&section);
                ++shared;
                LeaveCriticalSection(&section);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(shared, 40000);
    DeleteCriticalSection(&section);
}

TEST(Platform, LibraryCallsFailWithTheLoadersWords)
{
    HMODULE libc = LoadLibraryExA("libc.so.6", nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    ASSERT_NE(libc, nullptr) << StandinGetLoadErrorText();
    EXPECT_NE(GetProcAddress(libc, "strlen"), nullptr);
    EXPECT_EQ(GetProcAddress(libc, "NoSuchFunction"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_PROC_NOT_FOUND);
    EXPECT_NE(std::string(StandinGetLoadErrorText()).find("NoSuchFunction"), std::string::npos);
    EXPECT_TRUE(FreeLibrary(libc));

    EXPECT_FALSE(FreeLibrary(nullptr));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_EQ(LoadLibraryExA("", nullptr, 0), nullptr);
    EXPECT_EQ(LoadLibraryExA("libvesk-none.so", nullptr, 0), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
    EXPECT_NE(std::string(StandinGetLoadErrorText()).find("libvesk-none.so"), std::string::npos);
}
