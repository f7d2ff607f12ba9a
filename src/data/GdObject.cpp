#include "vesk/GdObject.h"

#include <ostream>
#include <sstream>

#include <dorl/DorlProbe.h>
#include <standin/Dispatch.h>

#include "command/CommandQuery.h"
#include "data/GdInternal.h"
#include "vesk/COMObject.h"
#include "vesk/InterfaceIds.h"

#define VESK_REQUIRE_HELPER(failure)                                                               \
    do {                                                                                           \
        if (!m_pHelper) {                                                                          \
            VESK_GD_ASSERT(m_pHelper);                                                             \
            return failure;                                                                        \
        }                                                                                          \
    } while (0)

namespace {

CVeskGenericData::AllocationMonitor s_pfnObjectMonitor = nullptr;

CDorlProbedLong& ObjectCount()
{
    static CDorlProbedLong s_count(VESK_GD_PROBE_PATH, "Object", 0, nullptr);
    return s_count;
}

} // namespace

// Helpers -----------------------------------------------------------------------------------------

CObjectLookupHelper::CObjectLookupHelper(CVeskGdObject* pOwner) : m_pOwner(pOwner) {}

CObjectLookupHelper::~CObjectLookupHelper() = default;

int CUnknownHelper::GetKind() { return kindUnknown; }

CVeskGenericData* CUnknownHelper::GetProperty(const CDorlString& name, int bByRef)
{
    if (bByRef || !vesk::IsNameProperty(name))
        return nullptr;
    static CVeskGdString s_name("UnknownObject");
    return vesk::SharedName(s_name);
}

int CUnknownHelper::SetProperty(const CDorlString&, CVeskGenericData*) { return 0; }

int CUnknownHelper::CallMethod(CVeskCommandContext*) { return 0; }

CVeskPropertyEnum* CUnknownHelper::GetPropertyEnumerator() { return nullptr; }

int CVeskCommandHelper::GetKind() { return kindCommand; }

CVeskGenericData* CVeskCommandHelper::GetProperty(const CDorlString& name, int bByRef)
{
    return m_pOwner->GetIVeskCommand()->GetProperty(name, bByRef);
}

int CVeskCommandHelper::SetProperty(const CDorlString& name, CVeskGenericData* value)
{
    return m_pOwner->GetIVeskCommand()->SetProperty(name, value);
}

int CVeskCommandHelper::CallMethod(CVeskCommandContext* context)
{
    return m_pOwner->GetIVeskCommand()->CallMethod(context);
}

CVeskPropertyEnum* CVeskCommandHelper::GetPropertyEnumerator()
{
    return m_pOwner->GetIVeskCommand()->GetPropertyEnumerator();
}

// The dispatch client reads an object's members from its type information. Until that client
// is part of the library no type information is read, and the value holds such an object
// without a helper.
bool CDispatchHelper::LoadTypeInfo() { return false; }

int CDispatchHelper::GetKind() { return kindDispatch; }

CVeskGenericData* CDispatchHelper::GetProperty(const CDorlString&, int) { return nullptr; }

int CDispatchHelper::SetProperty(const CDorlString&, CVeskGenericData*) { return 0; }

int CDispatchHelper::CallMethod(CVeskCommandContext*) { return 0; }

CVeskPropertyEnum* CDispatchHelper::GetPropertyEnumerator() { return nullptr; }

// The value -----------------------------------------------------------------------------------

CVeskGdObject::CVeskGdObject(IUnknown* object, int bKeepPointer)
    : m_pObject(nullptr), m_pHelper(nullptr)
{
    SetObject(object, bKeepPointer);
    vesk::CountCreated(ObjectCount(), s_pfnObjectMonitor, this, "Object");
}

CVeskGdObject::~CVeskGdObject()
{
    delete m_pHelper;
    if (m_pObject)
        m_pObject->Release();
    vesk::CountDestroyed(ObjectCount(), s_pfnObjectMonitor, this, "Object");
}

CVeskGdObject* CVeskGdObject::Allocate(IUnknown* object, int bKeepPointer)
{
    return new CVeskGdObject(object, bKeepPointer);
}

CVeskGdObject* CVeskGdObject::Allocate(CVeskCOMObject* object)
{
    IUnknown* unknown = nullptr;
    object->ExternalQueryInterface(&IID_IUnknown, reinterpret_cast<void**>(&unknown));
    CVeskGdObject* value = Allocate(unknown, 1);
    if (unknown)
        unknown->Release();
    return value;
}

CVeskGdObject* CVeskGdObject::Allocate(IDispatch* object)
{
    IUnknown* unknown = nullptr;
    object->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&unknown));
    CVeskGdObject* value = Allocate(unknown, 1);
    if (unknown)
        unknown->Release();
    return value;
}

void CVeskGdObject::SetAllocationMonitor(AllocationMonitor monitor)
{
    s_pfnObjectMonitor = monitor;
}

void CVeskGdObject::Clear()
{
    if (m_pObject) {
        m_pObject->Release();
        m_pObject = nullptr;
    }
    delete m_pHelper;
    m_pHelper = nullptr;
}

void CVeskGdObject::SetObject(IUnknown* object, int bKeepPointer)
{
    // Taken first: the new object may be the one held now, reached through another pointer.
    if (object)
        object->AddRef();
    Clear();
    if (!object)
        return;

    void* pv = nullptr;
    if (object->QueryInterface(IID_IVeskCommand, &pv) == S_OK) {
        m_pObject = static_cast<IVeskCommand*>(pv);
        m_pHelper = new CVeskCommandHelper(this);
    } else if (object->QueryInterface(IID_IDispatch, &pv) == S_OK) {
        m_pObject = static_cast<IDispatch*>(pv);
        CDispatchHelper* helper = new CDispatchHelper(this);
        if (helper->LoadTypeInfo())
            m_pHelper = helper;
        else
            delete helper;
    } else {
        if (bKeepPointer) {
            object->AddRef();
            m_pObject = object;
        } else if (object->QueryInterface(IID_IUnknown, &pv) == S_OK) {
            m_pObject = static_cast<IUnknown*>(pv);
        }
        m_pHelper = new CUnknownHelper(this);
    }
    object->Release();
}

IUnknown* CVeskGdObject::GetObjectA() { return m_pObject; }

IVeskCommand* CVeskGdObject::GetIVeskCommand()
{
    VESK_REQUIRE_HELPER(nullptr);
    if (m_pHelper->GetKind() != CObjectLookupHelper::kindCommand)
        return nullptr;
    return static_cast<IVeskCommand*>(m_pObject);
}

HRESULT CVeskGdObject::GetInterface(const GUID& iid, void** ppv, const CDorlString& name)
{
    if (!m_pObject)
        return E_NOINTERFACE;
    HRESULT result = m_pObject->QueryInterface(iid, ppv);
    if (result != E_NOINTERFACE)
        return result;
    if (!m_pHelper || m_pHelper->GetKind() != CObjectLookupHelper::kindCommand || name.IsEmpty())
        return E_NOINTERFACE;

    CVeskGenericData* property = static_cast<IVeskCommand*>(m_pObject)->GetProperty(name, 0);
    if (!property)
        return E_NOINTERFACE;
    // The same name a level deeper, until an object answers; an object that names itself ends
    // the chain.
    if (property->GetType() == dtObject) {
        CVeskGdObject* inner = static_cast<CVeskGdObject*>(property);
        if (inner->m_pObject != m_pObject)
            result = inner->GetInterface(iid, ppv, name);
    }
    property->Release();
    return result;
}

CVeskGenericData* CVeskGdObject::GetProperty(const CDorlString& name, int bByRef)
{
    VESK_REQUIRE_HELPER(nullptr);
    return m_pHelper->GetProperty(name, bByRef);
}

int CVeskGdObject::SetProperty(const CDorlString& name, CVeskGenericData* value)
{
    VESK_REQUIRE_HELPER(0);
    return m_pHelper->SetProperty(name, value);
}

int CVeskGdObject::CallMethod(CVeskCommandContext* context)
{
    VESK_REQUIRE_HELPER(0);
    return m_pHelper->CallMethod(context);
}

CVeskPropertyEnum* CVeskGdObject::GetPropertyEnumerator()
{
    VESK_REQUIRE_HELPER(nullptr);
    return m_pHelper->GetPropertyEnumerator();
}

CVeskGenericData::DataType CVeskGdObject::GetType() const { return dtObject; }

void CVeskGdObject::Print(std::ostream& stream) const
{
    std::ostringstream text;
    text.setf(std::ios::hex, std::ios::basefield);
    text << "Object(" << static_cast<const void*>(m_pObject) << ")";
    stream << text.str();
}

// An object has no archive form.
void CVeskGdObject::Write(CDorlArchive&) const { VESK_GD_ASSERT(false); }

void CVeskGdObject::Read(CDorlArchive&) { VESK_GD_ASSERT(0); }

CVeskGenericData* CVeskGdObject::Copy() { return Allocate(m_pObject, 1); }

int CVeskGdObject::_IsEqual(CVeskGenericData* other)
{
    return m_pObject == static_cast<CVeskGdObject*>(other)->m_pObject;
}

int CVeskGdObject::_Assign(CVeskGenericData* other)
{
    SetObject(static_cast<CVeskGdObject*>(other)->m_pObject, 1);
    return 1;
}
