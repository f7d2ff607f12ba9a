#pragma once

// IDispatch and what its declaration needs. The VARIANT record itself and the type information
// interfaces are declared with the automation bridge; here they are only named.

#include "standin/Unknown.h"

typedef OLECHAR* BSTR;
typedef OLECHAR* LPOLESTR;

struct tagVARIANT;
typedef tagVARIANT VARIANT;
typedef tagVARIANT VARIANTARG;

struct ITypeInfo;

struct DISPPARAMS {
    VARIANTARG* rgvarg;
    DISPID* rgdispidNamedArgs;
    UINT cArgs;
    UINT cNamedArgs;
};

struct EXCEPINFO {
    WORD wCode;
    WORD wReserved;
    BSTR bstrSource;
    BSTR bstrDescription;
    BSTR bstrHelpFile;
    DWORD dwHelpContext;
    void* pvReserved;
    HRESULT(STDMETHODCALLTYPE* pfnDeferredFillIn)(EXCEPINFO*);
    SCODE scode;
};

constexpr WORD DISPATCH_METHOD = 0x1;
constexpr WORD DISPATCH_PROPERTYGET = 0x2;
constexpr WORD DISPATCH_PROPERTYPUT = 0x4;
constexpr WORD DISPATCH_PROPERTYPUTREF = 0x8;

constexpr DISPID DISPID_UNKNOWN = -1;
constexpr DISPID DISPID_VALUE = 0;
constexpr DISPID DISPID_PROPERTYPUT = -3;

extern "C" STANDIN_API const IID IID_IDispatch;
extern "C" STANDIN_API const IID IID_NULL;

struct IDispatch : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* pctinfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT iTInfo, LCID lcid, ITypeInfo** ppTInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* rgszNames, UINT cNames,
                                                    LCID lcid, DISPID* rgDispId) = 0;
    virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID dispIdMember, REFIID riid, LCID lcid,
                                             WORD wFlags, DISPPARAMS* pDispParams,
                                             VARIANT* pVarResult, EXCEPINFO* pExcepInfo,
                                             UINT* puArgErr) = 0;

protected:
    ~IDispatch() = default;
};
