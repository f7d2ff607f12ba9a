// Writing and reading the settings tree of the configuration benchmark (SettingsTree.h, about
// 10 MB as configuration text) as a byte stream in the current format, against two MessagePack
// implementations doing the same with the same tree: nlohmann::json's to_msgpack and
// from_msgpack, and msgpack-c's pack and unpack.
//
// Each library works on its own in-memory form: Vesk values, a nlohmann::json tree, and
// msgpack-c's object tree (made by unpacking the MessagePack bytes once). Every timed write
// produces the bytes in memory and every timed read includes freeing what was read. The streams
// differ in size (a Vesk section carries its "*default" and "*end" entries), so bytes per second
// and times are both given.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <msgpack.hpp>
#include <nlohmann/json.hpp>

#include <vesk/vesk.h>

#include "SettingsTree.h"

namespace {

struct Data {
    CVeskGenericData* vesk = nullptr;
    nlohmann::json json;
    std::string veskBytes;
    std::vector<uint8_t> msgpackBytes;
    msgpack::object_handle msgpackTree;
};

std::string WriteVesk(CVeskGenericData* value)
{
    CVeskGdMemorySerialiserIO io;
    CVeskGdSerialiserImpl serialiser(&io);
    if (!serialiser.WriteGdObject(value)) {
        std::fprintf(stderr, "the Vesk writer failed\n");
        std::exit(1);
    }
    return std::string(reinterpret_cast<const char*>(io.GetData()), io.GetSize());
}

// Made on first use, outside every timing, and checked: each library must read back its own
// bytes to what was written, or the figures would compare different work.
const Data& TheData()
{
    static const Data* s_data = [] {
        DorlRunInitialisers();
        Data* data = new Data;
        vesk_bench::MakeSettingsTree(&data->vesk, &data->json);
        data->veskBytes = WriteVesk(data->vesk);
        data->msgpackBytes = nlohmann::json::to_msgpack(data->json);

        CVeskGdMemorySerialiserIO io(data->veskBytes.data(),
                                     static_cast<int>(data->veskBytes.size()));
        CVeskGdSerialiserImpl serialiser(&io);
        CVeskGenericData* back = serialiser.ReadGdObject();
        if (!back || WriteVesk(back) != data->veskBytes) {
            std::fprintf(stderr, "the Vesk stream does not read back to itself\n");
            std::exit(1);
        }
        back->Release();
        if (nlohmann::json::from_msgpack(data->msgpackBytes) != data->json) {
            std::fprintf(stderr, "nlohmann's MessagePack does not read back to itself\n");
            std::exit(1);
        }
        const char* bytes = reinterpret_cast<const char*>(data->msgpackBytes.data());
        data->msgpackTree = msgpack::unpack(bytes, data->msgpackBytes.size());
        msgpack::sbuffer buffer;
        msgpack::pack(buffer, data->msgpackTree.get());
        if (nlohmann::json::from_msgpack(buffer.data(), buffer.data() + buffer.size()) !=
            data->json) {
            std::fprintf(stderr, "msgpack-c does not pack the tree back to the same tree\n");
            std::exit(1);
        }
        std::fprintf(stderr, "Vesk stream: %zu bytes; MessagePack: %zu bytes\n",
                     data->veskBytes.size(), data->msgpackBytes.size());
        return data;
    }();
    return *s_data;
}

void BM_VeskStreamWrite(benchmark::State& state)
{
    const Data& data = TheData();
    for (auto _ : state) {
        CVeskGdMemorySerialiserIO io;
        CVeskGdSerialiserImpl serialiser(&io);
        serialiser.WriteGdObject(data.vesk);
        benchmark::DoNotOptimize(io.GetData());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * data.veskBytes.size()));
}
BENCHMARK(BM_VeskStreamWrite)->Unit(benchmark::kMillisecond)->Iterations(10);

void BM_NlohmannMsgpackWrite(benchmark::State& state)
{
    const Data& data = TheData();
    for (auto _ : state) {
        std::vector<uint8_t> bytes = nlohmann::json::to_msgpack(data.json);
        benchmark::DoNotOptimize(bytes.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * data.msgpackBytes.size()));
}
BENCHMARK(BM_NlohmannMsgpackWrite)->Unit(benchmark::kMillisecond)->Iterations(10);

void BM_MsgpackCWrite(benchmark::State& state)
{
    const Data& data = TheData();
    for (auto _ : state) {
        msgpack::sbuffer buffer;
        msgpack::pack(buffer, data.msgpackTree.get());
        benchmark::DoNotOptimize(buffer.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * data.msgpackBytes.size()));
}
BENCHMARK(BM_MsgpackCWrite)->Unit(benchmark::kMillisecond)->Iterations(10);

void BM_VeskStreamRead(benchmark::State& state)
{
    const Data& data = TheData();
    CVeskGdMemorySerialiserIO io(data.veskBytes.data(), static_cast<int>(data.veskBytes.size()));
    for (auto _ : state) {
        io.Rewind();
        CVeskGdSerialiserImpl serialiser(&io);
        CVeskGenericData* value = serialiser.ReadGdObject();
        benchmark::DoNotOptimize(value);
        value->Release();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * data.veskBytes.size()));
}
BENCHMARK(BM_VeskStreamRead)->Unit(benchmark::kMillisecond)->Iterations(10);

void BM_NlohmannMsgpackRead(benchmark::State& state)
{
    const Data& data = TheData();
    for (auto _ : state) {
        nlohmann::json value = nlohmann::json::from_msgpack(data.msgpackBytes);
        benchmark::DoNotOptimize(value);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * data.msgpackBytes.size()));
}
BENCHMARK(BM_NlohmannMsgpackRead)->Unit(benchmark::kMillisecond)->Iterations(10);

void BM_MsgpackCRead(benchmark::State& state)
{
    const Data& data = TheData();
    const char* bytes = reinterpret_cast<const char*>(data.msgpackBytes.data());
    for (auto _ : state) {
        msgpack::object_handle value = msgpack::unpack(bytes, data.msgpackBytes.size());
        benchmark::DoNotOptimize(value.get());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * data.msgpackBytes.size()));
}
BENCHMARK(BM_MsgpackCRead)->Unit(benchmark::kMillisecond)->Iterations(10);

} // namespace
