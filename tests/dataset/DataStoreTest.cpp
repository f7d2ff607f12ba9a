#include <map>
#include <string>

#include "Recorders.h"
#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

// Keeps strings in memory under "section/tag" and logs the other hooks it is asked; they answer
// m_bResult.
class CMemoryStore : public CVeskDataStore {
public:
    CMemoryStore() : CVeskDataStore("memory") {}

    int OnDescend(const CDorlString& section, const int& bReadOnly) override
    {
        m_sPath += std::string(section) + "/";
        return CVeskDataStore::OnDescend(section, bReadOnly);
    }
    int OnAscend() override
    {
        m_sPath.erase(m_sPath.rfind('/', m_sPath.size() - 2) + 1);
        return CVeskDataStore::OnAscend();
    }
    int OnWriteString(const CDorlString& tag, const CDorlString& value) override
    {
        m_Values[m_sPath + std::string(tag)] = std::string(value);
        return m_bResult;
    }
    int OnReadString(const CDorlString& tag, CDorlString& value) override
    {
        auto found = m_Values.find(m_sPath + std::string(tag));
        return found != m_Values.end() ? value = found->second.c_str(), 1 : 0;
    }
    int OnWriteBool(const CDorlString&, int) override { return m_bResult; }
    int OnOpen(const CDorlString& name, const int& bReadOnly) override
    {
        return CVeskDataStore::OnOpen(name, bReadOnly) && m_bResult;
    }
    int OnWriteBinary(const CDorlString& tag, void* pBuffer, unsigned long nLength) override
    {
        m_Log += "binary " + std::string(tag) + " " +
                 std::string(static_cast<char*>(pBuffer), nLength) + ";";
        return m_bResult;
    }
    int OnReadBinary(const CDorlString&, void* pBuffer, unsigned long) override
    {
        static_cast<char*>(pBuffer)[1] = 'x';
        return m_bResult;
    }
    int OnWriteVector(const CDorlString& tag, CVeskGdVector*) override
    {
        m_Log += "vector " + std::string(tag) + ";";
        return m_bResult;
    }
    int OnReadVector(const CDorlString&, CVeskGdVector** ppValue) override
    {
        *ppValue = MakeVector({Num(1), Num(2)});
        return m_bResult;
    }
    CDorlString OnEnumEntries(int nIndex) override { return std::to_string(nIndex).c_str(); }

    std::string m_sPath;
    std::map<std::string, std::string> m_Values;
    std::string m_Log;
    int m_bResult = 1;
};

// A component that keeps its label under its tag, through the store's interface.
class CGadget : public CVeskComponent {
public:
    CGadget() : CVeskComponent("gadget") {}

    int OnWriteData(const CDorlString& tag, IVeskDataStore* pStore) override
    {
        return pStore->Descend(tag, 0) && pStore->WriteString("label", m_sLabel) &&
               pStore->Ascend();
    }
    int OnReadData(const CDorlString& tag, IVeskDataStore* pStore) override
    {
        int bRead = pStore->Descend(tag, 1) && pStore->ReadString("label", m_sLabel);
        return pStore->Ascend() && bRead;
    }

    CDorlString m_sLabel;
};

class DataStores : public StartedTest {
protected:
    void SetUp() override
    {
        StartedTest::SetUp();
        ContextMessages().clear();
    }
};

IVeskCommand* Command(CVeskComponent* component)
{
    return static_cast<IVeskCommand*>(component->GetInterface(&IID_IVeskCommand));
}

std::string Read(CVeskComponent* component, const char* name)
{
    return Shown(Ref<CVeskGenericData>(Command(component)->GetProperty(name, 0)).get());
}

// An indirect for "bSuccess": the call takes one reference, the test keeps the other.
CVeskGdIndirect* Success(Ref<CVeskGdIndirect>& slot)
{
    slot.get()->AddRef();
    return slot.get();
}

} // namespace

TEST_F(DataStores, OpenDescendAscendAndCloseKeepStateAndLevel)
{
    CVeskDataStore* store = new CVeskDataStore("store");
    EXPECT_EQ(Read(store, "opened") + Read(store, "level") + Read(store, "accessStatus"),
              "False-1\"Success\"");
    Capture capture;
    EXPECT_EQ(Call(store, "Open", {{"name", Str("settings")}}), "True");
    EXPECT_EQ(Call(store, "Descend", {{"section", Str("a")}, {"readOnly", Bool(1)}}), "True");
    EXPECT_EQ(Call(store, "Descend", {{"section", Str("b")}}), "True");
    EXPECT_EQ(Call(store, "Ascend", {}), "True");
    EXPECT_EQ(Read(store, "opened") + Read(store, "level"), "True1");
    EXPECT_EQ(Call(store, "Close", {}), "None");
    EXPECT_EQ(Read(store, "opened") + Read(store, "level"), "False-1");
    for (const char* name : {"level", "opened", "accessStatus"})
        EXPECT_EQ(Command(store)->SetProperty(name, Ref<CVeskGenericData>(Num(3)).get()), 0);
    EXPECT_EQ(Read(store, "level"), "-1");
    EXPECT_EQ(capture.Asserted(), "");

    // Out of the sections either way: the assertion, and the depth moves all the same.
    EXPECT_EQ(Call(store, "Descend", {{"section", Str("a")}}), "True");
    EXPECT_EQ(Read(store, "opened") + Read(store, "level"), "False0");
    EXPECT_EQ(Call(store, "Open", {{"name", Str("settings")}}), "True");
    EXPECT_EQ(Call(store, "Ascend", {}), "True");
    EXPECT_EQ(Read(store, "opened") + Read(store, "level"), "True-1");
    EXPECT_EQ(capture.Asserted(), "m_dLevel >= 0@DataStore;m_dLevel >= 0@DataStore;");
    EXPECT_EQ(Call(store, "Open", {}), "False");
    EXPECT_EQ(ContextMessages(), "Parameter 'name' missing for function Open|");
    store->Release();
}

TEST_F(DataStores, TheBaseStoresNothingAndAnswersByItsReturnRules)
{
    CVeskDataStore* store = new CVeskDataStore("store");
    Ref<CVeskGdIndirect> ok(CVeskGdIndirect::Allocate());
    Ref<CVeskGdIndirect> missing(CVeskGdIndirect::Allocate());
    Ref<CVeskGdIndirect> vectorOk(CVeskGdIndirect::Allocate());
    struct Case {
        const char* function;
        std::vector<Param> params;
        const char* expected;
    } cases[] = {
        {"WriteNumber", {{"tag", Str("t")}, {"value", Num(1)}}, "True"},
        {"WriteBool", {{"tag", Str("t")}, {"value", Bool(0)}}, "True"},
        {"WriteVector", {{"tag", Str("t")}, {"value", MakeVector({Num(1)})}}, "False"},
        {"WriteVector", {{"tag", Str("t")}, {"value", Str("v")}}, "False"},
        {"WriteAssocArray", {{"tag", Str("t")}, {"value", Num(1)}}, "False"},
        {"ReadString",
         {{"tag", Str("t")}, {"default", Str("d")}, {"bSuccess", Success(ok)}},
         "\"d\""},
        {"ReadString", {{"default", Str("d")}, {"bSuccess", Success(missing)}}, "\"d\""},
        {"ReadVector",
         {{"tag", Str("t")}, {"default", Num(7)}, {"bSuccess", Success(vectorOk)}},
         "7"},
        {"ReadInteger", {{"tag", Str("t")}, {"default", Num(2.5)}}, "2"},
        {"ReadInteger", {{"default", Num(2.5)}}, "2.5"},
        {"ReadNumber", {{"tag", Str("t")}, {"default", Num(-1.25)}}, "-1.25"},
        {"ReadBool", {{"tag", Str("t")}, {"default", Bool(1)}}, "True"},
        {"ReadBinary", {{"tag", Str("t")}, {"length", Num(0)}}, "\"\""},
        {"EnumSections", {{"index", Num(1)}}, "\"\""},
        {"ClearSection", {{"section", Str("s")}}, "None"},
        {"WriteObject",
         {{"tag", Str("t")}, {"object", MakeArrayValue(CVeskGdNull::Allocate())}},
         "None"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Call(store, c.function, c.params), c.expected) << c.function;
    EXPECT_EQ(Shown(ok->GetValue(0)), "True");
    EXPECT_EQ(Shown(missing->GetValue(0)), "False");
    EXPECT_EQ(Shown(vectorOk->GetValue(0)), "False");
    EXPECT_EQ(ContextMessages(), "Parameter 'tag' missing for function ReadString|"
                                 "Parameter 'tag' missing for function ReadInteger|"
                                 "Incorrect type for parameter 'object', expected "
                                 "067f5723-8416-11d0-bdfd-0020af6fa161 for function WriteObject|");
    store->Release();
}

TEST_F(DataStores, ScriptFunctionsReachTheSubclassHooks)
{
    CMemoryStore* store = new CMemoryStore();
    EXPECT_EQ(Call(store, "WriteBinary", {{"tag", Str("b")}, {"value", Str("raw")}}), "True");
    EXPECT_EQ(Call(store, "WriteVector", {{"tag", Str("v")}, {"value", Str("no")}}), "False");
    EXPECT_EQ(Call(store, "WriteVector", {{"tag", Str("v")}, {"value", MakeVector({})}}), "True");
    EXPECT_EQ(Call(store, "ReadVector", {{"tag", Str("v")}, {"default", Num(0)}}), "[1, 2]");
    EXPECT_EQ(Call(store, "ReadBinary", {{"tag", Str("b")}, {"length", Num(2)}}),
              std::string("\"\0x\"", 4));
    EXPECT_EQ(Call(store, "EnumEntries", {{"index", Num(3)}}), "\"2\"");
    EXPECT_EQ(Call(store, "WriteInteger", {{"tag", Str("i")}, {"value", Num(-7.9)}}), "True");
    EXPECT_EQ(store->m_Log, "binary b raw;vector v;");

    // Failing hooks: a write gives None, "Open" false, a read its default.
    store->m_bResult = 0;
    Ref<CVeskGdIndirect> read(CVeskGdIndirect::Allocate());
    EXPECT_EQ(Call(store, "WriteBool", {{"tag", Str("t")}, {"value", Bool(1)}}), "None");
    EXPECT_EQ(Call(store, "WriteString", {{"tag", Str("t")}, {"value", Str("x")}}), "None");
    EXPECT_EQ(Call(store, "Open", {{"name", Str("x")}}), "False");
    EXPECT_EQ(Call(store, "ReadVector",
                   {{"tag", Str("v")}, {"default", Str("d")}, {"bSuccess", Success(read)}}),
              "\"d\"");
    EXPECT_EQ(Shown(read->GetValue(0)), "False");

    // The interface goes to the same hooks.
    Ref<IVeskDataStore> face;
    ASSERT_EQ(store->QueryInterface(&IID_IVeskDataStore, reinterpret_cast<void**>(&face)), S_OK);
    EXPECT_EQ(face->WriteString("direct", "yes"), 0);
    CDorlString text;
    EXPECT_EQ(face->ReadString("direct", text), 1);
    EXPECT_EQ(std::string(text), "yes");
    EXPECT_EQ(std::string(face->EnumEntries(5)), "5");
    EXPECT_EQ(face->ReadAssocArray("a", nullptr) + face->WriteAssocArray("a", nullptr), 0);
    face->Close();
    EXPECT_EQ(Read(store, "level"), "-1");
    store->Release();
}

TEST_F(DataStores, ComponentsWriteAndReadThemselves)
{
    CMemoryStore* store = new CMemoryStore();
    Capture capture;
    EXPECT_EQ(Call(store, "Open", {{"name", Str("memory")}}), "True");
    CGadget* gadget = new CGadget();
    gadget->m_sLabel = "lamp";
    EXPECT_EQ(Call(store, "WriteObject", {{"tag", Str("g1")}, {"object", Num(0)}}), "None");
    CVeskGenericData* object = CVeskGdObject::Allocate(gadget);
    EXPECT_EQ(Call(store, "WriteObject", {{"tag", Str("g1")}, {"object", object}}), "True");
    EXPECT_EQ(store->m_Values["g1/label"], "lamp");

    CGadget* copy = new CGadget();
    EXPECT_EQ(
        Call(store, "ReadObject", {{"tag", Str("g1")}, {"object", CVeskGdObject::Allocate(copy)}}),
        "True");
    EXPECT_EQ(std::string(copy->m_sLabel), "lamp");
    EXPECT_EQ(
        Call(store, "ReadObject", {{"tag", Str("g2")}, {"object", CVeskGdObject::Allocate(copy)}}),
        "False");
    EXPECT_EQ(Call(store, "WriteObject", {{"tag", Str("g3")}, {"object", CVeskGdNull::Allocate()}}),
              "False");
    EXPECT_EQ(Read(store, "level"), "0");
    EXPECT_EQ(capture.Asserted(), "");
    copy->Release();
    gadget->Release();
    store->Release();
}
