#include "vesk/GdIndirect.h"

#include <atomic>
#include <ostream>

#include <dorl/DorlProbe.h>
#include <standin/Sync.h>

#include "data/GdInternal.h"
#include "data/ProcessLock.h"

namespace {

CDorlProbedLong& IndirectCount()
{
    static CDorlProbedLong s_count(VESK_GD_PROBE_PATH, "Indirect", 0, nullptr);
    return s_count;
}

// The one lock of all indirect values.
vesk::ProcessLock& Lock()
{
    static vesk::ProcessLock s_lock;
    return s_lock;
}

using Locked = vesk::ScopedProcessLock<&Lock>;

} // namespace

CVeskGdIndirect::CVeskGdIndirect()
    : m_poValue(CVeskGdNone::Allocate()), m_nFlags(0), m_ppValue(&m_poValue)
{
    vesk::CountCreated(IndirectCount(), nullptr, this, nullptr);
}

CVeskGdIndirect::~CVeskGdIndirect()
{
    if (m_poValue)
        m_poValue->Release();
    vesk::CountDestroyed(IndirectCount(), nullptr, this, nullptr);
}

CVeskGdIndirect* CVeskGdIndirect::Allocate() { return new CVeskGdIndirect(); }

CVeskGenericData* CVeskGdIndirect::GetValue(int bAddRef)
{
    Locked lock;
    CVeskGenericData* value = *m_ppValue;
    if (value->GetType() == dtIndirect)
        return static_cast<CVeskGdIndirect*>(value)->GetValue(bAddRef);
    if (bAddRef)
        value->AddRef();
    return value;
}

CVeskGenericData** CVeskGdIndirect::GetValuePtr() { return m_ppValue; }

void CVeskGdIndirect::SetValue(CVeskGenericData* value)
{
    Locked lock;
    if (m_nFlags & flagReadOnly)
        return;
    CVeskGenericData* present = *m_ppValue;
    if (present->GetType() == dtIndirect) {
        static_cast<CVeskGdIndirect*>(present)->SetValue(value);
        return;
    }
    if (m_nFlags & flagAssign) {
        if (value)
            present->Assign(value);
        return;
    }
    if (value)
        value->AddRef();
    else
        value = CVeskGdNone::Allocate();
    *m_ppValue = value;
    present->Release();
}

void CVeskGdIndirect::SetValuePtr(CVeskGenericData** slot)
{
    Locked lock;
    if (m_poValue) {
        m_poValue->Release();
        m_poValue = nullptr;
    }
    if (slot) {
        m_ppValue = slot;
        return;
    }
    m_poValue = CVeskGdNone::Allocate();
    m_ppValue = &m_poValue;
}

int CVeskGdIndirect::GetFlags() const { return m_nFlags; }

void CVeskGdIndirect::SetFlags(int flags) { m_nFlags = flags; }

int CVeskGdIndirect::GetLockDepth() { return Lock().Depth(); }

CVeskGenericData* CVeskGdIndirect::TakeSlotValue()
{
    Locked lock;
    CVeskGenericData* value = *m_ppValue;
    value->AddRef();
    return value;
}

// Forwarded calls run outside the lock, on a value that their own reference keeps alive.
CVeskGenericData* CVeskGdIndirect::GetProperty(const CDorlString& name, int bByRef)
{
    CVeskGenericData* value = TakeSlotValue();
    CVeskGenericData* result = value->GetProperty(name, bByRef);
    value->Release();
    return result;
}

int CVeskGdIndirect::SetProperty(const CDorlString& name, CVeskGenericData* newValue)
{
    CVeskGenericData* value = TakeSlotValue();
    int result = value->SetProperty(name, newValue);
    value->Release();
    return result;
}

int CVeskGdIndirect::CallMethod(CVeskCommandContext* context)
{
    CVeskGenericData* value = TakeSlotValue();
    int result = value->CallMethod(context);
    value->Release();
    return result;
}

CVeskGenericData::DataType CVeskGdIndirect::GetType() const { return dtIndirect; }

void CVeskGdIndirect::Print(std::ostream& stream) const
{
    if (!m_poValue) {
        stream << "(null)";
        return;
    }
    stream << "(";
    (*m_ppValue)->Print(stream);
    stream << ")";
}

void CVeskGdIndirect::Write(CDorlArchive& archive) const
{
    int bOwnValue = m_poValue ? 1 : 0;
    archive << bOwnValue << static_cast<int>(m_nFlags);
    if (!bOwnValue)
        return;
    // The value it refers to now, at the end of any chain. Like Print, this takes no lock.
    const CVeskGenericData* value = *m_ppValue;
    while (value->GetType() == dtIndirect)
        value = *static_cast<const CVeskGdIndirect*>(value)->m_ppValue;
    archive << static_cast<unsigned char>(value->GetType());
    value->Write(archive);
}

void CVeskGdIndirect::Read(CDorlArchive& archive)
{
    vesk::ArchiveNesting nesting;
    if (nesting.TooDeep(archive))
        return;
    int bHasValue = 0;
    unsigned int flags = 0;
    archive >> bHasValue >> flags;
    if (bHasValue) {
        unsigned char type = 0;
        archive >> type;
        CVeskGenericData* value = GenericAllocate(static_cast<DataType>(type));
        if (value) {
            value->Read(archive);
            SetValue(value);
            value->Release();
        } else {
            VESK_GD_ASSERT(poData);
        }
    }
    m_nFlags = static_cast<int32_t>(flags);
}

CVeskGenericData* CVeskGdIndirect::Copy()
{
    VESK_GD_ASSERT(0);
    return nullptr;
}
