// The scalar values: Boolean, Number, String, and the shared Null and None.

#include <ostream>

#include <dorl/DorlProbe.h>

#include "command/CommandQuery.h"
#include "data/GdInternal.h"
#include "vesk/GenericData.h"

namespace {

CVeskGenericData::AllocationMonitor s_pfnBooleanMonitor = nullptr;
CVeskGenericData::AllocationMonitor s_pfnDoubleMonitor = nullptr;
CVeskGenericData::AllocationMonitor s_pfnStringMonitor = nullptr;

CDorlProbedLong& BooleanCount()
{
    static CDorlProbedLong s_count(VESK_GD_PROBE_PATH, "Boolean", 0, nullptr);
    return s_count;
}

CDorlProbedLong& DoubleCount()
{
    static CDorlProbedLong s_count(VESK_GD_PROBE_PATH, "Double", 0, nullptr);
    return s_count;
}

CDorlProbedLong& StringCount()
{
    static CDorlProbedLong s_count(VESK_GD_PROBE_PATH, "String", 0, nullptr);
    return s_count;
}

} // namespace

// Boolean -----------------------------------------------------------------------------------------

CVeskGdBoolean::CVeskGdBoolean(int value) : m_bValue(value)
{
    vesk::RegisterGenericDataInfoHandler();
    vesk::CountCreated(BooleanCount(), s_pfnBooleanMonitor, this, "Boolean");
}

CVeskGdBoolean::~CVeskGdBoolean()
{
    vesk::CountDestroyed(BooleanCount(), s_pfnBooleanMonitor, this, "Boolean");
}

CVeskGdBoolean* CVeskGdBoolean::Allocate(int value)
{
    // Built on first use and never freed: every holder releases them like any value, and
    // nothing happens.
    static CVeskGdBoolean* s_pTrue = new CVeskGdBoolean(1);
    static CVeskGdBoolean* s_pFalse = new CVeskGdBoolean(0);
    return value ? s_pTrue : s_pFalse;
}

void CVeskGdBoolean::SetAllocationMonitor(AllocationMonitor monitor)
{
    s_pfnBooleanMonitor = monitor;
}

ULONG CVeskGdBoolean::AddRef() { return 1; }

ULONG CVeskGdBoolean::Release() { return 1; }

CVeskGenericData* CVeskGdBoolean::GetProperty(const CDorlString& name, int bByRef)
{
    if (bByRef || !vesk::IsNameProperty(name))
        return nullptr;
    static CVeskGdString s_name("Boolean");
    return vesk::SharedName(s_name);
}

CVeskGenericData::DataType CVeskGdBoolean::GetType() const { return dtBoolean; }

void CVeskGdBoolean::Print(std::ostream& stream) const { stream << (m_bValue ? "True" : "False"); }

void CVeskGdBoolean::Write(CDorlArchive& archive) const { archive << static_cast<int>(m_bValue); }

// The shared Booleans cannot take on a value, so the archive's int stays where it is.
void CVeskGdBoolean::Read(CDorlArchive&) { VESK_GD_ASSERT(0); }

CVeskGenericData* CVeskGdBoolean::Copy() { return this; }

int CVeskGdBoolean::_IsEqual(CVeskGenericData* other)
{
    return m_bValue == static_cast<CVeskGdBoolean*>(other)->m_bValue;
}

int CVeskGdBoolean::_Assign(CVeskGenericData*)
{
    VESK_GD_ASSERT(0);
    return 0;
}

// Number ------------------------------------------------------------------------------------------

CVeskGdDouble::CVeskGdDouble(double value) : m_dValue(value)
{
    vesk::CountCreated(DoubleCount(), s_pfnDoubleMonitor, this, "Double");
}

CVeskGdDouble::~CVeskGdDouble()
{
    vesk::CountDestroyed(DoubleCount(), s_pfnDoubleMonitor, this, "Double");
}

CVeskGdDouble* CVeskGdDouble::Allocate(double value) { return new CVeskGdDouble(value); }

void CVeskGdDouble::SetAllocationMonitor(AllocationMonitor monitor)
{
    s_pfnDoubleMonitor = monitor;
}

CVeskGenericData* CVeskGdDouble::GetProperty(const CDorlString& name, int bByRef)
{
    if (bByRef || !vesk::IsNameProperty(name))
        return nullptr;
    static CVeskGdString s_name("Number");
    return vesk::SharedName(s_name);
}

CVeskGenericData::DataType CVeskGdDouble::GetType() const { return dtNumber; }

void CVeskGdDouble::Print(std::ostream& stream) const { stream << m_dValue; }

void CVeskGdDouble::Write(CDorlArchive& archive) const { archive << m_dValue; }

void CVeskGdDouble::Read(CDorlArchive& archive) { archive >> m_dValue; }

CVeskGenericData* CVeskGdDouble::Copy() { return Allocate(m_dValue); }

int CVeskGdDouble::_IsEqual(CVeskGenericData* other)
{
    return m_dValue == static_cast<CVeskGdDouble*>(other)->m_dValue;
}

int CVeskGdDouble::_Assign(CVeskGenericData* other)
{
    m_dValue = static_cast<CVeskGdDouble*>(other)->m_dValue;
    return 1;
}

// String ------------------------------------------------------------------------------------------

CVeskGdString::CVeskGdString(const CDorlString& value) : m_sValue(value)
{
    vesk::CountCreated(StringCount(), s_pfnStringMonitor, this, "String");
}

CVeskGdString::CVeskGdString(const char* value) : m_sValue(value)
{
    vesk::CountCreated(StringCount(), s_pfnStringMonitor, this, "String");
}

CVeskGdString::~CVeskGdString()
{
    vesk::CountDestroyed(StringCount(), s_pfnStringMonitor, this, "String");
}

CVeskGdString* CVeskGdString::Allocate(const CDorlString& value)
{
    return new CVeskGdString(value);
}

CVeskGdString* CVeskGdString::Allocate(const char* value) { return new CVeskGdString(value); }

void CVeskGdString::SetAllocationMonitor(AllocationMonitor monitor)
{
    s_pfnStringMonitor = monitor;
}

CVeskGenericData* CVeskGdString::GetProperty(const CDorlString& name, int bByRef)
{
    if (bByRef)
        return nullptr;
    if (vesk::IsNameProperty(name)) {
        static CVeskGdString s_name("String");
        return vesk::SharedName(s_name);
    }
    if (name == "length")
        return CVeskGdDouble::Allocate(m_sValue.GetLength());
    return nullptr;
}

CVeskGenericData::DataType CVeskGdString::GetType() const { return dtString; }

void CVeskGdString::Print(std::ostream& stream) const
{
    stream.write(static_cast<const char*>(m_sValue), m_sValue.GetLength());
}

void CVeskGdString::Write(CDorlArchive& archive) const { archive << m_sValue; }

void CVeskGdString::Read(CDorlArchive& archive) { archive >> m_sValue; }

CVeskGenericData* CVeskGdString::Copy() { return Allocate(m_sValue); }

int CVeskGdString::_IsEqual(CVeskGenericData* other)
{
    return m_sValue == static_cast<CVeskGdString*>(other)->m_sValue;
}

int CVeskGdString::_Assign(CVeskGenericData* other)
{
    m_sValue = static_cast<CVeskGdString*>(other)->m_sValue;
    return 1;
}

int CVeskGdString::_DescribeProperty(int index, CDorlString* name, CDorlString* description,
                                     CDorlString* type, CVeskPropertyEnum::ReadOnlyStatus* status)
{
    if (index != 0)
        return CVeskGenericData::_DescribeProperty(index - 1, name, description, type, status);
    *name = "length";
    *description = "Length of string";
    *type = "Number";
    *status = CVeskPropertyEnum::ReadOnly;
    return 1;
}

// Null --------------------------------------------------------------------------------------------

CVeskGdNull* CVeskGdNull::Allocate()
{
    static CVeskGdNull* s_pNull = new CVeskGdNull();
    return s_pNull;
}

ULONG CVeskGdNull::AddRef() { return 1; }

ULONG CVeskGdNull::Release() { return 1; }

CVeskGenericData* CVeskGdNull::GetProperty(const CDorlString& name, int bByRef)
{
    if (bByRef || !vesk::IsNameProperty(name))
        return nullptr;
    static CVeskGdString s_name("Null");
    return vesk::SharedName(s_name);
}

CVeskGenericData::DataType CVeskGdNull::GetType() const { return dtNull; }

void CVeskGdNull::Print(std::ostream& stream) const { stream << "Null"; }

void CVeskGdNull::Write(CDorlArchive&) const {}

void CVeskGdNull::Read(CDorlArchive&) {}

CVeskGenericData* CVeskGdNull::Copy() { return this; }

int CVeskGdNull::_IsEqual(CVeskGenericData*) { return 1; }

int CVeskGdNull::_Assign(CVeskGenericData*) { return 1; }

void CVeskGdNull::_Dispose() {}

// None --------------------------------------------------------------------------------------------

CVeskGdNone* CVeskGdNone::Allocate()
{
    static CVeskGdNone* s_pNone = new CVeskGdNone();
    return s_pNone;
}

ULONG CVeskGdNone::AddRef() { return 1; }

ULONG CVeskGdNone::Release() { return 1; }

CVeskGenericData* CVeskGdNone::GetProperty(const CDorlString& name, int bByRef)
{
    if (bByRef || !vesk::IsNameProperty(name))
        return nullptr;
    static CVeskGdString s_name("None");
    return vesk::SharedName(s_name);
}

CVeskGenericData::DataType CVeskGdNone::GetType() const { return dtNone; }

void CVeskGdNone::Print(std::ostream& stream) const { stream << "None"; }

void CVeskGdNone::Write(CDorlArchive&) const {}

void CVeskGdNone::Read(CDorlArchive&) {}

CVeskGenericData* CVeskGdNone::Copy() { return this; }

int CVeskGdNone::_IsEqual(CVeskGenericData*) { return 0; }

int CVeskGdNone::_Assign(CVeskGenericData*) { return 0; }

void CVeskGdNone::_Dispose() {}
