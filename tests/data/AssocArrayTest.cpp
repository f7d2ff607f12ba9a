#include <string>
#include <vector>

#include <vesk/GdVector.h>

#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

class AssocArray : public StartedTest {
protected:
    // An array that holds the only reference on its default.
    static VeskAssocArray* Make(CVeskGenericData* defaultValue)
    {
        VeskAssocArray* array = new VeskAssocArray(defaultValue);
        defaultValue->Release();
        return array;
    }
    static int Set(IVeskCommand* object, const char* name, CVeskGenericData* value)
    {
        int result = object->SetProperty(name, value);
        value->Release();
        return result;
    }
    static std::string Read(IVeskCommand* object, const char* name)
    {
        Ref<CVeskGenericData> value(object->GetProperty(name, 0));
        return value.get() ? Printed(value.get()) : "<null>";
    }
};

long AssocProbe()
{
    CDorlProberVariable* probe = DorlFindProbe("\\Resources\\Ruol", "AssocArray");
    // Built at the first array.
    return probe ? probe->GetValue() : 0;
}

// Writes into a list of strings and values and reads them back in the same order.
class CRecordingSerialiser : public CVeskGdSerialiser {
public:
    struct Item {
        std::string text;
        CVeskGenericData* value; // null for a string
    };
    ~CRecordingSerialiser() override { Truncate(items.size()); }

    void Truncate(size_t count)
    {
        for (; count > 0; --count) {
            if (items.back().value)
                items.back().value->Release();
            items.pop_back();
        }
    }

    int WriteGdObject(CVeskGenericData* value) override
    {
        log += "obj " + Printed(value) + ";";
        unlockedWrites += VeskAssocArray::GetLockDepth() == 0;
        value->AddRef();
        items.push_back({"", value});
        return 1;
    }
    void WriteString(CDorlString value, bool writeType) override
    {
        log += "str " + std::string(value) + (writeType ? ";" : " untyped;");
        items.push_back({std::string(value), nullptr});
    }
    CVeskGenericData* ReadGdObject() override
    {
        if (next >= items.size() || !items[next].value)
            return nullptr;
        items[next].value->AddRef();
        return items[next++].value;
    }
    // Names are always read with their type mark.
    int ReadString(CDorlString& value, int checkType) override
    {
        if (!checkType || next >= items.size() || items[next].value)
            return 0;
        value = items[next++].text.c_str();
        return 1;
    }

    int WriteObject(CVeskGdObject*) override { return 0; }
    void WriteDouble(double, bool) override { log += "double;"; }
    void WriteLong(long, bool) override { log += "long;"; }
    void WriteUnsignedLong(long, bool) override { log += "ulong;"; }
    void WriteBoolean(int, bool) override { log += "bool;"; }
    void WriteNull(bool) override { log += "null;"; }
    void WriteVectorHeader(int) override { log += "vector;"; }
    CVeskGenericData* ReadObject(int) override { return nullptr; }
    int ReadDouble(double&, int) override { return 0; }
    int ReadLong(long&, int) override { return 0; }
    int ReadUnsignedLong(unsigned long&, int) override { return 0; }
    int ReadBoolean(int&, int) override { return 0; }
    SerialiseType ReadType() override { return SerialiseNone; }

    std::string log;
    std::vector<Item> items;
    size_t next = 0;
    int unlockedWrites = 0;
};

// Records "key=value" for each call.
class CPairRecorder : public CVeskSimpleCommandObject {
public:
    int STDMETHODCALLTYPE CallMethod(CVeskCommandContext* context) override
    {
        CDorlString key;
        Ref<CVeskGenericData> value;
        context->GetParam("key", &key, 0);
        context->GetParam("value", &value, 0);
        seen += std::string(key) + "=" + Printed(value.get()) + ";";
        return 1;
    }
    std::string seen;
};

} // namespace

TEST_F(AssocArray, StoringTheDefaultRemovesTheKey)
{
    Ref<VeskAssocArray> nulls(Make(CVeskGdNull::Allocate()));
    IVeskCommand* object = &nulls->m_xCommand;
    EXPECT_EQ(Set(object, "a", CVeskGdDouble::Allocate(1)), 1);
    EXPECT_EQ(Set(object, "", CVeskGdString::Allocate("empty")), 1);
    EXPECT_EQ(Set(object, "_x", CVeskGdDouble::Allocate(2)), 1);
    EXPECT_EQ(Read(object, "*size"), "3");
    EXPECT_EQ(Read(object, ""), "empty");
    EXPECT_EQ(Read(object, "_x"), "2");
    EXPECT_EQ(Set(object, "a", CVeskGdNull::Allocate()), 1);
    EXPECT_EQ(Set(object, "_x", CVeskGdNull::Allocate()), 1);
    EXPECT_EQ(Read(object, "*size"), "1");
    EXPECT_EQ(Read(object, "a"), "Null");

    // None equals nothing, not even None, and still deletes where it is the default.
    Ref<VeskAssocArray> nones(Make(CVeskGdNone::Allocate()));
    Set(&nones->m_xCommand, "a", CVeskGdDouble::Allocate(1));
    EXPECT_EQ(Set(&nones->m_xCommand, "a", CVeskGdNone::Allocate()), 1);
    EXPECT_EQ(nones->Size(), 0);

    // A new default leaves the entries alone, even one that now equals it.
    Ref<VeskAssocArray> zeros(Make(CVeskGdDouble::Allocate(0)));
    object = &zeros->m_xCommand;
    EXPECT_EQ(Set(object, "x", CVeskGdDouble::Allocate(0)), 1);
    EXPECT_EQ(zeros->Size(), 0);
    Set(object, "y", CVeskGdDouble::Allocate(5));
    EXPECT_EQ(Set(object, "*default", CVeskGdDouble::Allocate(5)), 1);
    EXPECT_EQ(Read(object, "x"), "5");
    EXPECT_EQ(zeros->Size(), 1);
    Set(object, "y", CVeskGdDouble::Allocate(5));
    EXPECT_EQ(zeros->Size(), 0);
    // AddProperty is the container's own: no sparse rule.
    zeros->AddDouble("z", 5);
    EXPECT_EQ(Read(object, "*size"), "1");
}

TEST_F(AssocArray, MissingKeysReadAsTheDefaultItselfStoredKeysAsCopies)
{
    CVeskGdDouble* fallback = CVeskGdDouble::Allocate(7);
    Ref<VeskAssocArray> array(new VeskAssocArray(fallback));
    IVeskCommand* object = &array->m_xCommand;
    Ref<CVeskGenericData> missing(object->GetProperty("x", 0));
    Ref<CVeskGenericData> starDefault(object->GetProperty("*default", 0));
    EXPECT_EQ(missing.get(), fallback);
    EXPECT_EQ(starDefault.get(), fallback);
    EXPECT_EQ(object->GetProperty("x", 1), nullptr);

    Set(object, "n", CVeskGdDouble::Allocate(1));
    Ref<CVeskGenericData> first(object->GetProperty("n", 0));
    Ref<CVeskGenericData> second(object->GetProperty("n", 0));
    EXPECT_NE(first.get(), second.get());
    static_cast<CVeskGdDouble*>(first.get())->m_dValue = 2;
    EXPECT_EQ(Read(object, "n"), "1");

    // A write through the indirect reaches the entry, but stores the default without deleting.
    Ref<CVeskGenericData> slot(object->GetProperty("n", 1));
    ASSERT_EQ(slot->GetType(), CVeskGenericData::dtIndirect);
    static_cast<CVeskGdIndirect*>(slot.get())->SetValue(fallback);
    Ref<CVeskGenericData> written(object->GetProperty("n", 0));
    EXPECT_NE(written.get(), fallback);
    EXPECT_EQ(Printed(written.get()), "7");
    EXPECT_EQ(array->Size(), 1);
    fallback->Release();

    // An entry that holds an indirect reads as a copy of the value it refers to.
    Ref<CVeskGdString> three(CVeskGdString::Allocate("three"));
    CVeskGdIndirect* indirect = CVeskGdIndirect::Allocate();
    indirect->SetValue(three.get());
    array->AddPropertyNoRef("i", indirect);
    Ref<CVeskGenericData> viaIndirect(object->GetProperty("i", 0));
    EXPECT_NE(viaIndirect.get(), three.get());
    EXPECT_EQ(Text(viaIndirect.get()), "three");
}

TEST_F(AssocArray, ReservedNamesDescribeTheArray)
{
    CVeskGdDouble* fallback = CVeskGdDouble::Allocate(-1);
    Ref<VeskAssocArray> array(Make(fallback));
    IVeskCommand* object = &array->m_xCommand;
    EXPECT_EQ(Read(object, "*name"), "AssocArray");
    EXPECT_EQ(Read(object, "*first"), "Null");
    EXPECT_EQ(Read(object, "*last"), "Null");
    EXPECT_EQ(Read(object, "*size"), "0");
    // An unknown '*' name is nothing at all; an unknown '_' name is a plain key.
    EXPECT_EQ(object->GetProperty("*other", 0), nullptr);
    Ref<CVeskGenericData> underscore(object->GetProperty("_other", 0));
    EXPECT_EQ(underscore.get(), fallback);

    EXPECT_EQ(Set(object, "*size", CVeskGdDouble::Allocate(4)), 0);
    EXPECT_EQ(Set(object, "*first", CVeskGdString::Allocate("a")), 0);
    EXPECT_EQ(array->Size(), 0);
    Set(object, "b", CVeskGdDouble::Allocate(2));
    Set(object, "a", CVeskGdDouble::Allocate(1));
    EXPECT_EQ(Read(object, "*first"), "a");
    EXPECT_EQ(Read(object, "*last"), "b");
}

TEST_F(AssocArray, KeysAndValuesListTheEntriesInKeyOrder)
{
    Ref<VeskAssocArray> array(Make(CVeskGdNull::Allocate()));
    IVeskCommand* object = &array->m_xCommand;
    Ref<CVeskGenericData> noKeys(object->GetProperty("*keys", 0));
    Ref<CVeskGenericData> noValues(object->GetProperty("*values", 0));
    ASSERT_EQ(noKeys->GetType(), CVeskGenericData::dtVector);
    ASSERT_EQ(noValues->GetType(), CVeskGenericData::dtVector);
    EXPECT_EQ(static_cast<CVeskGdVector*>(noKeys.get())->GetSize(), 0);
    EXPECT_EQ(static_cast<CVeskGdVector*>(noValues.get())->GetSize(), 0);

    Set(object, "b", CVeskGdString::Allocate("two"));
    Set(object, "a", CVeskGdString::Allocate("one"));
    Ref<CVeskGenericData> keys(object->GetProperty("*keys", 0));
    Ref<CVeskGenericData> values(object->GetProperty("*values", 0));
    EXPECT_EQ(Printed(keys.get()), "[a, b]");
    EXPECT_EQ(Printed(values.get()), "[one, two]");
    // The values are the stored objects themselves, not copies.
    Ref<CVeskGenericData> slot(object->GetProperty("a", 1));
    Ref<CVeskGenericData> shared(static_cast<CVeskGdVector*>(values.get())->GetElement(0));
    EXPECT_EQ(shared.get(), static_cast<CVeskGdIndirect*>(slot.get())->GetValue(0));
}

TEST_F(AssocArray, ExistAndForEachSeeOnlyStoredEntries)
{
    long before = AssocProbe();
    VeskAssocArray* array = Make(CVeskGdNull::Allocate());
    IVeskCommand* object = &array->m_xCommand;
    Set(object, "_ForEach", CVeskGdDouble::Allocate(1));
    Set(object, "b", CVeskGdDouble::Allocate(2));
    Set(object, "a", CVeskGdString::Allocate("x"));
    EXPECT_EQ(array->Size(), 3);

    CVeskGenericData* exist = object->GetProperty("_Exist", 0);
    CVeskGenericData* forEach = object->GetProperty("_ForEach", 0);
    ASSERT_EQ(forEach->GetType(), CVeskGenericData::dtObject);
    Ref<CVeskGenericData> name(forEach->GetProperty("name", 0));
    EXPECT_EQ(Text(name.get()), "ForEach");
    // The function objects keep the array alive.
    array->Release();
    EXPECT_EQ(AssocProbe(), before + 1);

    auto exists = [&](const char* key) {
        CVeskCommandContext context;
        context.AddParam("val", CDorlString(key));
        EXPECT_EQ(exist->CallMethod(&context), 1);
        Ref<CVeskGenericData> result(context.GetReturnValue());
        return Printed(result.get());
    };
    EXPECT_EQ(exists("_ForEach"), "True");
    EXPECT_EQ(exists("b"), "True");
    EXPECT_EQ(exists("c"), "False");
    EXPECT_EQ(exists("*size"), "False");
    Set(object, "b", CVeskGdNull::Allocate());
    EXPECT_EQ(exists("b"), "False");
    {
        Capture capture;
        CVeskCommandContext context;
        EXPECT_EQ(exist->CallMethod(&context), 1);
        Ref<CVeskGenericData> untouched(context.GetReturnValue());
        EXPECT_EQ(Printed(untouched.get()), "None");
    }

    CPairRecorder* recorder = new CPairRecorder();
    CVeskCommandContext context;
    context.AddParam("Predicate", static_cast<IUnknown*>(recorder));
    EXPECT_EQ(forEach->CallMethod(&context), 1);
    EXPECT_EQ(recorder->seen, "_ForEach=1;a=x;");
    EXPECT_EQ(recorder->Release(), 0u);

    exist->Release();
    EXPECT_EQ(AssocProbe(), before + 1);
    forEach->Release();
    EXPECT_EQ(AssocProbe(), before);
}

TEST_F(AssocArray, ContainerEntriesEnumerateInKeyOrder)
{
    Ref<CVeskGenericDataContainer> container(new CVeskGenericDataContainer());
    IVeskCommand* object = &container->m_xCommand;
    container->AddString("b", "text");
    container->AddDouble("a", 1);
    container->AddBoolean("c", true);
    container->AddString("b", "again");
    EXPECT_EQ(container->Size(), 3);
    EXPECT_EQ(Set(object, "d", CVeskGdDouble::Allocate(4)), 0);
    EXPECT_EQ(object->GetProperty("d", 0), nullptr);

    CVeskPropertyEnum* entries = object->GetPropertyEnumerator();
    CVeskGenericData* value = nullptr;
    EXPECT_EQ(entries->GetCurrentValue(&value), 0);
    CDorlString name, description, type;
    CVeskPropertyEnum::ReadOnlyStatus status = CVeskPropertyEnum::ReadOnly;
    std::string seen;
    while (entries->Next(&name, &description, &type, &status)) {
        ASSERT_EQ(entries->GetCurrentValue(&value), 1);
        seen += std::string(name) + "=" + Printed(value) + ";";
        value->Release();
        EXPECT_EQ(std::string(description), "No description");
        EXPECT_EQ(std::string(type), "Any");
        EXPECT_EQ(status, CVeskPropertyEnum::ReadWrite);
    }
    EXPECT_EQ(seen, "a=1;b=again;c=True;");
    EXPECT_EQ(entries->GetCurrentValue(&value), 0);
    entries->Reset();
    ASSERT_EQ(entries->Next(&name, &description, &type, &status), 1);
    EXPECT_EQ(std::string(name), "a");
    entries->Delete();

    container->RemoveProperty("b");
    container->RemoveProperty("missing");
    EXPECT_EQ(container->Size(), 2);

    // Auto-created names come into being as None on read and on write.
    Ref<CVeskGenericDataContainer> automatic(new CVeskGenericDataContainer(1));
    EXPECT_EQ(Read(&automatic->m_xCommand, "x"), "None");
    EXPECT_EQ(Set(&automatic->m_xCommand, "y", CVeskGdDouble::Allocate(2)), 1);
    EXPECT_EQ(automatic->Size(), 2);
}

TEST_F(AssocArray, ArraysAnswerSerialiseFirstAndAreCounted)
{
    static std::vector<std::string> s_events;
    s_events.clear();
    VeskAssocArray::SetAllocationMonitor([](void*, const char* typeName, int bCreated) {
        s_events.push_back(std::string(typeName) + (bCreated ? "+" : "-"));
    });
    long before = AssocProbe();
    VeskAssocArray* array = Make(CVeskGdNull::Allocate());
    EXPECT_EQ(AssocProbe(), before + 1);

    void* unknown = nullptr;
    void* command = nullptr;
    EXPECT_EQ(array->QueryInterface(&IID_IUnknown, &unknown), S_OK);
    EXPECT_EQ(array->QueryInterface(&IID_IVeskCommand, &command), S_OK);
    EXPECT_EQ(unknown, static_cast<void*>(&array->m_xVeskSerialise));
    EXPECT_EQ(command, static_cast<void*>(&array->m_xCommand));
    EXPECT_EQ(std::string(array->m_xVeskSerialise.GetCreationName()), "AssocArray");
    array->Release();
    array->Release();
    EXPECT_EQ(array->Release(), 0u);
    EXPECT_EQ(AssocProbe(), before);
    VeskAssocArray::SetAllocationMonitor(nullptr);
    EXPECT_EQ(s_events, (std::vector<std::string>{"Assoc+", "Assoc-"}));

    Ref<CVeskGenericDataContainer> container(new CVeskGenericDataContainer());
    EXPECT_EQ(container->GetInterface(&IID_IUnknown), static_cast<void*>(&container->m_xCommand));
}

TEST_F(AssocArray, SerialisedFormIsPairsClosedByEndWithTheDefaultFirst)
{
    Ref<VeskAssocArray> source(Make(CVeskGdNull::Allocate()));
    Set(&source->m_xCommand, "b", CVeskGdDouble::Allocate(2));
    Set(&source->m_xCommand, "a", CVeskGdString::Allocate("x"));
    CRecordingSerialiser stream;
    EXPECT_EQ(source->m_xVeskSerialise.Serialise(&stream), 1);
    EXPECT_EQ(stream.log, "str *default;obj Null;str a;obj x;str b;obj 2;str *end;");
    EXPECT_EQ(stream.unlockedWrites, 0);

    // Read into an array with entries and another default: the written default wins, the
    // entries that the stream lacks stay.
    Ref<VeskAssocArray> target(Make(CVeskGdDouble::Allocate(5)));
    Set(&target->m_xCommand, "b", CVeskGdDouble::Allocate(9));
    Set(&target->m_xCommand, "c", CVeskGdDouble::Allocate(1));
    CVeskGenericData* replacement = nullptr;
    EXPECT_EQ(target->m_xVeskSerialise.Deserialise(&stream, &replacement), 1);
    EXPECT_EQ(replacement, nullptr);
    EXPECT_EQ(Read(&target->m_xCommand, "*default"), "Null");
    EXPECT_EQ(Read(&target->m_xCommand, "a"), "x");
    EXPECT_EQ(Read(&target->m_xCommand, "b"), "2");
    EXPECT_EQ(Read(&target->m_xCommand, "c"), "1");

    // A stream that ends inside a pair fails and keeps what came before.
    stream.Truncate(2);
    stream.next = 0;
    Ref<VeskAssocArray> partial(Make(CVeskGdDouble::Allocate(5)));
    EXPECT_EQ(partial->m_xVeskSerialise.Deserialise(&stream, &replacement), 0);
    EXPECT_EQ(Read(&partial->m_xCommand, "*default"), "Null");
    EXPECT_EQ(partial->Size(), 1);
}
