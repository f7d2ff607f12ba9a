// The cost of one call by name through the protocol, against a std::function doing the same sum.

#include <functional>

#include <benchmark/benchmark.h>

#include <vesk/vesk.h>

namespace {

int Add(CVeskCommandContext* context)
{
    double a = 0;
    double b = 0;
    context->GetParam("a", &a, 0);
    context->GetParam("b", &b, 0);
    if (!context->CanProceed(0))
        return 1;
    context->SetReturnValueNoRef(CVeskGdDouble::Allocate(a + b));
    return 1;
}

// The caller already holds its two values, as callers usually do.
void BM_VeskCallMethod(benchmark::State& state)
{
    DorlRunInitialisers();
    CVeskFreeFunctionObj* add = new CVeskFreeFunctionObj("add", "Adds two numbers", &Add);
    CVeskGdDouble* a = CVeskGdDouble::Allocate(1.5);
    CVeskGdDouble* b = CVeskGdDouble::Allocate(2.25);
    double total = 0;
    for (auto _ : state) {
        CVeskCommandContext context;
        context.AddParam(DorlPchNil, b);
        context.AddParam(DorlPchNil, a);
        add->CallMethod(&context);
        CVeskGenericData* result = context.GetReturnValueOnce();
        total += static_cast<CVeskGdDouble*>(result)->m_dValue;
        result->Release();
    }
    benchmark::DoNotOptimize(total);
    a->Release();
    b->Release();
    add->Release();
}
BENCHMARK(BM_VeskCallMethod);

// The caller makes its two Numbers for the call, as AddParam(name, double) does.
void BM_VeskCallMethodNewValues(benchmark::State& state)
{
    DorlRunInitialisers();
    CVeskFreeFunctionObj* add = new CVeskFreeFunctionObj("add", "Adds two numbers", &Add);
    double x = 1.5;
    double total = 0;
    for (auto _ : state) {
        CVeskCommandContext context;
        context.AddParam(DorlPchNil, 2.25);
        context.AddParam(DorlPchNil, x);
        add->CallMethod(&context);
        CVeskGenericData* result = context.GetReturnValueOnce();
        total += static_cast<CVeskGdDouble*>(result)->m_dValue;
        result->Release();
    }
    benchmark::DoNotOptimize(total);
    add->Release();
}
BENCHMARK(BM_VeskCallMethodNewValues);

void BM_StdFunction(benchmark::State& state)
{
    std::function<double(double, double)> add = [](double a, double b) { return a + b; };
    benchmark::DoNotOptimize(add);
    double a = 1.5;
    double b = 2.25;
    double total = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(a);
        total += add(a, b);
    }
    benchmark::DoNotOptimize(total);
}
BENCHMARK(BM_StdFunction);

} // namespace
