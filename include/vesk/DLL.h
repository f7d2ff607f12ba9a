#pragma once

// The module object that each loadable module shows its host, and the counted list of objects
// it derives from. A module derives from CVeskDLL, puts its objects in the list (the list base
// is public to it) and overrides the On... operations; the library makes no instance itself.

#include <dorl/DorlList.h>
#include <dorl/DorlString.h>
#include <standin/Unknown.h>

#include "vesk/COMObject.h"
#include "vesk/InterfaceIds.h"
#include "vesk/VeskExport.h"

// A walk over a list of objects. Each cursor belongs to whoever opened it, who must close it;
// the list must not change while a cursor stands in it.
struct IVeskEnumerate : public IUnknown {
    virtual unsigned long STDMETHODCALLTYPE Open() = 0;
    // The next object, without a reference for the caller; null at the end, and ever after.
    virtual IUnknown* STDMETHODCALLTYPE Next(unsigned long handle) = 0;
    virtual void STDMETHODCALLTYPE Close(unsigned long handle) = 0;

protected:
    ~IVeskEnumerate() = default;
};

struct IVeskDLL : public IUnknown {
    // The host's object; the module takes no reference on it.
    virtual int STDMETHODCALLTYPE Startup(IUnknown* pUnknown) = 0;
    virtual int STDMETHODCALLTYPE Shutdown() = 0;
    virtual unsigned long STDMETHODCALLTYPE GetVersion() = 0;
    virtual const CDorlString& STDMETHODCALLTYPE GetName() = 0;

protected:
    ~IVeskDLL() = default;
};

// The one class of the library that can be aggregated. The list holds what its owner put in;
// the destructor empties it without releasing anything, so an owner that keeps references in it
// gives them up first (CVeskDLL does so at Shutdown).
class VESK_API CVeskEnumerate : public CVeskCOMObject, public CDorlList<IUnknown*> {
    VESK_DECLARE_INTERFACE_MAP(CVeskEnumerate)

    CVeskEnumerate();
    ~CVeskEnumerate() override;

    // A cursor on the first entry; its address is the handle.
    virtual unsigned long OnOpen();
    virtual IUnknown* OnNext(unsigned long handle);
    virtual void OnClose(unsigned long handle);

    VESK_BEGIN_INTERFACE_PART(VeskEnumerate, IVeskEnumerate)
        unsigned long STDMETHODCALLTYPE Open() override;
        IUnknown* STDMETHODCALLTYPE Next(unsigned long handle) override;
        void STDMETHODCALLTYPE Close(unsigned long handle) override;
    VESK_END_INTERFACE_PART(VeskEnumerate)
};

// Keeps no started or stopped state of its own: a second Startup overwrites the host's object,
// and Shutdown of an empty list succeeds.
class VESK_API CVeskDLL : public CVeskEnumerate {
    VESK_DECLARE_INTERFACE_MAP(CVeskDLL)

    CVeskDLL();
    ~CVeskDLL() override;

    // Stores the host's object and yields 1.
    virtual int OnStartup(IUnknown* pUnknown);
    // Releases every entry of the list once, in list order, empties it and yields 1.
    virtual int OnShutdown();
    virtual unsigned long OnGetVersion();
    virtual const CDorlString& OnGetName();

    VESK_BEGIN_INTERFACE_PART(VeskDLL, IVeskDLL)
        int STDMETHODCALLTYPE Startup(IUnknown * pUnknown) override;
        int STDMETHODCALLTYPE Shutdown() override;
        unsigned long STDMETHODCALLTYPE GetVersion() override;
        const CDorlString& STDMETHODCALLTYPE GetName() override;
    VESK_END_INTERFACE_PART(VeskDLL)

protected:
    IUnknown* m_pStartupUnknown; // held without a reference
};
