#include <string>
#include <utility>
#include <vector>

#include "support/RecordingSerialiser.h"
#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

class AssocArray : public StartedTest {};

// The array holds the only reference on its default.
VeskAssocArray* Make(CVeskGenericData* defaultValue)
{
    VeskAssocArray* array = new VeskAssocArray(defaultValue);
    defaultValue->Release();
    return array;
}

int Set(IVeskCommand* object, const char* name, CVeskGenericData* value)
{
    int result = object->SetProperty(name, value);
    value->Release();
    return result;
}

std::string Read(IVeskCommand* object, const char* name) { return PropertyText(object, name); }

long AssocProbe()
{
    CDorlProberVariable* probe = DorlFindProbe("\\Resources\\Ruol", "AssocArray");
    return probe ? probe->GetValue() : 0; // built with the first array
}

std::string s_sPairs;

int RecordPair(CVeskCommandContext* context)
{
    CDorlString key;
    Ref<CVeskGenericData> value;
    context->GetParam("key", &key, 0);
    context->GetParam("value", &value, 0);
    s_sPairs += std::string(key) + "=" + Printed(value.get()) + ";";
    return 1;
}

} // namespace

TEST_F(AssocArray, StoringTheDefaultRemovesTheKey)
{
    Ref<VeskAssocArray> nulls(Make(CVeskGdNull::Allocate()));
    IVeskCommand* object = &nulls->m_xCommand;
    Set(object, "a", CVeskGdDouble::Allocate(1));
    Set(object, "", CVeskGdString::Allocate("empty"));
    Set(object, "_x", CVeskGdDouble::Allocate(2));
    EXPECT_EQ(
        Set(object, "a", CVeskGdNull::Allocate()) + Set(object, "_x", CVeskGdNull::Allocate()), 2);
    EXPECT_EQ(Read(object, "") + Read(object, "a") + Read(object, "*size"), "emptyNull1");

    // None equals nothing, not even None, and still deletes where it is the default.
    Ref<VeskAssocArray> nones(Make(CVeskGdNone::Allocate()));
    Set(&nones->m_xCommand, "a", CVeskGdDouble::Allocate(1));
    EXPECT_EQ(Set(&nones->m_xCommand, "a", CVeskGdNone::Allocate()), 1);
    EXPECT_EQ(nones->Size(), 0);

    // A new default leaves alone the entries that now equal it; AddProperty skips the rule.
    Ref<VeskAssocArray> zeros(Make(CVeskGdDouble::Allocate(0)));
    object = &zeros->m_xCommand;
    Set(object, "x", CVeskGdDouble::Allocate(0));
    Set(object, "y", CVeskGdDouble::Allocate(5));
    EXPECT_EQ(Set(object, "*default", CVeskGdDouble::Allocate(5)), 1);
    EXPECT_EQ(Read(object, "x") + Read(object, "*size"), "51");
    Set(object, "y", CVeskGdDouble::Allocate(5));
    zeros->AddDouble("z", 5);
    EXPECT_EQ(Read(object, "*size"), "1");
}

TEST_F(AssocArray, MissingKeysReadAsTheDefaultItselfStoredKeysAsCopies)
{
    CVeskGdDouble* fallback = CVeskGdDouble::Allocate(7);
    Ref<VeskAssocArray> array(new VeskAssocArray(fallback));
    IVeskCommand* object = &array->m_xCommand;
    Ref<CVeskGenericData> missing(object->GetProperty("x", 0)),
        underscore(object->GetProperty("_x", 0));
    EXPECT_TRUE(missing.get() == fallback && underscore.get() == fallback);
    EXPECT_EQ(object->GetProperty("x", 1), nullptr);

    Set(object, "n", CVeskGdDouble::Allocate(1));
    Ref<CVeskGenericData> first(object->GetProperty("n", 0));
    static_cast<CVeskGdDouble*>(first.get())->m_dValue = 2;
    EXPECT_EQ(Read(object, "n"), "1");

    // A write through the indirect reaches the entry, and stores the default without deleting.
    Ref<CVeskGenericData> slot(object->GetProperty("n", 1));
    ASSERT_EQ(slot->GetType(), CVeskGenericData::dtIndirect);
    static_cast<CVeskGdIndirect*>(slot.get())->SetValue(fallback);
    Ref<CVeskGenericData> written(object->GetProperty("n", 0));
    EXPECT_NE(written.get(), fallback);
    EXPECT_EQ(Printed(written.get()) + Read(object, "*size"), "71");
    fallback->Release();

    // An entry that holds an indirect reads as a copy of what it refers to.
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
    Ref<VeskAssocArray> array(Make(CVeskGdDouble::Allocate(-1)));
    IVeskCommand* object = &array->m_xCommand;
    EXPECT_EQ(Read(object, "*name") + Read(object, "*default") + Read(object, "*size"),
              "AssocArray-10");
    EXPECT_EQ(Read(object, "*first") + Read(object, "*last") + Read(object, "*keys") +
                  Read(object, "*values"),
              "NullNull[][]");
    EXPECT_EQ(object->GetProperty("*other", 0), nullptr);
    EXPECT_EQ(Set(object, "*size", CVeskGdDouble::Allocate(4)), 0);
    EXPECT_EQ(array->Size(), 0);

    Set(object, "b", CVeskGdString::Allocate("two"));
    Set(object, "a", CVeskGdString::Allocate("one"));
    EXPECT_EQ(Read(object, "*first") + Read(object, "*last") + Read(object, "*keys") +
                  Read(object, "*values"),
              "ab[a, b][one, two]");
    // The values are the stored objects themselves, not copies.
    Ref<CVeskGenericData> values(object->GetProperty("*values", 0));
    Ref<CVeskGenericData> slot(object->GetProperty("a", 1));
    Ref<CVeskGenericData> shared(static_cast<CVeskGdVector*>(values.get())->GetElement(0));
    EXPECT_EQ(shared.get(), static_cast<CVeskGdIndirect*>(slot.get())->GetValue(0));
}

TEST_F(AssocArray, ExistAndForEachSeeOnlyStoredEntriesAndKeepTheArray)
{
    static std::string s_sMonitor;
    s_sMonitor.clear();
    VeskAssocArray::SetAllocationMonitor([](void*, const char* name, int bCreated) {
        s_sMonitor += name + std::to_string(bCreated);
    });
    long before = AssocProbe();
    VeskAssocArray* array = Make(CVeskGdNull::Allocate());
    IVeskCommand* object = &array->m_xCommand;
    void* unknown = nullptr;
    ASSERT_EQ(array->QueryInterface(&IID_IUnknown, &unknown), S_OK);
    EXPECT_EQ(unknown, static_cast<void*>(&array->m_xVeskSerialise));
    array->Release();
    Set(object, "_ForEach", CVeskGdDouble::Allocate(1));
    Set(object, "b", CVeskGdDouble::Allocate(2));
    Set(object, "a", CVeskGdString::Allocate("x"));

    CVeskGenericData* exist = object->GetProperty("_Exist", 0);
    CVeskGenericData* forEach = object->GetProperty("_ForEach", 0);
    EXPECT_EQ(Read(forEach, "name"), "ForEach");
    array->Release();
    EXPECT_EQ(AssocProbe(), before + 1);

    auto exists = [&](const char* key) {
        CVeskCommandContext context;
        context.AddParam("val", CDorlString(key));
        exist->CallMethod(&context);
        Ref<CVeskGenericData> result(context.GetReturnValue());
        return Printed(result.get());
    };
    Set(object, "b", CVeskGdNull::Allocate());
    EXPECT_EQ(exists("_ForEach") + exists("a") + exists("b") + exists("*size"),
              "TrueTrueFalseFalse");

    s_sPairs.clear();
    CVeskFreeFunctionObj* predicate = new CVeskFreeFunctionObj("p", "", &RecordPair);
    CVeskCommandContext context;
    context.AddParam("Predicate", static_cast<IUnknown*>(predicate));
    EXPECT_EQ(forEach->CallMethod(&context), 1);
    EXPECT_EQ(s_sPairs, "_ForEach=1;a=x;");
    EXPECT_EQ(predicate->Release(), 0u);

    exist->Release();
    forEach->Release();
    EXPECT_EQ(AssocProbe(), before);
    VeskAssocArray::SetAllocationMonitor(nullptr);
    EXPECT_EQ(s_sMonitor, "Assoc1Assoc0");
}

TEST_F(AssocArray, ContainerEnumeratesInKeyOrderAndCanCreateOnRead)
{
    Ref<CVeskGenericDataContainer> container(new CVeskGenericDataContainer());
    container->AddString("b", "text");
    container->AddDouble("a", 1);
    container->AddBoolean("c", true);
    container->AddString("b", "again");
    EXPECT_EQ(Set(&container->m_xCommand, "d", CVeskGdDouble::Allocate(4)), 0);

    CVeskPropertyEnum* entries = container->m_xCommand.GetPropertyEnumerator();
    CVeskGenericData* value = nullptr;
    EXPECT_EQ(entries->GetCurrentValue(&value), 0);
    CDorlString name, description, type;
    CVeskPropertyEnum::ReadOnlyStatus status = CVeskPropertyEnum::ReadOnly;
    std::string seen;
    while (entries->Next(&name, &description, &type, &status) && entries->GetCurrentValue(&value)) {
        seen += std::string(name) + "=" + Printed(value) + ":" + std::string(type) + ";";
        value->Release();
    }
    EXPECT_EQ(seen, "a=1:Any;b=again:Any;c=True:Any;");
    EXPECT_EQ(std::string(description) + std::to_string(status), "No description1");
    EXPECT_EQ(entries->GetCurrentValue(&value), 0);
    entries->Delete();

    Ref<CVeskGenericDataContainer> automatic(new CVeskGenericDataContainer(1));
    EXPECT_EQ(Read(&automatic->m_xCommand, "x"), "None");
    EXPECT_EQ(automatic->Size(), 1);
}

TEST_F(AssocArray, SerialisedFormIsPairsClosedByEndWithTheDefaultFirst)
{
    Ref<VeskAssocArray> source(Make(CVeskGdNull::Allocate()));
    Set(&source->m_xCommand, "b", CVeskGdDouble::Allocate(2));
    Set(&source->m_xCommand, "a", CVeskGdString::Allocate("x"));
    CRecordingSerialiser stream;
    EXPECT_EQ(source->m_xVeskSerialise.Serialise(&stream), 1);
    EXPECT_EQ(stream.m_Log, "S*default ONull Sa Ox Sb O2 S*end ");
    EXPECT_EQ(stream.unlockedWrites, 0);

    // The written default wins; entries that the stream lacks stay.
    Ref<VeskAssocArray> target(Make(CVeskGdDouble::Allocate(5)));
    Set(&target->m_xCommand, "b", CVeskGdDouble::Allocate(9));
    Set(&target->m_xCommand, "c", CVeskGdDouble::Allocate(1));
    CVeskGenericData* replacement = nullptr;
    EXPECT_EQ(target->m_xVeskSerialise.Deserialise(&stream, &replacement), 1);
    EXPECT_FALSE(replacement);
    IVeskCommand* object = &target->m_xCommand;
    EXPECT_EQ(Read(object, "*default") + Read(object, "a") + Read(object, "b") + Read(object, "c"),
              "Nullx21");

    // A stream that ends inside a pair fails and keeps what came before.
    stream.Truncate(2);
    stream.next = 0;
    Ref<VeskAssocArray> partial(Make(CVeskGdDouble::Allocate(5)));
    EXPECT_EQ(partial->m_xVeskSerialise.Deserialise(&stream, &replacement), 0);
    EXPECT_EQ(Read(&partial->m_xCommand, "*default") + Read(&partial->m_xCommand, "*size"),
              "Null1");
    EXPECT_EQ(std::string(partial->m_xVeskSerialise.GetCreationName()), "AssocArray");
}
