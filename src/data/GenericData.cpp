#include "vesk/GenericData.h"

#include <cstring>
#include <ostream>

#include <dorl/DorlDiag.h>
#include <dorl/DorlProbe.h>
#include <standin/Sync.h>

#include "command/CommandQuery.h"
#include "data/GdInternal.h"
#include "frame/InterfaceNames.h"
#include "vesk/GdIndirect.h"
#include "vesk/GdObject.h"
#include "vesk/GdVector.h"
#include "vesk/InterfaceIds.h"

static_assert(sizeof(long) == sizeof(void*), "a proxy type holds the address of a class table");

namespace {

CVeskGenericData* s_pDebugObj = nullptr;
CVeskGenericData::DebugCallback s_pfnDebugCallback = nullptr;

void ReportRefCount(int bAddRef, LONG count)
{
    if (s_pfnDebugCallback) {
        s_pfnDebugCallback(bAddRef, count);
        return;
    }
    if (bAddRef)
        DorlDump("CVeskGenericData::AddRef RefCount:%d\n", static_cast<int>(count));
    else
        DorlDump("CVeskGenericData::Release RefCount:%d\n", static_cast<int>(count));
}

long ProbeValue(const char* name)
{
    CDorlProberVariable* probe = DorlFindProbe(VESK_GD_PROBE_PATH, name);
    return probe ? probe->GetValue() : 0;
}

void PrintGenericDataInfo()
{
    DorlDump("str:%d  dbl:%d  bool:%d  obj:%d  ind:%d  vec:%d\n",
             static_cast<int>(ProbeValue("String")), static_cast<int>(ProbeValue("Double")),
             static_cast<int>(ProbeValue("Boolean")), static_cast<int>(ProbeValue("Object")),
             static_cast<int>(ProbeValue("Indirect")), static_cast<int>(ProbeValue("Vector")));
}

// A proxy type is taken from a sample of the class, which is released again at once.
long SampleProxyType(CVeskGenericData* sample)
{
    long type = VeskGetGdProxyType(sample);
    sample->Release();
    return type;
}

void VeskStartup()
{
    VeskGdDoubleProxyType = SampleProxyType(CVeskGdDouble::Allocate(1.0));
    VeskGdStringProxyType = SampleProxyType(CVeskGdString::Allocate(""));
    VeskGdBooleanProxyType = SampleProxyType(CVeskGdBoolean::Allocate(1));
    VeskGdNullProxyType = SampleProxyType(CVeskGdNull::Allocate());
    VeskGdNoneProxyType = SampleProxyType(CVeskGdNone::Allocate());
    VeskGdObjectProxyType = SampleProxyType(CVeskGdObject::Allocate(nullptr, 1));
    VeskGdIndirectProxyType = SampleProxyType(CVeskGdIndirect::Allocate());
    VeskGdVectorProxyType = SampleProxyType(CVeskGdVector::Allocate(0));
    vesk::RegisterStandardInterfaceNames();
}

[[maybe_unused]] const int s_nStartupRegistration = DorlAddInitialiser(&VeskStartup);

} // namespace

long VeskGdDoubleProxyType = 0;
long VeskGdStringProxyType = 0;
long VeskGdBooleanProxyType = 0;
long VeskGdNullProxyType = 0;
long VeskGdNoneProxyType = 0;
long VeskGdObjectProxyType = 0;
long VeskGdIndirectProxyType = 0;
long VeskGdVectorProxyType = 0;

namespace vesk {

CVeskGenericData* SharedName(CVeskGdString& name)
{
    name.AddRef();
    return &name;
}

void RegisterGenericDataInfoHandler()
{
    static bool s_bRegistered = false;
    if (s_bRegistered)
        return;
    s_bRegistered = true;
    DorlRegisterProcessInfoHandler("genericData", &PrintGenericDataInfo);
}

} // namespace vesk

CVeskGenericData::CVeskGenericData() : m_nRefCount(1) {}

CVeskGenericData::~CVeskGenericData() = default;

HRESULT CVeskGenericData::QueryInterface(REFIID iid, void** ppv)
{
    return vesk::QueryCommandInterface(this, iid, ppv);
}

ULONG CVeskGenericData::AddRef()
{
    LONG count = InterlockedIncrement(&m_nRefCount);
    if (this == s_pDebugObj)
        ReportRefCount(1, count);
    return static_cast<ULONG>(count);
}

ULONG CVeskGenericData::Release()
{
    LONG count = InterlockedDecrement(&m_nRefCount);
    if (this == s_pDebugObj) {
        ReportRefCount(0, count);
        if (count == 0)
            s_pDebugObj = nullptr;
    }
    if (count != 0)
        return static_cast<ULONG>(count);
    _Dispose();
    return 0;
}

CVeskGenericData* CVeskGenericData::GetProperty(const CDorlString& name, int bByRef)
{
    if (bByRef)
        return nullptr;
    if (vesk::IsNameProperty(name)) {
        static CVeskGdString s_name("UnknownType");
        return vesk::SharedName(s_name);
    }
    return nullptr;
}

int CVeskGenericData::SetProperty(const CDorlString&, CVeskGenericData*) { return 0; }

int CVeskGenericData::CallMethod(CVeskCommandContext*) { return 0; }

CVeskPropertyEnum* CVeskGenericData::GetPropertyEnumerator()
{
    return new CVeskGenericDataPropertyEnumerator(this);
}

int CVeskGenericData::_IsEqual(CVeskGenericData*) { return 0; }

int CVeskGenericData::_Assign(CVeskGenericData*) { return 0; }

int CVeskGenericData::_DescribeProperty(int index, CDorlString* name, CDorlString* description,
                                        CDorlString* type,
                                        CVeskPropertyEnum::ReadOnlyStatus* status)
{
    if (index != 0)
        return 0;
    *name = "name";
    *description = "Name of object";
    *type = "String";
    *status = CVeskPropertyEnum::ReadOnly;
    return 1;
}

void CVeskGenericData::_Dispose() { delete this; }

int CVeskGenericData::IsEqual(CVeskGenericData* other)
{
    if (other->GetType() != GetType())
        return 0;
    return _IsEqual(other);
}

int CVeskGenericData::Assign(CVeskGenericData* other)
{
    if (other->GetType() != GetType())
        return 0;
    return _Assign(other);
}

CVeskGenericData* CVeskGenericData::GenericAllocate(DataType type)
{
    switch (type) {
    case dtIndirect:
        return CVeskGdIndirect::Allocate();
    case dtNull:
        return CVeskGdNull::Allocate();
    case dtBoolean:
        return CVeskGdBoolean::Allocate(0);
    case dtNumber:
        return CVeskGdDouble::Allocate(0.0);
    case dtString:
        return CVeskGdString::Allocate("");
    case dtVector:
        return CVeskGdVector::Allocate(0);
    case dtNone:
        return CVeskGdNone::Allocate();
    default:
        return nullptr;
    }
}

const char* CVeskGenericData::GetTypeName(DataType type)
{
    switch (type) {
    case dtNull:
        return "Null";
    case dtBoolean:
        return "Boolean";
    case dtNumber:
        return "Number";
    case dtString:
        return "String";
    case dtVector:
        return "Vector";
    case dtObject:
        return "Object";
    case dtNone:
        return "None";
    default:
        return "Other";
    }
}

void CVeskGenericData::SetDebugObj(CVeskGenericData* object) { s_pDebugObj = object; }

void CVeskGenericData::SetDebugCallback(DebugCallback callback) { s_pfnDebugCallback = callback; }

CVeskGenericDataPropertyEnumerator::CVeskGenericDataPropertyEnumerator(CVeskGenericData* value)
    : m_poValue(value), m_nIndex(0)
{
    m_poValue->AddRef();
}

CVeskGenericDataPropertyEnumerator::~CVeskGenericDataPropertyEnumerator() { m_poValue->Release(); }

void CVeskGenericDataPropertyEnumerator::Reset() { m_nIndex = 0; }

int CVeskGenericDataPropertyEnumerator::Next(CDorlString* pName, CDorlString* pDescription,
                                             CDorlString* pType, ReadOnlyStatus* pStatus)
{
    if (!m_poValue->_DescribeProperty(m_nIndex, pName, pDescription, pType, pStatus))
        return 0;
    ++m_nIndex;
    return 1;
}

int CVeskGenericDataPropertyEnumerator::GetCurrentValue(CVeskGenericData**) { return 0; }

void CVeskGenericDataPropertyEnumerator::Delete() { delete this; }

std::ostream& operator<<(std::ostream& stream, CVeskGenericData& value)
{
    value.Print(stream);
    return stream;
}

CDorlArchive& operator<<(CDorlArchive& archive, const CVeskGenericData& value)
{
    value.Write(archive);
    return archive;
}

CDorlArchive& operator>>(CDorlArchive& archive, CVeskGenericData& value)
{
    value.Read(archive);
    return archive;
}

long VeskGetGdProxyType(CVeskGenericData* value)
{
    long type;
    std::memcpy(&type, static_cast<void*>(value), sizeof type);
    return type;
}

bool VeskIsGdDouble(CVeskGenericData* value)
{
    return VeskGetGdProxyType(value) == VeskGdDoubleProxyType;
}
bool VeskIsGdString(CVeskGenericData* value)
{
    return VeskGetGdProxyType(value) == VeskGdStringProxyType;
}
bool VeskIsGdBoolean(CVeskGenericData* value)
{
    return VeskGetGdProxyType(value) == VeskGdBooleanProxyType;
}
bool VeskIsGdNull(CVeskGenericData* value)
{
    return VeskGetGdProxyType(value) == VeskGdNullProxyType;
}
bool VeskIsGdNone(CVeskGenericData* value)
{
    return VeskGetGdProxyType(value) == VeskGdNoneProxyType;
}
bool VeskIsGdObject(CVeskGenericData* value)
{
    return VeskGetGdProxyType(value) == VeskGdObjectProxyType;
}
bool VeskIsGdIndirect(CVeskGenericData* value)
{
    return VeskGetGdProxyType(value) == VeskGdIndirectProxyType;
}
bool VeskIsGdVector(CVeskGenericData* value)
{
    return VeskGetGdProxyType(value) == VeskGdVectorProxyType;
}
