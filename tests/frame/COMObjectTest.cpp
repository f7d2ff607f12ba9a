#include <string>
#include <vector>

#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

const IID IID_ITestFirst = {0x5e5e0001, 0x0001, 0x0001, {1, 2, 3, 4, 5, 6, 7, 8}};
const IID IID_ITestSecond = {0x5e5e0002, 0x0001, 0x0001, {1, 2, 3, 4, 5, 6, 7, 8}};
const IID IID_ITestDerived = {0x5e5e0003, 0x0001, 0x0001, {1, 2, 3, 4, 5, 6, 7, 8}};
const IID IID_ITestHooked = {0x5e5e0004, 0x0001, 0x0001, {1, 2, 3, 4, 5, 6, 7, 8}};

// Every test interface has this shape; Which() tells the parts apart.
struct ITestFace : IUnknown {
    virtual int STDMETHODCALLTYPE Which() = 0;
};

int s_destroyed = 0;

class CTwoFaces : public CVeskCOMObject {
    VESK_DECLARE_INTERFACE_MAP(CTwoFaces)

    VESK_BEGIN_INTERFACE_PART(TestFirst, ITestFace)
        int STDMETHODCALLTYPE Which() override { return 1; }
    VESK_END_INTERFACE_PART(TestFirst)

    VESK_BEGIN_INTERFACE_PART(TestSecond, ITestFace)
        int STDMETHODCALLTYPE Which() override { return Owner()->m_nSecond; }
    VESK_END_INTERFACE_PART(TestSecond)

    ~CTwoFaces() override { ++s_destroyed; }

    LONG Count() const { return m_dwRef; }
    void SetOuter(IUnknown* outer) { m_pOuterUnknown = outer; }
    CInnerUnknown* Inner() { return &m_xInnerUnknown.object; }
    // Makes this an inner object of outer, which then holds the inner unknown.
    void Aggregate(IUnknown* outer)
    {
        EnableAggregation();
        SetOuter(outer);
    }

    int m_nSecond = 2;
};

VESK_BEGIN_INTERFACE_MAP(CTwoFaces, CVeskCOMObject)
    VESK_INTERFACE(IID_ITestFirst, TestFirst)
    VESK_INTERFACE(IID_ITestSecond, TestSecond)
VESK_END_INTERFACE_MAP()

// A derived class whose own table comes first in the search; it also aggregates an inner object
// and answers one interface from its hook.
class CDerived : public CTwoFaces {
    VESK_DECLARE_INTERFACE_MAP(CDerived)

    VESK_BEGIN_INTERFACE_PART(TestDerived, ITestFace)
        int STDMETHODCALLTYPE Which() override { return 3; }
    VESK_END_INTERFACE_PART(TestDerived)

    ~CDerived() override
    {
        if (m_pInner)
            m_pInner->Release();
    }
    void* GetInterfaceHook(const void* iid) override
    {
        if (IsEqualIID(*static_cast<const IID*>(iid), IID_ITestHooked))
            return &m_xTestSecond;
        return nullptr;
    }

    IUnknown* m_pInner = nullptr;
};

VESK_BEGIN_INTERFACE_MAP(CDerived, CTwoFaces)
    VESK_INTERFACE(IID_ITestDerived, TestDerived)
    VESK_AGGREGATE(m_pInner)
VESK_END_INTERFACE_MAP()

class CNoMap : public CVeskCOMObject {
public:
    const _VeskCOM_IF_Map* GetInterfaceMap() const override { return m_pMap; }
    const _VeskCOM_IF_Map* m_pMap = nullptr;
};

std::string s_debugCalls;
void RecordDebug(int bAddRef, int count)
{
    s_debugCalls += std::to_string(bAddRef) + ":" + std::to_string(count) + " ";
}

} // namespace

TEST(COMObject, MapsFindEmbeddedObjectsByTheirOffsets)
{
    CTwoFaces* object = new CTwoFaces();
    // Each embedded object finds its owner by the offset its map holds.
    EXPECT_EQ(object->m_xTestSecond.Owner(), object);
    ITestFace* second = nullptr;
    ASSERT_EQ(object->QueryInterface(&IID_ITestSecond, reinterpret_cast<void**>(&second)), S_OK);
    EXPECT_EQ(second->Which(), 2);
    EXPECT_EQ(object->Count(), 2);
    // IUnknown is the first live interface of the table, whichever interface is asked.
    IUnknown* unknown = nullptr;
    ASSERT_EQ(second->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&unknown)), S_OK);
    EXPECT_EQ(unknown, static_cast<IUnknown*>(&object->m_xTestFirst));
    EXPECT_EQ(object->GetControllingUnknown(), unknown);
    EXPECT_EQ(unknown->Release(), 2u);

    void* untouched = &untouched;
    EXPECT_EQ(object->QueryInterface(&IID_ITestDerived, &untouched), E_NOINTERFACE);
    EXPECT_EQ(untouched, nullptr);
    EXPECT_EQ(second->Release(), 1u);
    s_destroyed = 0;
    long live = DorlFindProbe("\\Resources", "CVeskCOMObject")->GetValue();
    EXPECT_EQ(object->Release(), 0u);
    EXPECT_EQ(s_destroyed, 1);
    EXPECT_EQ(DorlFindProbe("\\Resources", "CVeskCOMObject")->GetValue(), live - 1);
}

TEST(COMObject, DerivedTablesComeFirstAndHooksWin)
{
    Capture capture;
    CDerived* object = new CDerived();
    // The derived table is searched first, its base's after it.
    EXPECT_EQ(object->GetInterface(&IID_IUnknown), &object->m_xTestDerived);
    EXPECT_EQ(object->GetInterface(&IID_ITestFirst), &object->m_xTestFirst);
    EXPECT_EQ(object->GetInterface(&IID_ITestHooked), &object->m_xTestSecond);

    // An aggregated inner object answers what the maps don't, with a reference of its own.
    CTwoFaces* inner = new CTwoFaces();
    inner->Aggregate(object->GetControllingUnknown());
    object->m_pInner = inner->Inner();
    ITestFace* innerFirst = nullptr;
    ASSERT_EQ(object->QueryInterface(&IID_ITestFirst, reinterpret_cast<void**>(&innerFirst)), S_OK);
    EXPECT_EQ(innerFirst, static_cast<ITestFace*>(&object->m_xTestFirst)); // the map wins
    innerFirst->Release();
    const IID IID_OnlyInner = IID_ITestFirst;
    EXPECT_EQ(object->QueryAggregates(&IID_OnlyInner), &inner->m_xTestFirst);
    // That reference went to the outer object, which the inner one delegates to.
    EXPECT_EQ(object->Release(), 1u);
    EXPECT_EQ(object->QueryAggregates(&IID_ITestDerived), nullptr);

    // Counting through the inner object changes its own count; through its interfaces, the
    // outer object's.
    EXPECT_EQ(inner->m_xTestFirst.AddRef(), 2u);
    EXPECT_EQ(inner->Count(), 1);
    EXPECT_EQ(object->Release(), 1u);
    EXPECT_EQ(inner->Inner()->AddRef(), 2u);
    IUnknown* innerUnknown = nullptr;
    ASSERT_EQ(inner->Inner()->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&innerUnknown)),
              S_OK);
    EXPECT_EQ(innerUnknown, inner->Inner());
    EXPECT_EQ(inner->Count(), 3);
    EXPECT_EQ(inner->Inner()->Release(), 2u);
    EXPECT_EQ(inner->Inner()->Release(), 1u);
    EXPECT_EQ(object->GetControllingUnknown(), static_cast<IUnknown*>(&object->m_xTestDerived));
    EXPECT_EQ(inner->GetControllingUnknown(), static_cast<IUnknown*>(&object->m_xTestDerived));

    s_destroyed = 0;
    EXPECT_EQ(object->Release(), 0u); // the outer object releases the inner in its destructor
    EXPECT_EQ(s_destroyed, 2);
    EXPECT_TRUE(capture.assertions.empty());
}

TEST(COMObject, LockedOrDisconnectedObjectsOutliveTheirCount)
{
    Capture capture;
    // An object without interfaces answers nothing.
    CVeskCOMObject* bare = new CVeskCOMObject();
    void* pv = &pv;
    EXPECT_EQ(bare->GetInterface(&IID_IUnknown), nullptr);
    EXPECT_EQ(bare->QueryInterface(&IID_IUnknown, &pv), E_NOINTERFACE);
    EXPECT_EQ(pv, nullptr);
    EXPECT_EQ(bare->GetControllingUnknown(), nullptr);
    EXPECT_TRUE(capture.assertions.empty());

    s_destroyed = 0;
    CTwoFaces* locked = new CTwoFaces();
    EXPECT_EQ(locked->SetLock(1), 0);
    EXPECT_EQ(locked->Release(), 0u);
    EXPECT_EQ(s_destroyed, 0);
    EXPECT_EQ(locked->SetLock(0), 1);
    delete locked;
    EXPECT_EQ(s_destroyed, 1);

    s_destroyed = 0;
    CTwoFaces* object = new CTwoFaces();
    object->AddRef();
    object->ExternalDisconnect();
    EXPECT_EQ(object->Count(), 0);
    EXPECT_EQ(object->Release(), 0u);
    EXPECT_EQ(object->Release(), 0u);
    EXPECT_EQ(s_destroyed, 0);
    object->ExternalDisconnect(); // a second time does nothing
    object->AddRef();
    EXPECT_EQ(capture.Asserted(), "m_dwRef != 0@COMObject;");
    capture.Clear();
    delete object; // its count is 1 again after that AddRef: no complaint
    EXPECT_TRUE(capture.assertions.empty());

    // Destroyed with references outstanding.
    CTwoFaces* held = new CTwoFaces();
    held->AddRef();
    delete held;
    EXPECT_EQ(capture.Asserted(), "m_dwRef <= 1@COMObject;");

    // Nothing live to disconnect.
    capture.Clear();
    bare->ExternalDisconnect();
    EXPECT_EQ(capture.Asserted(), "lpUnknown != 0@COMObject;");
    // Disconnected, so releases leave it: only a delete ends it.
    EXPECT_EQ(bare->Release(), 0u);
    delete bare;
}

TEST(COMObject, AnOuterObjectOwnsTheCount)
{
    CTwoFaces* outer = new CTwoFaces();
    CTwoFaces* inner = new CTwoFaces();
    inner->SetOuter(static_cast<IUnknown*>(&outer->m_xTestFirst));
    EXPECT_EQ(inner->AddRef(), 2u);
    EXPECT_EQ(outer->Count(), 2);
    EXPECT_EQ(inner->Count(), 1);
    // A query goes to the outer object too.
    void* pv = nullptr;
    EXPECT_EQ(inner->QueryInterface(&IID_ITestSecond, &pv), S_OK);
    EXPECT_EQ(pv, static_cast<void*>(&outer->m_xTestSecond));
    EXPECT_EQ(outer->Count(), 3);
    EXPECT_EQ(inner->Release(), 2u);
    EXPECT_EQ(inner->Release(), 1u);
    // The inner object's own interfaces found by the map count on the outer object.
    EXPECT_EQ(inner->InternalQueryInterface(&IID_ITestFirst, &pv), S_OK);
    EXPECT_EQ(pv, static_cast<void*>(&inner->m_xTestFirst));
    EXPECT_EQ(outer->Count(), 2);
    EXPECT_EQ(inner->Count(), 1);
    outer->Release();
    inner->SetOuter(nullptr);
    inner->Release();
    outer->Release();
}

TEST(COMObject, MissingMapsAreAssertedAndNothingIsFound)
{
    Capture capture;
    CNoMap* object = new CNoMap();
    EXPECT_EQ(object->GetInterface(&IID_ITestFirst), nullptr);
    object->AddRef();
    object->Release();
    EXPECT_EQ(
        capture.Asserted(),
        "pMap != 0@COMObject;GetInterfaceMap() != 0@COMObject;GetInterfaceMap() != 0@COMObject;");
    capture.Clear();
    const _VeskCOM_IF_Map noEntries = {nullptr, nullptr};
    object->m_pMap = &noEntries;
    EXPECT_EQ(object->GetInterface(&IID_ITestFirst), nullptr);
    EXPECT_EQ(object->QueryAggregates(&IID_ITestFirst), nullptr);
    EXPECT_EQ(capture.Asserted(), "pEntry != 0@COMObject;pEntry != 0@COMObject;");
    object->m_pMap = &CVeskCOMObject::interfaceMap;
    object->Release();
}

TEST(COMObject, DebugObjectReportsItsCountChanges)
{
    Capture capture;
    CTwoFaces* object = new CTwoFaces();
    CTwoFaces* other = new CTwoFaces();
    CVeskCOMObject::SetDebugObj(object);
    object->AddRef();
    other->AddRef();
    other->Release();
    object->Release();
    EXPECT_EQ(capture.AllDumps(), "CVeskCOMObject::AddRef RefCount:2\n"
                                  "CVeskCOMObject::InternalRelease RefCount:1\n");
    CVeskCOMObject::SetDebugCallback(&RecordDebug);
    object->AddRef();
    object->Release();
    object->Release(); // the last one clears the debug object
    other->AddRef();
    other->Release();
    CVeskCOMObject::SetDebugCallback(nullptr);
    EXPECT_EQ(s_debugCalls, "1:2 0:1 0:0 ");
    other->Release();
}
