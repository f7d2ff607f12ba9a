// Writing and reading 100,000 keys of an associative array through its protocol, against a
// std::map<std::string, double> doing the same.

#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <vesk/vesk.h>

namespace {

const int kKeys = 100000;

// The same keys for both sides, made once, outside the timing.
const std::vector<std::string>& Keys()
{
    static const std::vector<std::string> s_keys = [] {
        std::vector<std::string> keys;
        for (int i = 0; i < kKeys; ++i)
            keys.push_back("key" + std::to_string(i * 7919 % kKeys));
        return keys;
    }();
    return s_keys;
}

const std::vector<CDorlString>& DorlKeys()
{
    static const std::vector<CDorlString> s_keys = [] {
        std::vector<CDorlString> keys;
        for (const std::string& key : Keys())
            keys.emplace_back(key.c_str(), static_cast<int>(key.size()));
        return keys;
    }();
    return s_keys;
}

// An array of kKeys numbers; the caller owns it.
VeskAssocArray* FilledArray()
{
    CVeskGenericData* none = CVeskGdNone::Allocate();
    VeskAssocArray* array = new VeskAssocArray(none);
    IVeskCommand* object = &array->m_xCommand;
    for (int i = 0; i < kKeys; ++i) {
        // The caller makes its value for the call and drops it, as a script does.
        CVeskGdDouble* value = CVeskGdDouble::Allocate(i + 1);
        object->SetProperty(DorlKeys()[i], value);
        value->Release();
    }
    return array;
}

void BM_AssocArrayWrite(benchmark::State& state)
{
    DorlRunInitialisers();
    DorlKeys();
    for (auto _ : state) {
        VeskAssocArray* array = FilledArray();
        state.PauseTiming();
        array->Release();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * kKeys);
}
BENCHMARK(BM_AssocArrayWrite)->Unit(benchmark::kMillisecond);

void BM_AssocArrayRead(benchmark::State& state)
{
    DorlRunInitialisers();
    VeskAssocArray* array = FilledArray();
    IVeskCommand* object = &array->m_xCommand;
    double total = 0;
    for (auto _ : state) {
        for (const CDorlString& key : DorlKeys()) {
            CVeskGenericData* value = object->GetProperty(key, 0);
            total += static_cast<CVeskGdDouble*>(value)->m_dValue;
            value->Release();
        }
    }
    benchmark::DoNotOptimize(total);
    state.SetItemsProcessed(state.iterations() * kKeys);
    array->Release();
}
BENCHMARK(BM_AssocArrayRead)->Unit(benchmark::kMillisecond);

void BM_StdMapWrite(benchmark::State& state)
{
    Keys();
    for (auto _ : state) {
        auto* map = new std::map<std::string, double>();
        for (int i = 0; i < kKeys; ++i)
            (*map)[Keys()[i]] = i + 1;
        benchmark::DoNotOptimize(map);
        state.PauseTiming();
        delete map;
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * kKeys);
}
BENCHMARK(BM_StdMapWrite)->Unit(benchmark::kMillisecond);

void BM_StdMapRead(benchmark::State& state)
{
    std::map<std::string, double> map;
    for (int i = 0; i < kKeys; ++i)
        map[Keys()[i]] = i + 1;
    double total = 0;
    for (auto _ : state) {
        for (const std::string& key : Keys()) {
            auto entry = map.find(key);
            total += entry->second;
        }
    }
    benchmark::DoNotOptimize(total);
    state.SetItemsProcessed(state.iterations() * kKeys);
}
BENCHMARK(BM_StdMapRead)->Unit(benchmark::kMillisecond);

} // namespace
