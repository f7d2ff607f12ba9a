#pragma once

// IUnknown: the root of every interface, with the platform's slot order.

#include "standin/Types.h"

extern "C" STANDIN_API const IID IID_IUnknown;

struct IUnknown {
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppv) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;

protected:
    // Interfaces are released, never deleted through.
    ~IUnknown() = default;
};

// There are no remote proxies in this process model, so there is nothing to disconnect; the call
// exists so that code written for the platform reads and links unchanged.
STANDIN_API HRESULT CoDisconnectObject(IUnknown* pUnknown, DWORD reserved);
