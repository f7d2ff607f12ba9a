#include "vesk/COMObject.h"

#include <cstring>
#include <new>

#include <dorl/DorlDiag.h>
#include <dorl/DorlProbe.h>
#include <standin/Sync.h>

#define VESK_COM_ASSERT(expr)                                                                      \
    do {                                                                                           \
        if (!(expr))                                                                               \
            DorlDisplayAssert(#expr, "COMObject", __LINE__);                                       \
    } while (0)

namespace {

CVeskCOMObject* s_pDebugObj = nullptr;
CVeskCOMObject::DebugCallback s_pfnDebugCallback = nullptr;

CDorlProbedLong& LiveObjects()
{
    static CDorlProbedLong s_count("\\Resources", "CVeskCOMObject", 0, nullptr);
    return s_count;
}

bool IsUnknownIid(const void* iid) { return std::memcmp(iid, &IID_IUnknown, sizeof(IID)) == 0; }

// The embedded object at an entry's offset; it is live once its class table is in place.
void* EmbeddedAt(CVeskCOMObject* object, const _VeskCOM_IF_MapEntry& entry)
{
    void* embedded = reinterpret_cast<char*>(object) + entry.nOffset;
    void* firstWord;
    std::memcpy(&firstWord, embedded, sizeof firstWord);
    return firstWord ? embedded : nullptr;
}

// The count as it stands, read atomically: other threads change it under interlocked operations.
LONG CurrentCount(const LONG& count) { return __atomic_load_n(&count, __ATOMIC_RELAXED); }

const _VeskCOM_IF_Map* BaseOf(const _VeskCOM_IF_Map* map)
{
    return map->pfnGetBaseMap ? map->pfnGetBaseMap() : nullptr;
}

} // namespace

const _VeskCOM_IF_MapEntry CVeskCOMObject::_interfaceEntries[] = {{nullptr, -1}};
const _VeskCOM_IF_Map CVeskCOMObject::interfaceMap = {&CVeskCOMObject::_GetBaseInterfaceMap,
                                                      CVeskCOMObject::_interfaceEntries};

const _VeskCOM_IF_Map* CVeskCOMObject::_GetBaseInterfaceMap() { return nullptr; }

CVeskCOMObject::CVeskCOMObject() : m_dwRef(1), m_pOuterUnknown(nullptr), m_nLock(0)
{
    __atomic_add_fetch(&static_cast<long&>(LiveObjects()), 1, __ATOMIC_RELAXED);
}

CVeskCOMObject::~CVeskCOMObject()
{
    if (CurrentCount(m_dwRef) > 1)
        DorlDisplayAssert("m_dwRef <= 1", "COMObject", __LINE__);
    __atomic_sub_fetch(&static_cast<long&>(LiveObjects()), 1, __ATOMIC_RELAXED);
}

void CVeskCOMObject::OnFinalRelease()
{
    if (m_nLock)
        return;
    // The destructor accepts a count of 1: the object goes with no reference left outstanding.
    InterlockedIncrement(&m_dwRef);
    delete this;
}

const _VeskCOM_IF_Map* CVeskCOMObject::GetInterfaceMap() const { return &interfaceMap; }

int CVeskCOMObject::OnCreateAggregates() { return 1; }

void* CVeskCOMObject::GetInterfaceHook(const void*) { return nullptr; }

HRESULT CVeskCOMObject::QueryInterface(const void* iid, void** ppv)
{
    return ExternalQueryInterface(iid, ppv);
}

ULONG CVeskCOMObject::AddRef() { return ExternalAddRef(); }

ULONG CVeskCOMObject::Release() { return ExternalRelease(); }

HRESULT CVeskCOMObject::ExternalQueryInterface(const void* iid, void** ppv)
{
    if (m_pOuterUnknown)
        return m_pOuterUnknown->QueryInterface(*static_cast<const IID*>(iid), ppv);
    return InternalQueryInterface(iid, ppv);
}

ULONG CVeskCOMObject::ExternalAddRef()
{
    if (m_pOuterUnknown)
        return m_pOuterUnknown->AddRef();
    return InternalAddRef();
}

ULONG CVeskCOMObject::ExternalRelease()
{
    if (m_pOuterUnknown)
        return m_pOuterUnknown->Release();
    return InternalRelease();
}

HRESULT CVeskCOMObject::InternalQueryInterface(const void* iid, void** ppv)
{
    *ppv = GetInterface(iid);
    if (*ppv) {
        // Through the outer object when there is one: it owns the count.
        ExternalAddRef();
        return S_OK;
    }
    *ppv = QueryAggregates(iid); // already carries its reference
    return *ppv ? S_OK : E_NOINTERFACE;
}

ULONG CVeskCOMObject::InternalAddRef()
{
    VESK_COM_ASSERT(GetInterfaceMap() != 0);
    if (CurrentCount(m_dwRef) == 0)
        DorlDisplayAssert("m_dwRef != 0", "COMObject", __LINE__);
    LONG count = InterlockedIncrement(&m_dwRef);
    if (this == s_pDebugObj) {
        if (s_pfnDebugCallback)
            s_pfnDebugCallback(1, count);
        else
            DorlDump("CVeskCOMObject::AddRef RefCount:%d\n", static_cast<int>(count));
    }
    return static_cast<ULONG>(count);
}

ULONG CVeskCOMObject::InternalRelease()
{
    VESK_COM_ASSERT(GetInterfaceMap() != 0);
    // A disconnected object ignores releases.
    if (CurrentCount(m_dwRef) == 0)
        return 0;
    LONG count = InterlockedDecrement(&m_dwRef);
    if (this == s_pDebugObj) {
        if (s_pfnDebugCallback)
            s_pfnDebugCallback(0, count);
        else
            DorlDump("CVeskCOMObject::InternalRelease RefCount:%d\n", static_cast<int>(count));
        if (count == 0)
            s_pDebugObj = nullptr;
    }
    if (count != 0)
        return static_cast<ULONG>(count);
    OnFinalRelease();
    return 0;
}

void* CVeskCOMObject::GetInterface(const void* iid)
{
    if (void* hooked = GetInterfaceHook(iid))
        return hooked;
    const _VeskCOM_IF_Map* pMap = GetInterfaceMap();
    VESK_COM_ASSERT(pMap != 0);
    // IUnknown is the first live interface of the most derived class that has one.
    bool anyInterface = IsUnknownIid(iid);
    for (; pMap; pMap = BaseOf(pMap)) {
        const _VeskCOM_IF_MapEntry* pEntry = pMap->pEntry;
        VESK_COM_ASSERT(pEntry != 0);
        if (!pEntry)
            continue;
        for (; pEntry->nOffset != -1; ++pEntry) {
            if (!pEntry->piid)
                continue;
            if (!anyInterface && std::memcmp(pEntry->piid, iid, sizeof(IID)) != 0)
                continue;
            if (void* embedded = EmbeddedAt(this, *pEntry))
                return embedded;
        }
    }
    return nullptr;
}

IUnknown* CVeskCOMObject::QueryAggregates(const void* iid)
{
    const _VeskCOM_IF_Map* pMap = GetInterfaceMap();
    VESK_COM_ASSERT(pMap != 0);
    for (; pMap; pMap = BaseOf(pMap)) {
        const _VeskCOM_IF_MapEntry* pEntry = pMap->pEntry;
        VESK_COM_ASSERT(pEntry != 0);
        if (!pEntry)
            continue;
        while (pEntry->piid)
            ++pEntry;
        for (; pEntry->nOffset != -1; ++pEntry) {
            IUnknown* inner;
            std::memcpy(&inner, reinterpret_cast<char*>(this) + pEntry->nOffset, sizeof inner);
            if (!inner)
                continue;
            void* found = nullptr;
            if (inner->QueryInterface(*static_cast<const IID*>(iid), &found) == S_OK && found)
                return static_cast<IUnknown*>(found);
        }
    }
    return nullptr;
}

IUnknown* CVeskCOMObject::GetControllingUnknown()
{
    if (m_pOuterUnknown)
        return m_pOuterUnknown;
    return static_cast<IUnknown*>(GetInterface(&IID_IUnknown));
}

void CVeskCOMObject::EnableAggregation() { new (&m_xInnerUnknown.object) CInnerUnknown(); }

void CVeskCOMObject::ExternalDisconnect()
{
    if (CurrentCount(m_dwRef) == 0)
        return;
    IUnknown* lpUnknown = static_cast<IUnknown*>(GetInterface(&IID_IUnknown));
    VESK_COM_ASSERT(lpUnknown != 0);
    // Held up during the call, so that nothing the platform does can finish the object.
    InterlockedIncrement(&m_dwRef);
    CoDisconnectObject(lpUnknown, 0);
    InterlockedExchange(&m_dwRef, 0);
}

int CVeskCOMObject::SetLock(int bLock)
{
    int previous = m_nLock;
    m_nLock = bLock;
    return previous;
}

void CVeskCOMObject::SetDebugObj(CVeskCOMObject* object) { s_pDebugObj = object; }

void CVeskCOMObject::SetDebugCallback(DebugCallback callback) { s_pfnDebugCallback = callback; }

// The inner unknown
// --------------------------------------------------------------------------------

CVeskCOMObject* CVeskCOMObject::CInnerUnknown::Owner()
{
    VESK_OFFSETOF_BEGIN
    return reinterpret_cast<CVeskCOMObject*>(reinterpret_cast<char*>(this) -
                                             offsetof(CVeskCOMObject, m_xInnerUnknown));
    VESK_OFFSETOF_END
}

HRESULT CVeskCOMObject::CInnerUnknown::QueryInterface(REFIID iid, void** ppv)
{
    if (!IsEqualIID(iid, IID_IUnknown))
        return Owner()->InternalQueryInterface(&iid, ppv);
    Owner()->InternalAddRef();
    *ppv = static_cast<IUnknown*>(this);
    return S_OK;
}

ULONG CVeskCOMObject::CInnerUnknown::AddRef() { return Owner()->InternalAddRef(); }

ULONG CVeskCOMObject::CInnerUnknown::Release() { return Owner()->InternalRelease(); }
