#include "vesk/PropertyAccessor.h"

#include <limits>

#include <dorl/DorlDiag.h>

#include "vesk/GdVector.h"
#include "vesk/GenericData.h"

namespace {

// Releases the one reference it holds when the scope ends.
class HeldValue {
public:
    explicit HeldValue(CVeskGenericData* value) : m_pValue(value) {}
    ~HeldValue()
    {
        if (m_pValue)
            m_pValue->Release();
    }
    HeldValue(const HeldValue&) = delete;
    HeldValue& operator=(const HeldValue&) = delete;

    CVeskGenericData* operator->() const { return m_pValue; }
    CVeskGenericData* get() const { return m_pValue; }
    bool Is(CVeskGenericData::DataType type) const
    {
        return m_pValue && m_pValue->GetType() == type;
    }

private:
    CVeskGenericData* m_pValue;
};

} // namespace

CVeskPropertyAccessor::CVeskPropertyAccessor(IVeskCommand* pCommand) : m_pCommand(pCommand) {}

void CVeskPropertyAccessor::SetCommand(IVeskCommand* pCommand) { m_pCommand = pCommand; }

IVeskCommand* CVeskPropertyAccessor::GetCommand() { return m_pCommand; }

// The property, or its element at nIndex, with a reference for the caller; null on failure.
CVeskGenericData* CVeskPropertyAccessor::Read(const CDorlString& name, int nIndex)
{
    CVeskGenericData* property = m_pCommand->GetProperty(name, 0);
    if (!property || nIndex < 0)
        return property;
    HeldValue held(property);
    if (!held.Is(CVeskGenericData::dtVector))
        return nullptr;
    CVeskGdVector* pVector = static_cast<CVeskGdVector*>(property);
    if (!(nIndex < pVector->GetSize()))
        DorlDisplayAssert("nIndex < pVector->GetSize()", "PropertyAccessor", __LINE__);
    return pVector->GetElement(nIndex);
}

// Takes over the reference of value.
int CVeskPropertyAccessor::Write(const CDorlString& name, CVeskGenericData* value, int nIndex)
{
    HeldValue held(value);
    if (nIndex < 0)
        return m_pCommand->SetProperty(name, value);
    HeldValue property(m_pCommand->GetProperty(name, 0));
    if (!property.Is(CVeskGenericData::dtVector))
        return 0;
    CVeskGdVector* vector = static_cast<CVeskGdVector*>(property.get());
    int result = vector->SetElement(nIndex, value);
    // What the object makes of the changed vector is its own business: a read-only property
    // keeps its value, and the change stays in the vector it handed out.
    if (result)
        m_pCommand->SetProperty(name, vector);
    return result;
}

int CVeskPropertyAccessor::GetType(const CDorlString& name, const int& nIndex)
{
    if (!m_pCommand)
        return -1;
    HeldValue subject(Read(name, nIndex));
    return subject.get() ? static_cast<int>(subject->GetType()) : -1;
}

int CVeskPropertyAccessor::GetString(const CDorlString& name, CDorlString& value, const int& nIndex)
{
    if (!m_pCommand)
        return 0;
    HeldValue subject(Read(name, nIndex));
    if (!subject.Is(CVeskGenericData::dtString))
        return 0;
    value = static_cast<CVeskGdString*>(subject.get())->m_sValue;
    return 1;
}

int CVeskPropertyAccessor::GetBool(const CDorlString& name, int& value, const int& nIndex)
{
    if (!m_pCommand)
        return 0;
    HeldValue subject(Read(name, nIndex));
    if (!subject.Is(CVeskGenericData::dtBoolean))
        return 0;
    value = static_cast<CVeskGdBoolean*>(subject.get())->m_bValue;
    return 1;
}

int CVeskPropertyAccessor::GetDouble(const CDorlString& name, double& value, const int& nIndex)
{
    if (!m_pCommand)
        return 0;
    HeldValue subject(Read(name, nIndex));
    if (!subject.Is(CVeskGenericData::dtNumber))
        return 0;
    value = static_cast<CVeskGdDouble*>(subject.get())->m_dValue;
    return 1;
}

int CVeskPropertyAccessor::GetLong(const CDorlString& name, long& value, const int& nIndex)
{
    double number;
    if (!GetDouble(name, number, nIndex))
        return 0;
    // Numbers beyond the range of long (32 bits on some builds) stop at its ends.
    if (number != number)
        value = 0;
    else if (number >= static_cast<double>(std::numeric_limits<long>::max()))
        value = std::numeric_limits<long>::max();
    else if (number <= static_cast<double>(std::numeric_limits<long>::min()))
        value = std::numeric_limits<long>::min();
    else
        value = static_cast<long>(number);
    return 1;
}

int CVeskPropertyAccessor::SetString(const CDorlString& name, const CDorlString& value,
                                     const int& nIndex)
{
    if (!m_pCommand)
        return 0;
    return Write(name, CVeskGdString::Allocate(value), nIndex);
}

int CVeskPropertyAccessor::SetBool(const CDorlString& name, const int& value, const int& nIndex)
{
    if (!m_pCommand)
        return 0;
    return Write(name, CVeskGdBoolean::Allocate(value), nIndex);
}

int CVeskPropertyAccessor::SetDouble(const CDorlString& name, const double& value,
                                     const int& nIndex)
{
    if (!m_pCommand)
        return 0;
    return Write(name, CVeskGdDouble::Allocate(value), nIndex);
}

int CVeskPropertyAccessor::SetLong(const CDorlString& name, const long& value, const int& nIndex)
{
    return SetDouble(name, static_cast<double>(value), nIndex);
}

int CVeskPropertyAccessor::CallFunction(const CDorlString& name, CVeskCommandContext& context)
{
    if (!m_pCommand)
        return 0;
    HeldValue function(m_pCommand->GetProperty(name, 0));
    if (!function.Is(CVeskGenericData::dtObject))
        return 0;
    function->CallMethod(&context);
    return 1;
}

int CVeskPropertyAccessor::GetVectorLength(const CDorlString& name, int& nLength)
{
    nLength = -1;
    if (!m_pCommand)
        return 0;
    HeldValue property(m_pCommand->GetProperty(name, 0));
    if (!property.Is(CVeskGenericData::dtVector))
        return 0;
    nLength = static_cast<CVeskGdVector*>(property.get())->GetSize();
    return 1;
}
