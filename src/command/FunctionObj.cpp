#include "vesk/FunctionObj.h"

#include <dorl/DorlDiag.h>
#include <standin/Sync.h>

#include "command/CommandQuery.h"
#include "vesk/CommandContext.h"
#include "vesk/GenericData.h"
#include "vesk/InterfaceIds.h"

// CVeskSimpleCommandObject ------------------------------------------------------------------------

CVeskSimpleCommandObject::CVeskSimpleCommandObject() : m_nRefCount(1) {}

CVeskSimpleCommandObject::~CVeskSimpleCommandObject() = default;

HRESULT CVeskSimpleCommandObject::QueryInterface(REFIID iid, void** ppv)
{
    return vesk::QueryCommandInterface(this, iid, ppv);
}

ULONG CVeskSimpleCommandObject::AddRef()
{
    return static_cast<ULONG>(InterlockedIncrement(&m_nRefCount));
}

ULONG CVeskSimpleCommandObject::Release()
{
    LONG count = InterlockedDecrement(&m_nRefCount);
    if (count == 0)
        delete this;
    return static_cast<ULONG>(count);
}

CVeskGenericData* CVeskSimpleCommandObject::GetProperty(const CDorlString&, int) { return nullptr; }

int CVeskSimpleCommandObject::SetProperty(const CDorlString&, CVeskGenericData*) { return 0; }

int CVeskSimpleCommandObject::CallMethod(CVeskCommandContext*) { return 0; }

CVeskPropertyEnum* CVeskSimpleCommandObject::GetPropertyEnumerator() { return nullptr; }

// CVeskFunctionObj --------------------------------------------------------------------------------

CVeskFunctionObj::CVeskFunctionObj(const CDorlString& name, const CDorlString& description)
    : m_sName(name), m_sDescription(description)
{}

CVeskGenericData* CVeskFunctionObj::GetProperty(const CDorlString& name, int bByRef)
{
    if (bByRef)
        return nullptr;
    if (vesk::IsNameProperty(name))
        return CVeskGdString::Allocate(m_sName);
    if (name == "description")
        return CVeskGdString::Allocate(m_sDescription);
    return nullptr;
}

CVeskPropertyEnum* CVeskFunctionObj::GetPropertyEnumerator()
{
    return new CVeskFunctionObjPropEnum();
}

// CVeskFreeFunctionObj ----------------------------------------------------------------------------

CVeskFreeFunctionObj::CVeskFreeFunctionObj(const CDorlString& name, const CDorlString& description,
                                           Function pfnFunction)
    : CVeskFunctionObj(name, description), m_pfnFunction(pfnFunction)
{}

int CVeskFreeFunctionObj::CallMethod(CVeskCommandContext* context)
{
    return m_pfnFunction(context);
}

// CVeskObjectProxy --------------------------------------------------------------------------------

CVeskObjectProxy::CVeskObjectProxy(IVeskCommand* pObject, const CDorlString& name)
    : m_pObject(pObject), m_sName(name)
{}

void CVeskObjectProxy::ClearObject() { m_pObject = nullptr; }

void CVeskObjectProxy::ReportDefunct() const
{
    DorlDump("Reference to defunct object %s", static_cast<const char*>(m_sName));
}

CVeskGenericData* CVeskObjectProxy::GetProperty(const CDorlString& name, int bByRef)
{
    if (m_pObject)
        return m_pObject->GetProperty(name, bByRef);
    ReportDefunct();
    if (!vesk::IsNameProperty(name))
        return nullptr;
    return CVeskGdString::Allocate(m_sName + "'s ghost");
}

int CVeskObjectProxy::SetProperty(const CDorlString& name, CVeskGenericData* value)
{
    if (m_pObject)
        return m_pObject->SetProperty(name, value);
    ReportDefunct();
    return 0;
}

int CVeskObjectProxy::CallMethod(CVeskCommandContext* context)
{
    if (m_pObject)
        return m_pObject->CallMethod(context);
    ReportDefunct();
    return 0;
}

CVeskPropertyEnum* CVeskObjectProxy::GetPropertyEnumerator()
{
    if (m_pObject)
        return m_pObject->GetPropertyEnumerator();
    ReportDefunct();
    return new CVeskNullPropertyEnum();
}

// Enumerators -------------------------------------------------------------------------------------

void CVeskNullPropertyEnum::Reset() {}

int CVeskNullPropertyEnum::Next(CDorlString*, CDorlString*, CDorlString*, ReadOnlyStatus*)
{
    return 0;
}

int CVeskNullPropertyEnum::GetCurrentValue(CVeskGenericData**) { return 0; }

void CVeskNullPropertyEnum::Delete() { delete this; }

void CVeskFunctionObjPropEnum::Reset() { m_nIndex = 0; }

int CVeskFunctionObjPropEnum::Next(CDorlString* pName, CDorlString* pDescription,
                                   CDorlString* pType, ReadOnlyStatus* pStatus)
{
    switch (m_nIndex) {
    case 0:
        *pName = "name";
        *pDescription = "Name of the function";
        break;
    case 1:
        *pName = "description";
        *pDescription = "Description of the function";
        break;
    default:
        return 0;
    }
    *pType = "String";
    *pStatus = ReadOnly;
    ++m_nIndex;
    return 1;
}

int CVeskFunctionObjPropEnum::GetCurrentValue(CVeskGenericData**) { return 0; }

void CVeskFunctionObjPropEnum::Delete() { delete this; }
