// The non-template half of property maps: the map of names, the conversions between native
// members and values, the type texts, and the guard of the first fill.

#include "vesk/PropertyMap.h"

#include "data/ProcessLock.h"
#include "vesk/InterfaceIds.h"

// CVeskVoidPtrMap ----------------------------------------------------------------------------

CVeskVoidPtrMap::CVeskVoidPtrMap() = default;

CVeskVoidPtrMap::~CVeskVoidPtrMap() = default;

void CVeskVoidPtrMap::Set(const CDorlString& name, void* item)
{
    auto [entry, bAdded] = m_Entries.try_emplace(name, item);
    if (bAdded)
        return;
    DeleteItem(entry->second);
    entry->second = item;
}

void* CVeskVoidPtrMap::Lookup(const CDorlString& name) const
{
    auto entry = m_Entries.find(name);
    return entry == m_Entries.end() ? nullptr : entry->second;
}

CVeskVoidPtrMapIterator CVeskVoidPtrMap::GetIterator() { return CVeskVoidPtrMapIterator(*this); }

void CVeskVoidPtrMap::DeleteAllItems()
{
    for (auto& entry : m_Entries)
        DeleteItem(entry.second);
    m_Entries.clear();
}

CVeskVoidPtrMapIterator::CVeskVoidPtrMapIterator(CVeskVoidPtrMap& map)
    : m_pMap(&map), m_Position(map.m_Entries.begin())
{}

void CVeskVoidPtrMapIterator::Reset() { m_Position = m_pMap->m_Entries.begin(); }

int CVeskVoidPtrMapIterator::IsEnd() const { return m_Position == m_pMap->m_Entries.end(); }

void CVeskVoidPtrMapIterator::Next()
{
    if (!IsEnd())
        ++m_Position;
}

const CDorlString& CVeskVoidPtrMapIterator::Name() const { return m_Position->first; }

void* CVeskVoidPtrMapIterator::Value() const { return m_Position->second; }

// CVeskPropertyDescriptor ------------------------------------------------------------------------

CVeskPropertyDescriptor::CVeskPropertyDescriptor(const CDorlString& description, int status)
    : m_sDescription(description), m_eStatus(status)
{}

void CVeskPropertyDescriptor::DescribeProperty(CDorlString* pDescription, CDorlString* pType,
                                               CVeskPropertyEnum::ReadOnlyStatus* pStatus)
{
    *pDescription = m_sDescription;
    *pType = GetType();
    *pStatus = static_cast<CVeskPropertyEnum::ReadOnlyStatus>(m_eStatus);
}

int CVeskPropertyDescriptor::IsReadOnly() const { return m_eStatus == CVeskPropertyEnum::ReadOnly; }

// Conversions ----------------------------------------------------------------------------------

CVeskGenericData* CVeskStringPropertyGet(const CDorlString& value, int bByRef)
{
    return bByRef ? nullptr : CVeskGdString::Allocate(value);
}

int CVeskStringPropertySet(CVeskGenericData* value, CDorlString* pTarget, int bReadOnly)
{
    if (bReadOnly || value->GetType() != CVeskGenericData::dtString)
        return 0;
    *pTarget = static_cast<CVeskGdString*>(value)->m_sValue;
    return 1;
}

CVeskGenericData* CVeskBooleanPropertyGet(int value, int bByRef)
{
    return bByRef ? nullptr : CVeskGdBoolean::Allocate(value);
}

int CVeskBooleanPropertySet(CVeskGenericData* value, int* pTarget, int bReadOnly)
{
    if (bReadOnly || value->GetType() != CVeskGenericData::dtBoolean)
        return 0;
    *pTarget = static_cast<CVeskGdBoolean*>(value)->m_bValue;
    return 1;
}

CVeskGenericData* CVeskDoublePropertyGet(double value, int bByRef)
{
    return bByRef ? nullptr : CVeskGdDouble::Allocate(value);
}

int CVeskDoublePropertySet(CVeskGenericData* value, double* pTarget, int bReadOnly)
{
    if (bReadOnly || value->GetType() != CVeskGenericData::dtNumber)
        return 0;
    *pTarget = static_cast<CVeskGdDouble*>(value)->m_dValue;
    return 1;
}

CVeskGenericData* CVeskInterfacePropertyGet(IUnknown* value, int bByRef)
{
    if (bByRef)
        return nullptr;
    if (!value)
        return CVeskGdNull::Allocate();
    return CVeskGdObject::Allocate(value, 0);
}

int CVeskInterfacePropertySet(CVeskGenericData* value, const GUID& iid,
                              const CDorlString& sProperty, IUnknown** ppTarget, int bReadOnly)
{
    if (bReadOnly)
        return 0;
    CVeskGenericData::DataType type = value->GetType();
    if (type != CVeskGenericData::dtObject && type != CVeskGenericData::dtNull)
        return 0;
    IUnknown* pointer = nullptr;
    if (type == CVeskGenericData::dtObject) {
        void* found = nullptr;
        HRESULT hr = static_cast<CVeskGdObject*>(value)->GetInterface(iid, &found, sProperty);
        if (FAILED(hr) || !found)
            return 0;
        pointer = static_cast<IUnknown*>(found);
    }
    // Released after the target holds the new pointer: the old interface's release may reach
    // the object that owns the target.
    IUnknown* old = *ppTarget;
    *ppTarget = pointer;
    if (old)
        old->Release();
    return 1;
}

// Type texts -------------------------------------------------------------------------------------

CDorlString CVeskGetStringPropertyType()
{
    static const CDorlString s_sType("String");
    return s_sType;
}

CDorlString CVeskGetBooleanPropertyType()
{
    static const CDorlString s_sType("Boolean");
    return s_sType;
}

CDorlString CVeskGetDoublePropertyType()
{
    static const CDorlString s_sType("Number");
    return s_sType;
}

CDorlString CVeskGetFunctionPropertyType()
{
    static const CDorlString s_sType("Function");
    return s_sType;
}

CDorlString CVeskGetGeneralPropertyType()
{
    static const CDorlString s_sType("Any");
    return s_sType;
}

CDorlString CVeskGetInterfacePropertyType(const GUID& iid, const CDorlString& sProperty)
{
    CDorlString type = VeskTranslateInterfaceId(iid);
    if (!sProperty.IsEmpty())
        type += "(" + sProperty + ")";
    return type;
}

// The first fill -----------------------------------------------------------------------------

namespace {

vesk::ProcessLock& FillLock()
{
    // Never destroyed: a component may be built by another module's exit handler.
    static vesk::ProcessLock* s_pLock = new vesk::ProcessLock();
    return *s_pLock;
}

} // namespace

void VeskFillPropertyMap(int* pbFilled, void (*pfnFill)())
{
    if (__atomic_load_n(pbFilled, __ATOMIC_ACQUIRE))
        return;
    // Re-entrant, since a fill may construct an instance of another class with a map.
    vesk::ProcessLockHolder hold(FillLock());
    if (__atomic_load_n(pbFilled, __ATOMIC_RELAXED))
        return;
    pfnFill();
    __atomic_store_n(pbFilled, 1, __ATOMIC_RELEASE);
}
