#pragma once

// Shared pieces of the library's test suites.

#include <cstdlib>
#include <fstream>
#include <initializer_list>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <vesk/vesk.h>

#include "support/Capture.h"

namespace vesk_test {

// Runs the library's start-up routine, as a host does once after loading it; already on
// construction, so that a fixture's members may be library objects.
class StartedTest : public ::testing::Test {
protected:
    StartedTest() { DorlRunInitialisers(); }
    void SetUp() override { DorlRunInitialisers(); }
};

inline std::string Printed(CVeskGenericData* value)
{
    std::ostringstream out;
    out << *value;
    return out.str();
}

// A property's value as printed, "<null>" when there is none.
inline std::string PropertyText(IVeskCommand* object, const char* name)
{
    CVeskGenericData* value = object->GetProperty(name, 0);
    std::string text = value ? Printed(value) : "<null>";
    if (value)
        value->Release();
    return text;
}

// The text of a String value, or a marker when the value is something else.
inline std::string Text(CVeskGenericData* value)
{
    if (!value || value->GetType() != CVeskGenericData::dtString)
        return "<not a string>";
    const CDorlString& text = static_cast<CVeskGdString*>(value)->m_sValue;
    return std::string(static_cast<const char*>(text), text.GetLength());
}

inline long Probe(const char* name)
{
    CDorlProberVariable* probe = DorlFindProbe("\\Resources\\GenericData", name);
    return probe ? probe->GetValue() : -1;
}

// A vector of the values, in order; takes over the reference of each.
inline CVeskGdVector* MakeVector(std::initializer_list<CVeskGenericData*> values)
{
    CVeskGdVector* vector = CVeskGdVector::Allocate(0);
    for (CVeskGenericData* value : values) {
        vector->SetElement(vector->GetSize(), value);
        value->Release();
    }
    return vector;
}

// An associative array value with the default and entries given; takes over every reference.
inline CVeskGenericData*
MakeArrayValue(CVeskGenericData* defaultValue,
               std::initializer_list<std::pair<const char*, CVeskGenericData*>> entries = {})
{
    VeskAssocArray* array = new VeskAssocArray(defaultValue);
    defaultValue->Release();
    for (auto& [name, value] : entries) {
        array->OnSetProperty(name, value);
        value->Release();
    }
    CVeskGenericData* object = CVeskGdObject::Allocate(array);
    array->Release();
    return object;
}

// The whole file as bytes; empty when it cannot be read.
inline std::string FileText(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// Gives each test a directory of its own under /tmp, removed with what it holds.
class ScratchDirTest : public StartedTest {
protected:
    void SetUp() override
    {
        StartedTest::SetUp();
        char pattern[] = "/tmp/vesk-test-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        m_sDir = pattern;
    }
    void TearDown() override { std::system(("rm -rf '" + m_sDir + "'").c_str()); }

    std::string Path(const char* name) const { return m_sDir + "/" + name; }

    std::string m_sDir;
};

// What an enumerator lists, one "name|description|type|status" per property, to its end.
inline std::vector<std::string> Described(CVeskPropertyEnum* properties)
{
    std::vector<std::string> described;
    CDorlString name, description, type;
    CVeskPropertyEnum::ReadOnlyStatus status;
    while (properties->Next(&name, &description, &type, &status))
        described.push_back(std::string(name) + "|" + std::string(description) + "|" +
                            std::string(type) + "|" + std::to_string(status));
    return described;
}

// Holds one reference and releases it at the end of the scope.
template <class T> class Ref {
public:
    explicit Ref(T* p = nullptr) : m_p(p) {}
    ~Ref()
    {
        if (m_p)
            m_p->Release();
    }
    Ref(const Ref&) = delete;
    Ref& operator=(const Ref&) = delete;
    T* get() const { return m_p; }
    T* operator->() const { return m_p; }
    T& operator*() const { return *m_p; }
    T** operator&() { return &m_p; }

private:
    T* m_p;
};

} // namespace vesk_test
