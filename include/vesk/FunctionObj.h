#pragma once

// Small counted objects that answer the call protocol without the interface-map machinery: the
// do-nothing base, a named function, a wrapped free function, and a proxy that can outlive the
// object it stands for.

#include <dorl/DorlString.h>

#include "vesk/Command.h"
#include "vesk/VeskExport.h"

class VESK_API CVeskSimpleCommandObject : public IVeskCommand {
public:
    CVeskSimpleCommandObject();

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppv) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    CVeskGenericData* STDMETHODCALLTYPE GetProperty(const CDorlString& name, int bByRef) override;
    int STDMETHODCALLTYPE SetProperty(const CDorlString& name, CVeskGenericData* value) override;
    int STDMETHODCALLTYPE CallMethod(CVeskCommandContext* context) override;
    CVeskPropertyEnum* STDMETHODCALLTYPE GetPropertyEnumerator() override;

    virtual ~CVeskSimpleCommandObject();

protected:
    LONG m_nRefCount;
};

// A function with a name and a description; a concrete function overrides CallMethod.
class VESK_API CVeskFunctionObj : public CVeskSimpleCommandObject {
public:
    CVeskFunctionObj(const CDorlString& name, const CDorlString& description);

    CVeskGenericData* STDMETHODCALLTYPE GetProperty(const CDorlString& name, int bByRef) override;
    CVeskPropertyEnum* STDMETHODCALLTYPE GetPropertyEnumerator() override;

    CDorlString m_sName;
    CDorlString m_sDescription;
};

class VESK_API CVeskFreeFunctionObj : public CVeskFunctionObj {
public:
    typedef int (*Function)(CVeskCommandContext* context);

    CVeskFreeFunctionObj(const CDorlString& name, const CDorlString& description,
                         Function pfnFunction);

    int STDMETHODCALLTYPE CallMethod(CVeskCommandContext* context) override;

    Function m_pfnFunction;
};

// Stands for an object without holding a reference on it. The object's owner hands the proxy
// out in its place and calls ClearObject before the object goes; from then on the proxy is a
// ghost that complains about every use.
class VESK_API CVeskObjectProxy : public CVeskSimpleCommandObject {
public:
    CVeskObjectProxy(IVeskCommand* pObject, const CDorlString& name);

    void ClearObject();

    CVeskGenericData* STDMETHODCALLTYPE GetProperty(const CDorlString& name, int bByRef) override;
    int STDMETHODCALLTYPE SetProperty(const CDorlString& name, CVeskGenericData* value) override;
    int STDMETHODCALLTYPE CallMethod(CVeskCommandContext* context) override;
    CVeskPropertyEnum* STDMETHODCALLTYPE GetPropertyEnumerator() override;

    IVeskCommand* m_pObject;
    CDorlString m_sName;

private:
    void ReportDefunct() const;
};

class VESK_API CVeskNullPropertyEnum : public CVeskPropertyEnum {
public:
    void Reset() override;
    int Next(CDorlString* pName, CDorlString* pDescription, CDorlString* pType,
             ReadOnlyStatus* pStatus) override;
    int GetCurrentValue(CVeskGenericData** ppValue) override;
    void Delete() override;
};

class VESK_API CVeskFunctionObjPropEnum : public CVeskPropertyEnum {
public:
    void Reset() override;
    int Next(CDorlString* pName, CDorlString* pDescription, CDorlString* pType,
             ReadOnlyStatus* pStatus) override;
    int GetCurrentValue(CVeskGenericData** ppValue) override;
    void Delete() override;

private:
    int m_nIndex = 0;
};
