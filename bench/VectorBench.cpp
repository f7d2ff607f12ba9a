// What a vector costs against plain containers: appending, copying, and sorting with and without a
// predicate.

#include <algorithm>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#include <vesk/vesk.h>

namespace {

const int kElements = 1000000;

std::vector<double> RandomDoubles(int count)
{
    std::mt19937 generator(42);
    std::uniform_real_distribution<double> distribution(-1e6, 1e6);
    std::vector<double> values(count);
    for (double& value : values)
        value = distribution(generator);
    return values;
}

CVeskGdVector* VectorOf(const std::vector<double>& values)
{
    CVeskGdVector* vector = CVeskGdVector::Allocate(0);
    for (size_t i = 0; i < values.size(); ++i) {
        CVeskGdDouble* number = CVeskGdDouble::Allocate(values[i]);
        vector->SetElement(static_cast<int>(i), number);
        number->Release();
    }
    return vector;
}

void CallSort(CVeskGdVector* vector, IUnknown* predicate)
{
    CVeskGenericData* sort = vector->GetProperty("Sort", 0);
    CVeskCommandContext context;
    if (predicate)
        context.AddParam("Predicate", predicate);
    sort->CallMethod(&context);
    sort->Release();
}

int Less(CVeskCommandContext* context)
{
    double left = 0;
    double right = 0;
    context->GetParam("left", &left, 0);
    context->GetParam("right", &right, 0);
    if (!context->CanProceed(0))
        return 1;
    context->SetReturnValue(CVeskGdBoolean::Allocate(left < right));
    return 1;
}

// One shared value appended over and over: the cost is the vector's, not the values'.
void BM_VectorAppend(benchmark::State& state)
{
    DorlRunInitialisers();
    CVeskGdDouble* number = CVeskGdDouble::Allocate(1);
    for (auto _ : state) {
        CVeskGdVector* vector = CVeskGdVector::Allocate(0);
        for (int i = 0; i < kElements; ++i)
            vector->SetElement(vector->GetSize(), number);
        vector->Release();
    }
    number->Release();
    state.SetItemsProcessed(state.iterations() * kElements);
}
BENCHMARK(BM_VectorAppend)->Unit(benchmark::kMillisecond);

void BM_StdVectorAppend(benchmark::State& state)
{
    for (auto _ : state) {
        std::vector<double> vector;
        for (int i = 0; i < kElements; ++i)
            vector.push_back(1.0);
        benchmark::DoNotOptimize(vector.data());
    }
    state.SetItemsProcessed(state.iterations() * kElements);
}
BENCHMARK(BM_StdVectorAppend)->Unit(benchmark::kMillisecond);

// Copy shares the block, so its cost must not depend on the size.
void BM_VectorCopy(benchmark::State& state)
{
    DorlRunInitialisers();
    CVeskGdVector* vector = VectorOf(RandomDoubles(kElements));
    for (auto _ : state) {
        CVeskGenericData* copy = vector->Copy();
        copy->Release();
    }
    vector->Release();
}
BENCHMARK(BM_VectorCopy);

// The first change after a Copy clones the block: one Copy() per element.
void BM_VectorCopyThenWrite(benchmark::State& state)
{
    DorlRunInitialisers();
    CVeskGdVector* vector = VectorOf(RandomDoubles(kElements));
    for (auto _ : state) {
        CVeskGdVector* copy = static_cast<CVeskGdVector*>(vector->Copy());
        copy->SetElement(0, CVeskGdNull::Allocate());
        copy->Release();
    }
    vector->Release();
}
BENCHMARK(BM_VectorCopyThenWrite)->Unit(benchmark::kMillisecond);

void BM_VectorSort(benchmark::State& state)
{
    DorlRunInitialisers();
    std::vector<double> values = RandomDoubles(kElements);
    for (auto _ : state) {
        state.PauseTiming();
        CVeskGdVector* vector = VectorOf(values);
        state.ResumeTiming();
        CallSort(vector, nullptr);
        state.PauseTiming();
        vector->Release();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_VectorSort)->Unit(benchmark::kMillisecond);

void BM_StdSortDoubles(benchmark::State& state)
{
    std::vector<double> values = RandomDoubles(kElements);
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<double> copy = values;
        state.ResumeTiming();
        std::sort(copy.begin(), copy.end());
        benchmark::DoNotOptimize(copy.data());
    }
}
BENCHMARK(BM_StdSortDoubles)->Unit(benchmark::kMillisecond);

// Every comparison is a call through the protocol with a fresh context.
void BM_VectorSortWithPredicate(benchmark::State& state)
{
    DorlRunInitialisers();
    std::vector<double> values = RandomDoubles(static_cast<int>(state.range(0)));
    CVeskFreeFunctionObj* less = new CVeskFreeFunctionObj("less", "Compares two numbers", &Less);
    for (auto _ : state) {
        state.PauseTiming();
        CVeskGdVector* vector = VectorOf(values);
        state.ResumeTiming();
        CallSort(vector, less);
        state.PauseTiming();
        vector->Release();
        state.ResumeTiming();
    }
    less->Release();
}
BENCHMARK(BM_VectorSortWithPredicate)->Arg(100000)->Unit(benchmark::kMillisecond);

} // namespace
