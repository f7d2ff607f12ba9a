#include <string>
#include <vector>

#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

// Each observer writes "name:code,param1,param2(count)" to the shared log for every event,
// with the references it holds at that moment.
class Observer : public IVeskTextObserver {
public:
    Observer(std::vector<std::string>* log, const char* name) : m_pLog(log), m_sName(name) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** ppv) override
    {
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_nCount; }
    ULONG STDMETHODCALLTYPE Release() override { return --m_nCount; }
    HRESULT STDMETHODCALLTYPE OnTextEvent(const CVeskTextSubjectEvent& event) override
    {
        m_pLog->push_back(m_sName + ":" + std::to_string(event.GetEventCode()) + "," +
                          std::to_string(event.GetParam1()) + "," +
                          std::to_string(event.GetParam2()) + "(" + std::to_string(m_nCount) + ")");
        if (m_pOnEvent) {
            m_pOnEvent(this);
            m_pOnEvent = nullptr;
        }
        return S_OK;
    }

    ULONG m_nCount = 1;
    void (*m_pOnEvent)(Observer*) = nullptr;
    CVeskTextEventDispatcher* m_pDispatcher = nullptr;
    Observer* m_pFriend = nullptr;

private:
    std::vector<std::string>* m_pLog;
    std::string m_sName;
};

} // namespace

TEST(TextEvents, ObserversHearEventsInOrderAndOnlyADetachedOneHearsItsDetachment)
{
    std::vector<std::string> log;
    Observer a(&log, "a"), b(&log, "b"), c(&log, "c");
    auto* dispatcher = new CVeskTextEventDispatcher;

    EXPECT_FALSE(dispatcher->Attach(nullptr));
    EXPECT_FALSE(dispatcher->IsAttached(nullptr));
    EXPECT_TRUE(dispatcher->Attach(&a));
    EXPECT_TRUE(dispatcher->Attach(&b));
    EXPECT_TRUE(dispatcher->Attach(&a));
    EXPECT_EQ(a.m_nCount, 2u) << "a second Attach takes no second reference";
    EXPECT_FALSE(dispatcher->Detach(&c));
    EXPECT_FALSE(dispatcher->Detach(nullptr));
    EXPECT_TRUE(log.empty());

    // b attaches c while it hears the event; c stands behind the last entry and is reached.
    b.m_pDispatcher = dispatcher;
    b.m_pFriend = &c;
    b.m_pOnEvent = [](Observer* self) { self->m_pDispatcher->Attach(self->m_pFriend); };
    dispatcher->Notify(CVeskTextSubjectEvent(7, 1, 2));
    EXPECT_EQ(log, (std::vector<std::string>{"a:7,1,2(2)", "b:7,1,2(2)", "c:7,1,2(2)"}));

    log.clear();
    EXPECT_TRUE(dispatcher->Detach(&a));
    EXPECT_FALSE(dispatcher->IsAttached(&a));
    EXPECT_EQ(a.m_nCount, 1u);
    EXPECT_TRUE(dispatcher->Attach(&a));
    dispatcher->Notify(CVeskTextSubjectEvent());
    EXPECT_EQ(log,
              (std::vector<std::string>{"a:2,-1,-1(2)", "b:0,0,0(2)", "c:0,0,0(2)", "a:0,0,0(2)"}));

    log.clear();
    EXPECT_TRUE(dispatcher->Detach(&b));
    EXPECT_FALSE(dispatcher->Detach(&b));
    EXPECT_EQ(log, (std::vector<std::string>{"b:2,-1,-1(2)"}));
    EXPECT_TRUE(dispatcher->IsAttached(&c));
    // The destructor forgets the rest untold, keeping their references.
    log.clear();
    delete dispatcher;
    EXPECT_EQ(a.m_nCount + b.m_nCount + c.m_nCount, 5u);
    EXPECT_TRUE(log.empty());
}
