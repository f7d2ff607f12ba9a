// The component: a named counted object that answers the call protocol through its property map.

#include "vesk/Component.h"

#include "vesk/GdObject.h"
#include "vesk/InterfaceIds.h"

VESK_BEGIN_INTERFACE_MAP(CVeskComponent, CVeskCOMObject)
    VESK_INTERFACE(IID_IVeskCommand, VeskCommand)
    VESK_INTERFACE(IID_IVeskComponent, VeskComponent)
    VESK_INTERFACE(IID_IVeskSerialise, VeskSerialise)
VESK_END_INTERFACE_MAP()

VESK_BEGIN_PROPERTY_TABLE(CVeskComponent)
    VESK_STRING_PROPERTY("name", m_sName, VeskReadOnly)
    VESK_STRING_PROPERTY("*name", m_sName, VeskReadOnly)
    VESK_INTERFACE_PROPERTY("derived", m_Derived, IID_IVeskCommand, "", VeskReadOnly)
    VESK_NOTIFIED_INTERFACE_PROPERTY("*derived", AsteriskDerived, IID_IUnknown, "")
    VESK_NOTIFIED_GD_PROPERTY("topObject", TopObject)
    VESK_NOTIFIED_BOOLEAN_PROPERTY("*watch", AsteriskWatch)
VESK_END_PROPERTY_MAP()

CVeskComponent::AllocationMonitor CVeskComponent::sm_pfnAllocationMonitor = nullptr;

CVeskComponent::CVeskComponent(const CDorlString& name) : m_sName(name), m_Derived(nullptr)
{
    VESK_FILL_PROPERTY_MAP();
    if (sm_pfnAllocationMonitor)
        sm_pfnAllocationMonitor(this, m_sName, 1);
}

CVeskComponent::~CVeskComponent()
{
    if (sm_pfnAllocationMonitor)
        sm_pfnAllocationMonitor(this, m_sName, 0);
}

void CVeskComponent::SetAllocationMonitor(AllocationMonitor monitor)
{
    sm_pfnAllocationMonitor = monitor;
}

// Hooks that a subclass gives content -----------------------------------------------------------

int CVeskComponent::OnWriteData(const CDorlString&, IVeskDataStore*) { return 0; }

int CVeskComponent::OnReadData(const CDorlString&, IVeskDataStore*) { return 0; }

int CVeskComponent::CallMethod(CVeskCommandContext*) { return 0; }

int CVeskComponent::OnSerialise(CVeskGdSerialiser*) { return 0; }

int CVeskComponent::OnDeserialise(CVeskGdSerialiser*, CVeskGenericData**) { return 0; }

CDorlString CVeskComponent::OnGetCreationName() { return CDorlString(); }

// The root of every chain of maps: nothing is asked after this class.

CVeskGenericData* CVeskComponent::GetProperty(const CDorlString& name, int bByRef)
{
    return sm_PropertyMap.GetProperty(this, name, bByRef);
}

int CVeskComponent::SetProperty(const CDorlString& name, CVeskGenericData* value)
{
    return sm_PropertyMap.SetProperty(this, name, value) == 1 ? 1 : 0;
}

CVeskPropertyEnum* CVeskComponent::GetPropertyEnumerator()
{
    return sm_PropertyMap.GetEnumerator(nullptr);
}

// Notified properties ----------------------------------------------------------------------------

int CVeskComponent::AsteriskDerived(IUnknown** ppValue, int bSet)
{
    if (bSet) {
        m_Derived = *ppValue;
        return 1;
    }
    *ppValue = m_Derived;
    if (m_Derived)
        m_Derived->AddRef();
    return 1;
}

int CVeskComponent::TopObject(CVeskGenericData** ppValue, int bSet)
{
    if (bSet)
        return 0;
    if (!m_Derived) {
        (*ppValue)->Release();
        *ppValue = CVeskGdObject::Allocate(this);
        return 1;
    }
    // Each step asks the current object through the protocol, so that any object that answers
    // "derived" can stand in the chain.
    CVeskGenericData* current = CVeskGdObject::Allocate(m_Derived, 1);
    for (;;) {
        CVeskGenericData* next = current->GetProperty("derived", 0);
        if (!next)
            break;
        if (next->GetType() == CVeskGenericData::dtNull) {
            next->Release();
            break;
        }
        current->Release();
        current = next;
    }
    (*ppValue)->Release();
    *ppValue = current;
    return 1;
}

int CVeskComponent::AsteriskWatch(int*, int bSet)
{
    if (!bSet)
        return 0;
    SetDebugObj(this);
    return 1;
}

// Embedded interfaces ----------------------------------------------------------------------------

CVeskGenericData* CVeskComponent::XVeskCommandObj::GetProperty(const CDorlString& name, int bByRef)
{
    return Owner()->GetProperty(name, bByRef);
}

int CVeskComponent::XVeskCommandObj::SetProperty(const CDorlString& name, CVeskGenericData* value)
{
    return Owner()->SetProperty(name, value);
}

int CVeskComponent::XVeskCommandObj::CallMethod(CVeskCommandContext* context)
{
    return Owner()->CallMethod(context);
}

CVeskPropertyEnum* CVeskComponent::XVeskCommandObj::GetPropertyEnumerator()
{
    return Owner()->GetPropertyEnumerator();
}

int CVeskComponent::XVeskComponentObj::WriteData(const CDorlString& tag, IVeskDataStore* pStore)
{
    return Owner()->OnWriteData(tag, pStore);
}

int CVeskComponent::XVeskComponentObj::ReadData(const CDorlString& tag, IVeskDataStore* pStore)
{
    return Owner()->OnReadData(tag, pStore);
}

int CVeskComponent::XVeskSerialiseObj::Serialise(CVeskGdSerialiser* serialiser)
{
    return Owner()->OnSerialise(serialiser);
}

int CVeskComponent::XVeskSerialiseObj::Deserialise(CVeskGdSerialiser* serialiser,
                                                   CVeskGenericData** replacement)
{
    return Owner()->OnDeserialise(serialiser, replacement);
}

CDorlString CVeskComponent::XVeskSerialiseObj::GetCreationName()
{
    return Owner()->OnGetCreationName();
}
