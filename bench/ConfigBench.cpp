// Reading and writing a settings tree of about 10 MB in the configuration text format, against
// two JSON libraries, nlohmann::json and RapidJSON, doing the same with the same tree as JSON.
//
// The tree is generated once from a fixed seed, as Vesk values and as the equivalent JSON:
// sections are associative arrays (JSON objects), vectors are vectors (JSON arrays), and both
// hold the same keys, strings, integers, fractions and booleans. The texts differ in size (the
// Vesk text is indented and puts one entry on a line, the JSON text is compact), so the figures
// to compare are bytes per second; the times are given as well.
//
// Every timed read includes freeing what was read, and every timed write produces the text in
// memory: the Vesk writer writes to an open_memstream stream, which grows its buffer as the JSON
// writers grow theirs.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <vesk/vesk.h>

namespace {

// Fixed, so that every run works on the same text.
const uint64_t kSeed = 20240611;
// Sections at the top; chosen so that the Vesk text comes to about 10 MB.
const int kTopSections = 530;
const int kMaxDepth = 5;

const char* const kWords[] = {
    "alpha",  "bravo",  "charlie", "delta",   "echo",    "foxtrot",  "golf",    "hotel",
    "india",  "juliet", "kilo",    "lima",    "mike",    "november", "oscar",   "papa",
    "quebec", "romeo",  "sierra",  "tango",   "uniform", "victor",   "whiskey", "xray",
    "yankee", "zulu",   "timeout", "retries", "path",    "enabled",  "colour",  "width",
};
const int kWordCount = sizeof kWords / sizeof kWords[0];

// The engine's output is fixed by the standard, unlike that of the distributions, so the tree
// is the same with any library.
class Generator {
public:
    Generator() : m_engine(kSeed) {}
    uint64_t Below(uint64_t bound) { return m_engine() % bound; }

    std::string Word() { return kWords[Below(kWordCount)]; }

    std::string Key(int index) { return Word() + "_" + std::to_string(index); }

    // Mostly plain words; some with spaces, a line end, a quote or a backslash, which both
    // formats must escape.
    std::string Text()
    {
        std::string text = Word();
        int words = static_cast<int>(Below(6));
        for (int i = 0; i < words; ++i)
            text += " " + Word();
        switch (Below(20)) {
        case 0:
            text += "\nsecond line";
            break;
        case 1:
            text += " \"quoted\"";
            break;
        case 2:
            text += " C:\\dir\\file";
            break;
        default:
            break;
        }
        return text;
    }

    std::mt19937_64 m_engine;
};

// One leaf, made both ways.
void MakeScalar(Generator& gen, CVeskGenericData** ppVesk, nlohmann::json* pJson)
{
    switch (gen.Below(4)) {
    case 0: {
        std::string text = gen.Text();
        *ppVesk = CVeskGdString::Allocate(CDorlString(text.data(), static_cast<int>(text.size())));
        *pJson = text;
        break;
    }
    case 1: {
        // Integers: within 32 bits, which the Vesk writer puts down as integers.
        int64_t value = static_cast<int64_t>(gen.Below(2000001)) - 1000000;
        *ppVesk = CVeskGdDouble::Allocate(static_cast<double>(value));
        *pJson = value;
        break;
    }
    case 2: {
        // Fractions of at most six digits, which both writers put down in short decimal form.
        int64_t hundredths = static_cast<int64_t>(gen.Below(200000)) - 100000;
        if (hundredths % 100 == 0)
            hundredths += 1;
        double value = static_cast<double>(hundredths) / 100.0;
        *ppVesk = CVeskGdDouble::Allocate(value);
        *pJson = value;
        break;
    }
    default: {
        bool value = gen.Below(2) != 0;
        *ppVesk = CVeskGdBoolean::Allocate(value ? 1 : 0);
        *pJson = value;
        break;
    }
    }
}

void MakeSection(Generator& gen, int depth, CVeskGenericData** ppVesk, nlohmann::json* pJson);

void MakeVector(Generator& gen, int depth, CVeskGenericData** ppVesk, nlohmann::json* pJson)
{
    CVeskGdVector* vector = CVeskGdVector::Allocate(0);
    *pJson = nlohmann::json::array();
    int size = 1 + static_cast<int>(gen.Below(8));
    for (int i = 0; i < size; ++i) {
        CVeskGenericData* element;
        nlohmann::json jsonElement;
        // Now and then a vector of small sections, as lists of servers or of users are.
        if (depth < kMaxDepth && gen.Below(10) == 0)
            MakeSection(gen, depth + 1, &element, &jsonElement);
        else
            MakeScalar(gen, &element, &jsonElement);
        vector->SetElement(i, element);
        element->Release();
        pJson->push_back(std::move(jsonElement));
    }
    *ppVesk = vector;
}

void MakeSection(Generator& gen, int depth, CVeskGenericData** ppVesk, nlohmann::json* pJson)
{
    VeskAssocArray* array = new VeskAssocArray(CVeskGdNull::Allocate());
    *pJson = nlohmann::json::object();
    int entries = 3 + static_cast<int>(gen.Below(10));
    for (int i = 0; i < entries; ++i) {
        std::string key = gen.Key(i);
        CVeskGenericData* value;
        nlohmann::json jsonValue;
        uint64_t kind = gen.Below(10);
        if (depth < kMaxDepth && kind < 3)
            MakeSection(gen, depth + 1, &value, &jsonValue);
        else if (kind == 3)
            MakeVector(gen, depth, &value, &jsonValue);
        else
            MakeScalar(gen, &value, &jsonValue);
        array->OnSetProperty(CDorlString(key.data(), static_cast<int>(key.size())), value);
        value->Release();
        (*pJson)[key] = std::move(jsonValue);
    }
    *ppVesk = CVeskGdObject::Allocate(array);
    array->Release();
}

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
        Generator gen;
        VeskAssocArray* root = new VeskAssocArray(CVeskGdNull::Allocate());
        data->json = nlohmann::json::object();
        for (int i = 0; i < kTopSections; ++i) {
            std::string key = "section_" + std::to_string(i);
            CVeskGenericData* value;
            nlohmann::json jsonValue;
            MakeSection(gen, 1, &value, &jsonValue);
            root->OnSetProperty(CDorlString(key.data(), static_cast<int>(key.size())), value);
            value->Release();
            data->json[key] = std::move(jsonValue);
        }
        data->vesk = CVeskGdObject::Allocate(root);
        root->Release();

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
