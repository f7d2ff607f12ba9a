#pragma once

#include "vesk/Command.h"
#include "vesk/InterfaceIds.h"

namespace vesk {

// "name" and "*name" ask an object of the protocol for its name.
inline bool IsNameProperty(const CDorlString& name) { return name == "name" || name == "*name"; }

// How an object that implements IVeskCommand directly answers QueryInterface: the protocol and
// IUnknown, both as the object itself, and nothing else.
inline HRESULT QueryCommandInterface(IVeskCommand* object, REFIID iid, void** ppv)
{
    if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IVeskCommand))
        return E_NOINTERFACE;
    *ppv = object;
    object->AddRef();
    return S_OK;
}

} // namespace vesk
