// Reading and writing a settings tree of about 10 MB in the configuration text format, against
// two JSON libraries, nlohmann::json and RapidJSON, doing the same with the same tree as JSON.
//
// The tree (SettingsTree.h) is generated once from a fixed seed, as Vesk values and as the
// equivalent JSON. The texts differ in size (the
// Vesk text is indented and puts one entry on a line, the JSON text is compact), so the figures
// to compare are bytes per second; the times are given as well.
//
// Every timed read includes freeing what was read, and every timed write produces the text in
// memory: the Vesk writer writes to an open_memstream stream, which grows its buffer as the JSON
// writers grow theirs.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <vesk/vesk.h>

#include "SettingsTree.h"

namespace {

struct Data {
    CVeskGenericData* vesk = nullptr;
    nlohmann::json json;
    std::string veskText;
    CDorlString veskDorlText;
    std::string jsonText;
    rapidjson::Document rapid;
};

std::string WriteVeskText(CVeskGenericData* value)
{
    FILE* file = std::tmpfile();
    if (!file || !VeskWriteConfigStream(file, value)) {
        std::fprintf(stderr, "cannot write the Vesk text\n");
        std::exit(1);
    }
    long size = std::ftell(file);
    std::rewind(file);
    std::string text(static_cast<size_t>(size), '\0');
    if (std::fread(text.data(), 1, text.size(), file) != text.size()) {
        std::fprintf(stderr, "cannot read the Vesk text back\n");
        std::exit(1);
    }
    std::fclose(file);
    return text;
}

// Made on first use, outside every timing, and checked: each library must read back its own
// text to what was written, or the figures would compare different work.
const Data& TheData()
{
    static const Data* s_data = [] {
        DorlRunInitialisers();
        Data* data = new Data;
        vesk_bench::MakeSettingsTree(&data->vesk, &data->json);

        data->veskText = WriteVeskText(data->vesk);
        data->veskDorlText =
            CDorlString(data->veskText.data(), static_cast<int>(data->veskText.size()));
        data->jsonText = data->json.dump();

        CVeskGenericData* back = VeskReadConfigString(data->veskDorlText);
        if (!back || WriteVeskText(back) != data->veskText) {
            std::fprintf(stderr, "the Vesk text does not read back to itself\n");
            std::exit(1);
        }
        back->Release();
        if (nlohmann::json::parse(data->jsonText) != data->json) {
            std::fprintf(stderr, "the JSON text does not read back to itself\n");
            std::exit(1);
        }
        data->rapid.Parse(data->jsonText.data(), data->jsonText.size());
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        if (data->rapid.HasParseError() || !data->rapid.Accept(writer) ||
            nlohmann::json::parse(buffer.GetString()) != data->json) {
            std::fprintf(stderr, "RapidJSON does not read the JSON text to the same tree\n");
            std::exit(1);
        }
        std::fprintf(stderr, "Vesk text: %zu bytes; JSON text: %zu bytes\n", data->veskText.size(),
                     data->jsonText.size());
        return data;
    }();
    return *s_data;
}

void BM_VeskRead(benchmark::State& state)
{
    const Data& data = TheData();
    for (auto _ : state) {
        CVeskGenericData* value = VeskReadConfigString(data.veskDorlText);
        benchmark::DoNotOptimize(value);
        value->Release();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * data.veskText.size()));
}
BENCHMARK(BM_VeskRead)->Unit(benchmark::kMillisecond)->Iterations(10);

void BM_NlohmannRead(benchmark::State& state)
{
    const Data& data = TheData();
    for (auto _ : state) {
        nlohmann::json value = nlohmann::json::parse(data.jsonText);
        benchmark::DoNotOptimize(value);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * data.jsonText.size()));
}
BENCHMARK(BM_NlohmannRead)->Unit(benchmark::kMillisecond)->Iterations(10);

void BM_RapidJsonRead(benchmark::State& state)
{
    const Data& data = TheData();
    for (auto _ : state) {
        rapidjson::Document document;
        document.Parse(data.jsonText.data(), data.jsonText.size());
        benchmark::DoNotOptimize(document);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * data.jsonText.size()));
}
BENCHMARK(BM_RapidJsonRead)->Unit(benchmark::kMillisecond)->Iterations(10);

void BM_VeskWrite(benchmark::State& state)
{
    const Data& data = TheData();
    size_t written = 0;
    for (auto _ : state) {
        char* buffer = nullptr;
        size_t size = 0;
        FILE* stream = open_memstream(&buffer, &size);
        if (!stream || !VeskWriteConfigStream(stream, data.vesk)) {
            state.SkipWithError("the Vesk writer failed");
            break;
        }
        std::fclose(stream);
        benchmark::DoNotOptimize(buffer);
        written = size;
        std::free(buffer);
    }
    if (written != data.veskText.size())
        state.SkipWithError("the Vesk writer wrote another text");
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * data.veskText.size()));
}
BENCHMARK(BM_VeskWrite)->Unit(benchmark::kMillisecond)->Iterations(10);

void BM_NlohmannWrite(benchmark::State& state)
{
    const Data& data = TheData();
    for (auto _ : state) {
        std::string text = data.json.dump();
        benchmark::DoNotOptimize(text);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * data.jsonText.size()));
}
BENCHMARK(BM_NlohmannWrite)->Unit(benchmark::kMillisecond)->Iterations(10);

void BM_RapidJsonWrite(benchmark::State& state)
{
    const Data& data = TheData();
    for (auto _ : state) {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        data.rapid.Accept(writer);
        benchmark::DoNotOptimize(buffer.GetString());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * data.jsonText.size()));
}
BENCHMARK(BM_RapidJsonWrite)->Unit(benchmark::kMillisecond)->Iterations(10);

} // namespace
