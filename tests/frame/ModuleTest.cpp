#include <vector>

#include "frame/Tracked.h"
#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

class TestModule : public CVeskDLL {
public:
    IUnknown* StartupUnknown() const { return m_pStartupUnknown; }
    CInnerUnknown* Inner() { return &m_xInnerUnknown.object; }
};

template <class I> I* Query(IUnknown* object, const IID& iid)
{
    void* pv = nullptr;
    return SUCCEEDED(object->QueryInterface(iid, &pv)) ? static_cast<I*>(pv) : nullptr;
}

} // namespace

TEST(Module, CursorsWalkTheListOnTheirOwnAndStayAtTheEnd)
{
    std::vector<Gone> log;
    TestModule* module = new TestModule;
    // Asked through the inner unknown, which only an aggregatable object has.
    IVeskEnumerate* walk = Query<IVeskEnumerate>(module->Inner(), IID_IVeskEnumerate);
    ASSERT_NE(walk, nullptr);
    module->Release();

    unsigned long empty = walk->Open();
    EXPECT_EQ(walk->Next(empty), nullptr);
    walk->Close(empty);

    Tracked* entries[3] = {new Tracked(&log, 1), new Tracked(&log, 2), new Tracked(&log, 3)};
    for (Tracked* entry : entries)
        module->AddTail(entry);
    unsigned long first = walk->Open();
    unsigned long second = walk->Open();
    EXPECT_EQ(walk->Next(first), entries[0]);
    EXPECT_EQ(walk->Next(first), entries[1]);
    EXPECT_EQ(walk->Next(second), entries[0]);
    EXPECT_EQ(walk->Next(first), entries[2]);
    EXPECT_EQ(walk->Next(first), nullptr);
    EXPECT_EQ(walk->Next(first), nullptr);
    EXPECT_EQ(walk->Next(second), entries[1]);
    walk->Close(first);
    walk->Close(second);
    EXPECT_EQ(entries[0]->Count(), 1u) << "Next hands out no reference";

    // Going without Shutdown forgets the entries: they keep the reference the list had.
    walk->Release();
    EXPECT_TRUE(log.empty());
    for (Tracked* entry : entries)
        entry->Release();
}

TEST(Module, ShutdownReleasesEveryEntryOnceAndTheDefaultsAnswerTheHost)
{
    std::vector<Gone> log;
    TestModule* module = new TestModule;
    Ref<IVeskDLL> dll(Query<IVeskDLL>(module->Inner(), IID_IVeskDLL));
    module->Release();
    ASSERT_NE(dll.get(), nullptr);
    Ref<IVeskEnumerate> walk(Query<IVeskEnumerate>(dll.get(), IID_IVeskEnumerate));
    EXPECT_NE(walk.get(), nullptr) << "the module object's map goes on to the enumerator's";

    EXPECT_EQ(dll->GetVersion(), 1ul);
    EXPECT_EQ(dll->GetName().GetLength(), 0);
    Tracked* host = new Tracked(&log, 0);
    EXPECT_EQ(dll->Startup(host), 1);
    EXPECT_EQ(module->StartupUnknown(), host);
    EXPECT_EQ(host->Count(), 1u);
    EXPECT_EQ(dll->Startup(nullptr), 1);
    EXPECT_EQ(module->StartupUnknown(), nullptr);
    host->Release();

    for (int id = 1; id <= 3; ++id)
        module->AddTail(new Tracked(&log, id));
    EXPECT_EQ(dll->Shutdown(), 1);
    EXPECT_EQ(Ids(log), (std::vector<int>{0, 1, 2, 3}));
    EXPECT_TRUE(module->IsEmpty());
    EXPECT_EQ(dll->Shutdown(), 1);
    EXPECT_EQ(log.size(), 4u);
}
