// The container of named values and its enumerator.

#include "vesk/GdContainer.h"

#include <utility>

#include "vesk/GdIndirect.h"
#include "vesk/GdObject.h"
#include "vesk/InterfaceIds.h"

VESK_BEGIN_INTERFACE_MAP(CVeskGenericDataContainer, CVeskCOMObject)
    VESK_INTERFACE(IID_IVeskCommand, Command)
VESK_END_INTERFACE_MAP()

CVeskGenericData* CVeskGenericDataContainer::XCommandObj::GetProperty(const CDorlString& name,
                                                                      int bByRef)
{
    return Owner()->OnGetProperty(name, bByRef);
}

int CVeskGenericDataContainer::XCommandObj::SetProperty(const CDorlString& name,
                                                        CVeskGenericData* value)
{
    return Owner()->OnSetProperty(name, value);
}

int CVeskGenericDataContainer::XCommandObj::CallMethod(CVeskCommandContext* context)
{
    return Owner()->OnCallMethod(context);
}

CVeskPropertyEnum* CVeskGenericDataContainer::XCommandObj::GetPropertyEnumerator()
{
    return Owner()->OnGetPropertyEnumerator();
}

// The container ----------------------------------------------------------------------------------

CVeskGenericDataContainer::CVeskGenericDataContainer(int bAutoCreate) : m_bAutoCreate(bAutoCreate)
{}

CVeskGenericDataContainer::~CVeskGenericDataContainer() { RemoveAllProperties(); }

int CVeskGenericDataContainer::Size() const { return static_cast<int>(m_Properties.size()); }

void CVeskGenericDataContainer::AddProperty(const CDorlString& name, CVeskGenericData* value)
{
    value->AddRef();
    AddPropertyNoRef(name, value);
}

void CVeskGenericDataContainer::AddPropertyNoRef(const CDorlString& name, CVeskGenericData* value)
{
    AddPropertyNoRef(CDorlString(name), value);
}

void CVeskGenericDataContainer::AddPropertyNoRef(CDorlString&& name, CVeskGenericData* value)
{
    auto [entry, bAdded] = m_Properties.try_emplace(std::move(name), value);
    if (bAdded)
        return;
    // Released once the entry holds the new value: its release may reach this container.
    CVeskGenericData* old = entry->second;
    entry->second = value;
    old->Release();
}

void CVeskGenericDataContainer::AddObject(const CDorlString& name, IUnknown* object)
{
    AddPropertyNoRef(name, CVeskGdObject::Allocate(object, 1));
}

void CVeskGenericDataContainer::AddObject(const CDorlString& name, CVeskCOMObject* object)
{
    IUnknown* unknown = nullptr;
    object->ExternalQueryInterface(&IID_IUnknown, reinterpret_cast<void**>(&unknown));
    AddObject(name, unknown);
    if (unknown)
        unknown->Release();
}

void CVeskGenericDataContainer::AddString(const CDorlString& name, const CDorlString& value)
{
    AddPropertyNoRef(name, CVeskGdString::Allocate(value));
}

void CVeskGenericDataContainer::AddDouble(const CDorlString& name, double value)
{
    AddPropertyNoRef(name, CVeskGdDouble::Allocate(value));
}

void CVeskGenericDataContainer::AddBoolean(const CDorlString& name, bool value)
{
    AddPropertyNoRef(name, CVeskGdBoolean::Allocate(value));
}

void CVeskGenericDataContainer::RemoveProperty(const CDorlString& name)
{
    auto entry = m_Properties.find(name);
    if (entry == m_Properties.end())
        return;
    CVeskGenericData* value = entry->second;
    m_Properties.erase(entry);
    value->Release();
}

void CVeskGenericDataContainer::RemoveAllProperties()
{
    // The map is emptied before the values go, so that a value whose release reaches this
    // container finds it consistent.
    PropertyMap properties;
    properties.swap(m_Properties);
    for (auto& entry : properties)
        entry.second->Release();
}

CVeskGenericData* CVeskGenericDataContainer::OnGetProperty(const CDorlString& name, int bByRef)
{
    auto entry = m_Properties.find(name);
    if (entry == m_Properties.end()) {
        if (!m_bAutoCreate)
            return nullptr;
        entry = m_Properties.emplace(name, CVeskGdNone::Allocate()).first;
    }
    if (bByRef) {
        CVeskGdIndirect* indirect = CVeskGdIndirect::Allocate();
        indirect->SetValuePtr(&entry->second);
        return indirect;
    }
    CVeskGenericData* value = entry->second;
    if (value->GetType() == CVeskGenericData::dtIndirect)
        value = static_cast<CVeskGdIndirect*>(value)->GetValue(0);
    return value->Copy();
}

int CVeskGenericDataContainer::OnSetProperty(const CDorlString& name, CVeskGenericData* value)
{
    if (!value)
        return 0;
    auto entry = m_Properties.find(name);
    if (entry != m_Properties.end()) {
        value->AddRef();
        CVeskGenericData* old = entry->second;
        entry->second = value;
        old->Release();
        return 1;
    }
    if (!m_bAutoCreate)
        return 0;
    AddProperty(name, value);
    return 1;
}

int CVeskGenericDataContainer::OnCallMethod(CVeskCommandContext*) { return 0; }

CVeskPropertyEnum* CVeskGenericDataContainer::OnGetPropertyEnumerator()
{
    return new CVeskGenericDataContainerEnumerator(m_Properties);
}

// The enumerator ---------------------------------------------------------------------------------

CVeskGenericDataContainerEnumerator::CVeskGenericDataContainerEnumerator(
    CVeskGenericDataContainer::PropertyMap& map)
    : m_Map(map), m_Position(map.begin()), m_pCurrent(nullptr), m_bHasCurrent(0)
{}

void CVeskGenericDataContainerEnumerator::Reset()
{
    m_Position = m_Map.begin();
    m_pCurrent = nullptr;
    m_bHasCurrent = 0;
}

int CVeskGenericDataContainerEnumerator::Next(CDorlString* pName, CDorlString* pDescription,
                                              CDorlString* pType, ReadOnlyStatus* pStatus)
{
    if (m_Position == m_Map.end()) {
        m_pCurrent = nullptr;
        m_bHasCurrent = 0;
        return 0;
    }
    static const CDorlString s_sDescription("No description");
    static const CDorlString s_sType("Any");
    *pName = m_Position->first;
    *pDescription = s_sDescription;
    *pType = s_sType;
    *pStatus = ReadWrite;
    m_pCurrent = m_Position->second;
    m_bHasCurrent = 1;
    ++m_Position;
    return 1;
}

int CVeskGenericDataContainerEnumerator::GetCurrentValue(CVeskGenericData** ppValue)
{
    if (!m_bHasCurrent)
        return 0;
    m_pCurrent->AddRef();
    *ppValue = m_pCurrent;
    return 1;
}

void CVeskGenericDataContainerEnumerator::Delete() { delete this; }
