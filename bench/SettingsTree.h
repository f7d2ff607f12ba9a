#pragma once

// The settings tree of about 10 MB that the benchmarks of the configuration text and of the byte
// streams work on, made once from a fixed seed both as Vesk values and as the equivalent JSON:
// sections are associative arrays (JSON objects), vectors are vectors (JSON arrays), and both hold
// the same keys, strings, integers, fractions and booleans.

#include <cstdint>
#include <random>
#include <string>

#include <nlohmann/json.hpp>

#include <vesk/vesk.h>

namespace vesk_bench {

// Fixed, so that every run works on the same text.
inline const uint64_t kSeed = 20240611;
// Sections at the top; chosen so that the Vesk text comes to about 10 MB.
inline const int kTopSections = 530;
inline const int kMaxDepth = 5;

inline const char* const kWords[] = {
    "alpha",  "bravo",  "charlie", "delta",   "echo",    "foxtrot",  "golf",    "hotel",
    "india",  "juliet", "kilo",    "lima",    "mike",    "november", "oscar",   "papa",
    "quebec", "romeo",  "sierra",  "tango",   "uniform", "victor",   "whiskey", "xray",
    "yankee", "zulu",   "timeout", "retries", "path",    "enabled",  "colour",  "width",
};
inline const int kWordCount = sizeof kWords / sizeof kWords[0];

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
inline void MakeScalar(Generator& gen, CVeskGenericData** ppVesk, nlohmann::json* pJson)
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

inline void MakeSection(Generator& gen, int depth, CVeskGenericData** ppVesk,
                        nlohmann::json* pJson);

inline void MakeVector(Generator& gen, int depth, CVeskGenericData** ppVesk, nlohmann::json* pJson)
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

inline void MakeSection(Generator& gen, int depth, CVeskGenericData** ppVesk, nlohmann::json* pJson)
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

// The whole tree: a section of kTopSections sections.
inline void MakeSettingsTree(CVeskGenericData** ppVesk, nlohmann::json* pJson)
{
    Generator gen;
    VeskAssocArray* root = new VeskAssocArray(CVeskGdNull::Allocate());
    *pJson = nlohmann::json::object();
    for (int i = 0; i < kTopSections; ++i) {
        std::string key = "section_" + std::to_string(i);
        CVeskGenericData* value;
        nlohmann::json jsonValue;
        MakeSection(gen, 1, &value, &jsonValue);
        root->OnSetProperty(CDorlString(key.data(), static_cast<int>(key.size())), value);
        value->Release();
        (*pJson)[key] = std::move(jsonValue);
    }
    *ppVesk = CVeskGdObject::Allocate(root);
    root->Release();
}

} // namespace vesk_bench
