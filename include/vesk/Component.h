#pragma once

// The base of the objects that an application builds its logic from: a counted object with a
// name that answers the call protocol through its property map, can be stored in a data store
// and serialised, and carries the link by which an object that derives from it is found.
//
// A subclass declares its own map (see PropertyMap.h), which is asked before this class's, and
// overrides the On... hooks it has content for. The defaults do nothing and yield 0.

#include <dorl/DorlString.h>

#include "vesk/COMObject.h"
#include "vesk/Command.h"
#include "vesk/GdSerialiser.h"
#include "vesk/PropertyMap.h"
#include "vesk/VeskExport.h"

struct IVeskDataStore;

struct IVeskComponent : public IUnknown {
    // 1 when done, 0 when not.
    virtual int STDMETHODCALLTYPE WriteData(const CDorlString& tag, IVeskDataStore* pStore) = 0;
    virtual int STDMETHODCALLTYPE ReadData(const CDorlString& tag, IVeskDataStore* pStore) = 0;

protected:
    ~IVeskComponent() = default;
};

class VESK_API CVeskComponent : public CVeskCOMObject {
    VESK_DECLARE_INTERFACE_MAP(CVeskComponent)
    VESK_DECLARE_PROPERTY_TABLE(CVeskComponent)

public:
    // Told of every construction (bCreated 1) and destruction (0) of a component, by name.
    typedef void (*AllocationMonitor)(void* pObject, const char* name, int bCreated);

    explicit CVeskComponent(const CDorlString& name);
    ~CVeskComponent() override;

    static void SetAllocationMonitor(AllocationMonitor monitor);

    virtual int OnWriteData(const CDorlString& tag, IVeskDataStore* pStore);
    virtual int OnReadData(const CDorlString& tag, IVeskDataStore* pStore);
    // The object called as a function; 0: it cannot be.
    virtual int CallMethod(CVeskCommandContext* context);
    virtual int OnSerialise(CVeskGdSerialiser* pSerialiser);
    virtual int OnDeserialise(CVeskGdSerialiser* pSerialiser, CVeskGenericData** ppReplacement);
    // The name under which an object creator makes the object again.
    virtual CDorlString OnGetCreationName();
    virtual CVeskGenericData* GetProperty(const CDorlString& name, int bByRef);
    virtual int SetProperty(const CDorlString& name, CVeskGenericData* value);
    virtual CVeskPropertyEnum* GetPropertyEnumerator();
    // "*derived": reads the link with a reference for the caller; sets it without one.
    virtual int AsteriskDerived(IUnknown** ppValue, int bSet);
    // "*watch": a write, of any Boolean, traces this object's reference counts from then on.
    virtual int AsteriskWatch(int* pValue, int bSet);

    // "topObject": the object at the end of the chain of "derived" links, this one if none.
    int TopObject(CVeskGenericData** ppValue, int bSet);

    CDorlString m_sName;
    // The object that derives from this one; no reference is held, whoever links keeps it
    // alive and unlinks it by writing Null to "*derived".
    IUnknown* m_Derived;

    VESK_BEGIN_INTERFACE_PART(VeskCommand, IVeskCommand)
        CVeskGenericData* STDMETHODCALLTYPE GetProperty(const CDorlString& name, int bByRef)
            override;
        int STDMETHODCALLTYPE SetProperty(const CDorlString& name, CVeskGenericData* value)
            override;
        int STDMETHODCALLTYPE CallMethod(CVeskCommandContext * context) override;
        CVeskPropertyEnum* STDMETHODCALLTYPE GetPropertyEnumerator() override;
    VESK_END_INTERFACE_PART(VeskCommand)

    VESK_BEGIN_INTERFACE_PART(VeskComponent, IVeskComponent)
        int STDMETHODCALLTYPE WriteData(const CDorlString& tag, IVeskDataStore* pStore) override;
        int STDMETHODCALLTYPE ReadData(const CDorlString& tag, IVeskDataStore* pStore) override;
    VESK_END_INTERFACE_PART(VeskComponent)

    VESK_BEGIN_INTERFACE_PART(VeskSerialise, IVeskSerialise)
        int STDMETHODCALLTYPE Serialise(CVeskGdSerialiser * serialiser) override;
        int STDMETHODCALLTYPE Deserialise(CVeskGdSerialiser * serialiser,
                                          CVeskGenericData * *replacement) override;
        CDorlString STDMETHODCALLTYPE GetCreationName() override;
    VESK_END_INTERFACE_PART(VeskSerialise)

private:
    static AllocationMonitor sm_pfnAllocationMonitor;
};
