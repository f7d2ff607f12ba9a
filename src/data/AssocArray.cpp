// The associative array, its two function objects, and the one lock of all arrays.

#include <atomic>
#include <utility>

#include <dorl/DorlProbe.h>
#include <standin/Sync.h>

#include "data/GdInternal.h"
#include "data/ProcessLock.h"
#include "vesk/CommandContext.h"
#include "vesk/GdContainer.h"
#include "vesk/GdObject.h"
#include "vesk/GdVector.h"
#include "vesk/InterfaceIds.h"

namespace {

CVeskGenericData::AllocationMonitor s_pfnAssocMonitor = nullptr;

CDorlProbedLong& AssocCount()
{
    static CDorlProbedLong s_count("\\Resources\\Ruol", "AssocArray", 0, nullptr);
    return s_count;
}

// The one lock of all associative arrays. It is taken before the indirects' lock whenever both
// are held, never after it.
vesk::ProcessLock& Lock()
{
    static vesk::ProcessLock s_lock;
    return s_lock;
}

using Locked = vesk::ScopedProcessLock<&Lock>;

// An object value on a new function object; the value holds the only reference.
CVeskGenericData* FunctionValue(CVeskFunctionObj* function)
{
    CVeskGenericData* value = CVeskGdObject::Allocate(function, 1);
    function->Release();
    return value;
}

} // namespace

VESK_BEGIN_INTERFACE_MAP(VeskAssocArray, CVeskGenericDataContainer)
    VESK_INTERFACE(IID_IVeskSerialise, VeskSerialise)
VESK_END_INTERFACE_MAP()

int VeskAssocArray::XVeskSerialiseObj::Serialise(CVeskGdSerialiser* serialiser)
{
    return Owner()->OnSerialise(serialiser);
}

int VeskAssocArray::XVeskSerialiseObj::Deserialise(CVeskGdSerialiser* serialiser,
                                                   CVeskGenericData**)
{
    return Owner()->OnDeserialise(serialiser);
}

CDorlString VeskAssocArray::XVeskSerialiseObj::GetCreationName()
{
    return Owner()->OnGetCreationName();
}

// The array --------------------------------------------------------------------------------------

VeskAssocArray::VeskAssocArray(CVeskGenericData* defaultValue)
    : CVeskGenericDataContainer(0), m_poDefault(defaultValue)
{
    m_poDefault->AddRef();
    vesk::CountCreated(AssocCount(), s_pfnAssocMonitor, this, "Assoc");
}

VeskAssocArray::~VeskAssocArray()
{
    m_poDefault->Release();
    vesk::CountDestroyed(AssocCount(), s_pfnAssocMonitor, this, "Assoc");
}

void VeskAssocArray::SetAllocationMonitor(CVeskGenericData::AllocationMonitor monitor)
{
    s_pfnAssocMonitor = monitor;
}

int VeskAssocArray::GetLockDepth() { return Lock().Depth(); }

CVeskGenericData* VeskAssocArray::ReservedProperty(const CDorlString& name)
{
    if (name == "*name")
        return CVeskGdString::Allocate("AssocArray");
    if (name == "*default") {
        m_poDefault->AddRef();
        return m_poDefault;
    }
    if (name == "*size")
        return CVeskGdDouble::Allocate(Size());
    if (name == "*first" || name == "*last") {
        if (m_Properties.empty())
            return CVeskGdNull::Allocate();
        const CDorlString& key =
            name == "*first" ? m_Properties.begin()->first : m_Properties.rbegin()->first;
        return CVeskGdString::Allocate(key);
    }
    if (name == "*keys" || name == "*values") {
        const bool bKeys = name == "*keys";
        CVeskGdVector* vector = CVeskGdVector::Allocate(Size());
        int index = 0;
        for (auto& entry : m_Properties) {
            if (bKeys) {
                CVeskGenericData* key = CVeskGdString::Allocate(entry.first);
                vector->SetElement(index++, key);
                key->Release();
            } else {
                // The stored value itself: the vector shares it with the array.
                vector->SetElement(index++, entry.second);
            }
        }
        return vector;
    }
    return nullptr;
}

CVeskGenericData* VeskAssocArray::OnGetProperty(const CDorlString& name, int bByRef)
{
    Locked lock;
    if (name[0] == '*')
        return ReservedProperty(name);
    if (name == "_ForEach")
        return FunctionValue(
            new CVeskGdAAForEachFunctionObj("ForEach", "Iterates over an AA", this));
    if (name == "_Exist")
        return FunctionValue(
            new CVeskGdAAExistFunctionObj("Exist", "Checks if a key entry exists in an AA", this));

    CVeskGenericData* value = CVeskGenericDataContainer::OnGetProperty(name, bByRef);
    // A key without an entry has no slot to refer to.
    if (value || bByRef)
        return value;
    m_poDefault->AddRef();
    return m_poDefault;
}

// None equals nothing, not even None, yet storing None where None is the default must delete.
bool VeskAssocArray::IsDefault(CVeskGenericData* value)
{
    if (value->IsEqual(m_poDefault))
        return true;
    return value->GetType() == CVeskGenericData::dtNone &&
           m_poDefault->GetType() == CVeskGenericData::dtNone;
}

int VeskAssocArray::OnSetProperty(const CDorlString& name, CVeskGenericData* value)
{
    if (!value)
        return 0;
    Locked lock;
    if (name[0] == '*') {
        if (name != "*default")
            return 0;
        value->AddRef();
        CVeskGenericData* old = m_poDefault;
        m_poDefault = value;
        old->Release();
        return 1;
    }
    if (IsDefault(value)) {
        RemoveProperty(name);
        return 1;
    }
    // Replaces an entry of that name or makes one, with one walk of the map.
    AddProperty(name, value);
    return 1;
}

void VeskAssocArray::TakeEntry(CDorlString&& name, CVeskGenericData* value)
{
    if (name[0] == '*' || IsDefault(value)) {
        OnSetProperty(name, value);
        value->Release();
        return;
    }
    AddPropertyNoRef(std::move(name), value);
}

int VeskAssocArray::OnSerialise(CVeskGdSerialiser* serialiser)
{
    Locked lock;
    serialiser->WriteString("*default", true);
    serialiser->WriteGdObject(m_poDefault);

    CVeskPropertyEnum* entries = OnGetPropertyEnumerator();
    CDorlString key, description, type;
    CVeskPropertyEnum::ReadOnlyStatus status;
    while (entries->Next(&key, &description, &type, &status)) {
        // A '*' key, which only AddProperty can make, reads as nothing and could not be read
        // back: it is left out rather than written without a value.
        CVeskGenericData* value = OnGetProperty(key, 0);
        if (!value)
            continue;
        serialiser->WriteString(key, true);
        serialiser->WriteGdObject(value);
        value->Release();
    }
    entries->Delete();

    serialiser->WriteString("*end", true);
    return 1;
}

int VeskAssocArray::OnDeserialise(CVeskGdSerialiser* serialiser)
{
    Locked lock;
    for (;;) {
        CDorlString name;
        if (!serialiser->ReadString(name, 1))
            return 0;
        if (name == "*end")
            return 1;
        CVeskGenericData* value = serialiser->ReadGdObject();
        if (!value)
            return 0;
        // "*default" sets the default; every other name is stored by the sparse rule.
        OnSetProperty(name, value);
        value->Release();
    }
}

CDorlString VeskAssocArray::OnGetCreationName() { return "AssocArray"; }

// Function objects -------------------------------------------------------------------------------

CVeskGdAAExistFunctionObj::CVeskGdAAExistFunctionObj(const CDorlString& name,
                                                     const CDorlString& description,
                                                     VeskAssocArray* array)
    : CVeskFunctionObj(name, description), m_poArray(array)
{
    m_poArray->ExternalAddRef();
}

CVeskGdAAExistFunctionObj::~CVeskGdAAExistFunctionObj() { m_poArray->ExternalRelease(); }

int CVeskGdAAExistFunctionObj::CallMethod(CVeskCommandContext* context)
{
    CDorlString key;
    context->GetParam("val", &key, 0);
    if (!context->CanProceed(0))
        return 1;
    // The container's own lookup: the default and the '*' names don't make a key exist.
    CVeskGenericData* found = m_poArray->CVeskGenericDataContainer::OnGetProperty(key, 0);
    context->SetReturnValueNoRef(CVeskGdBoolean::Allocate(found != nullptr));
    if (found)
        found->Release();
    return 1;
}

CVeskGdAAForEachFunctionObj::CVeskGdAAForEachFunctionObj(const CDorlString& name,
                                                         const CDorlString& description,
                                                         VeskAssocArray* array)
    : CVeskFunctionObj(name, description), m_poArray(array)
{
    m_poArray->ExternalAddRef();
}

CVeskGdAAForEachFunctionObj::~CVeskGdAAForEachFunctionObj()
{
    if (m_poPredicate)
        m_poPredicate->Release();
    m_poArray->ExternalRelease();
}

int CVeskGdAAForEachFunctionObj::CallMethod(CVeskCommandContext* context)
{
    context->GetParam("Predicate", &m_poPredicate, 0);
    if (context->CanProceed(0) && m_poPredicate)
        CallPredicate();
    if (m_poPredicate) {
        m_poPredicate->Release();
        m_poPredicate = nullptr;
    }
    return 1;
}

void CVeskGdAAForEachFunctionObj::CallPredicate()
{
    CVeskPropertyEnum* entries = m_poArray->CVeskGenericDataContainer::OnGetPropertyEnumerator();
    CDorlString key, description, type;
    CVeskPropertyEnum::ReadOnlyStatus status;
    while (entries->Next(&key, &description, &type, &status)) {
        CVeskGenericData* value = nullptr;
        entries->GetCurrentValue(&value);
        // Positional parameters are fetched last added first: the predicate sees the key,
        // then the value.
        CVeskCommandContext call;
        call.AddParamNoRef(DorlPchNil, value);
        call.AddParamNoRef(DorlPchNil, CVeskGdString::Allocate(key));
        m_poPredicate->CallMethod(&call);
    }
    entries->Delete();
}
