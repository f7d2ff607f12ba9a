// Calls are frequent and short, so a context with up to ten parameters must cost no heap
// allocation beyond the values themselves.

#include <cstdlib>
#include <new>

#include "support/VeskTest.h"

// The operators below replace the global ones, so malloc and free do pair up; at -O2 the
// compiler inlines a delete beside gtest's new and takes them for a mismatch.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#endif

namespace {
int s_allocations = 0;
}

void* operator new(std::size_t size)
{
    ++s_allocations;
    void* p = std::malloc(size ? size : 1);
    return p ? p : throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return operator new(size); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }

using vesk_test::StartedTest;

namespace {

class ContextAllocation : public StartedTest {};

int Fetch(CVeskCommandContext& context, const CDorlString* names)
{
    // Positional parameters answer the first fetches, the named ones the rest.
    int fetched = 0;
    for (int i = 0; i < 5; ++i) {
        CVeskGenericData* value = nullptr;
        fetched += context.GetParam("p", &value, 0);
        if (value)
            value->Release();
    }
    for (int i = 0; i < 5; ++i) {
        double value = 0;
        fetched += context.GetParam(names[i], &value, 0);
    }
    return fetched;
}

} // namespace

TEST_F(ContextAllocation, TenParametersAllocateOnlyTheirValues)
{
    CDorlString names[10] = {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j"};
    CVeskGenericData* values[10];
    for (int i = 0; i < 10; ++i)
        values[i] = CVeskGdDouble::Allocate(i);
    CDorlString functionName("f");

    s_allocations = 0;
    {
        CVeskCommandContext context;
        context.SetCalledFunctionName(functionName);
        for (int i = 0; i < 5; ++i)
            context.AddParam(names[i], values[i]);
        for (int i = 5; i < 10; ++i)
            context.AddParam(DorlPchNil, values[i]);
        EXPECT_EQ(context.GetNumParams(), 10);
        EXPECT_EQ(Fetch(context, names), 10);
        EXPECT_EQ(context.CanProceed(0), 1);
        context.SetReturnValue(values[0]);
    }
    EXPECT_EQ(s_allocations, 0);

    // Values made by the context are the only allocations: one per Number, none per Boolean.
    s_allocations = 0;
    {
        CVeskCommandContext context;
        for (int i = 0; i < 5; ++i)
            context.AddParam(names[i], static_cast<double>(i));
        for (int i = 0; i < 5; ++i)
            context.AddParam(names[5 + i], 1);
    }
    EXPECT_EQ(s_allocations, 5);

    // The eleventh parameter moves the table to the heap: exactly one more allocation.
    s_allocations = 0;
    {
        CVeskCommandContext context;
        for (int i = 0; i < 10; ++i)
            context.AddParam(DorlPchNil, values[i]);
        EXPECT_EQ(s_allocations, 0);
        context.AddParam(DorlPchNil, values[0]);
        EXPECT_EQ(s_allocations, 1);
    }
    for (CVeskGenericData* value : values)
        value->Release();
}
