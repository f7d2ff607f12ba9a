#pragma once

// Counted objects that implement interfaces through embedded objects and per-class interface
// maps, with aggregation in both directions.
//
// A class declares its face in its header:
//
//     class CThing : public CVeskCOMObject {
//         VESK_DECLARE_INTERFACE_MAP(CThing)
//
//         VESK_BEGIN_INTERFACE_PART(VeskCounter, IVeskCounter)
//             long STDMETHODCALLTYPE Next() override;   // calls Owner()->...
//         VESK_END_INTERFACE_PART(VeskCounter)
//         ...
//     };
//
// and its table in its source, one line per interface, derived classes first in the search:
//
//     VESK_BEGIN_INTERFACE_MAP(CThing, CVeskCOMObject)
//         VESK_INTERFACE(IID_IVeskCounter, VeskCounter)
//         VESK_AGGREGATE(m_pInner)                      // an aggregated IUnknown * member
//     VESK_END_INTERFACE_MAP()
//
// An embedded object X<Stem>Obj is the member m_x<Stem>. Its IUnknown operations go to the owner's
// External forms; Owner() finds the owner from the member's offset, the same offset the map
// holds. CVeskCOMObject must be the first base of the class chain, so that every map's offsets
// count from the start of the object.

#include <cstddef>
#include <cstdint>

#include <standin/Unknown.h>

#include "vesk/VeskExport.h"

struct _VeskCOM_IF_MapEntry {
    const IID* piid; // null for an aggregate and for the end mark
    int32_t nOffset; // from the start of the object; -1 marks the end
};

struct _VeskCOM_IF_Map {
    const _VeskCOM_IF_Map* (*pfnGetBaseMap)(); // null at the root
    const _VeskCOM_IF_MapEntry* pEntry;
};

class VESK_API CVeskCOMObject {
public:
    typedef void (*DebugCallback)(int bAddRef, int nRefCount);

    CVeskCOMObject();
    virtual ~CVeskCOMObject();
    CVeskCOMObject(const CVeskCOMObject&) = delete;
    CVeskCOMObject& operator=(const CVeskCOMObject&) = delete;

    // At the last release: deletes the object unless SetLock holds it.
    virtual void OnFinalRelease();
    virtual const _VeskCOM_IF_Map* GetInterfaceMap() const;
    virtual int OnCreateAggregates();
    // A first chance to answer an interface request, before the maps; null to pass.
    virtual void* GetInterfaceHook(const void* iid);

    HRESULT QueryInterface(const void* iid, void** ppv);
    ULONG AddRef();
    ULONG Release();

    // Through the controlling object when this one is aggregated, else the Internal forms.
    HRESULT ExternalQueryInterface(const void* iid, void** ppv);
    ULONG ExternalAddRef();
    ULONG ExternalRelease();

    HRESULT InternalQueryInterface(const void* iid, void** ppv);
    ULONG InternalAddRef();
    ULONG InternalRelease();

    // The interface from the maps, without a reference; null when the object has none.
    void* GetInterface(const void* iid);
    // The interface from an aggregated inner object, with a reference; or null.
    IUnknown* QueryAggregates(const void* iid);
    // No reference is taken.
    IUnknown* GetControllingUnknown();
    // Makes the inner unknown live, so that an outer object can aggregate this one. Called
    // from the constructor of a class that allows it.
    void EnableAggregation();
    // Cuts the object off: its count drops to 0 and later releases do nothing.
    void ExternalDisconnect();
    // A non-zero lock keeps the object at its last release. Yields the previous lock.
    int SetLock(int bLock);

    static void SetDebugObj(CVeskCOMObject* object);
    static void SetDebugCallback(DebugCallback callback);

    static const _VeskCOM_IF_Map interfaceMap;
    static const _VeskCOM_IF_MapEntry _interfaceEntries[];
    static const _VeskCOM_IF_Map* _GetBaseInterfaceMap();

    // The IUnknown that an aggregating outer object holds: it counts this object alone.
    class VESK_API CInnerUnknown : public IUnknown {
    public:
        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppv) override;
        ULONG STDMETHODCALLTYPE AddRef() override;
        ULONG STDMETHODCALLTYPE Release() override;

    private:
        CVeskCOMObject* Owner();
    };

protected:
    // One word, zero until EnableAggregation builds the inner unknown in it.
    union InnerUnknownSlot {
        InnerUnknownSlot() : pNotEnabled(nullptr) {}
        ~InnerUnknownSlot() {}
        void* pNotEnabled;
        CInnerUnknown object;
    };

    LONG m_dwRef;
    IUnknown* m_pOuterUnknown; // the controlling object, held without a reference
    InnerUnknownSlot m_xInnerUnknown;
    int m_nLock;
};

// The offsets of embedded objects are taken with offsetof on classes that are not of standard
// layout; every compiler this library supports lays out single-inheritance classes so that the
// offset holds, and the warning about it is silenced around the maps alone.
#define VESK_OFFSETOF_BEGIN                                                                        \
    _Pragma("GCC diagnostic push") _Pragma("GCC diagnostic ignored \"-Winvalid-offsetof\"")
#define VESK_OFFSETOF_END _Pragma("GCC diagnostic pop")

// In the class body, first: the map's statics. Leaves the access public.
#define VESK_DECLARE_INTERFACE_MAP(Class)                                                          \
public:                                                                                            \
    typedef Class _VeskThisClass;                                                                  \
    static const _VeskCOM_IF_Map interfaceMap;                                                     \
    static const _VeskCOM_IF_MapEntry _interfaceEntries[];                                         \
    static const _VeskCOM_IF_Map* _GetBaseInterfaceMap();                                          \
    const _VeskCOM_IF_Map* GetInterfaceMap() const override;

// An embedded interface object X<Stem>Obj, the member m_x<Stem>. Declare the interface's own
// operations between the two lines; Owner() gives the object they work for.
#define VESK_BEGIN_INTERFACE_PART(Stem, Interface)                                                 \
    VESK_OFFSETOF_BEGIN                                                                            \
    class X##Stem##Obj : public Interface {                                                        \
    public:                                                                                        \
        _VeskThisClass* Owner()                                                                    \
        {                                                                                          \
            return reinterpret_cast<_VeskThisClass*>(reinterpret_cast<char*>(this) -               \
                                                     offsetof(_VeskThisClass, m_x##Stem));         \
        }                                                                                          \
        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppv) override                  \
        {                                                                                          \
            return Owner()->ExternalQueryInterface(&iid, ppv);                                     \
        }                                                                                          \
        ULONG STDMETHODCALLTYPE AddRef() override { return Owner()->ExternalAddRef(); }            \
        ULONG STDMETHODCALLTYPE Release() override { return Owner()->ExternalRelease(); }

#define VESK_END_INTERFACE_PART(Stem)                                                              \
    }                                                                                              \
    m_x##Stem;                                                                                     \
    friend class X##Stem##Obj;                                                                     \
    VESK_OFFSETOF_END

// In the source: the table. Entries of interfaces first, then aggregates.
#define VESK_BEGIN_INTERFACE_MAP(Class, Base)                                                      \
    const _VeskCOM_IF_Map* Class::_GetBaseInterfaceMap() { return &Base::interfaceMap; }           \
    const _VeskCOM_IF_Map* Class::GetInterfaceMap() const { return &Class::interfaceMap; }         \
    const _VeskCOM_IF_Map Class::interfaceMap = {&Class::_GetBaseInterfaceMap,                     \
                                                 Class::_interfaceEntries};                        \
    VESK_OFFSETOF_BEGIN                                                                            \
    const _VeskCOM_IF_MapEntry Class::_interfaceEntries[] = {

#define VESK_INTERFACE(iid, Stem)                                                                  \
    {&(iid), static_cast<int32_t>(offsetof(_VeskThisClass, m_x##Stem))},

#define VESK_AGGREGATE(member) {nullptr, static_cast<int32_t>(offsetof(_VeskThisClass, member))},

#define VESK_END_INTERFACE_MAP()                                                                   \
    {                                                                                              \
        nullptr, -1                                                                                \
    }                                                                                              \
    }                                                                                              \
    ;                                                                                              \
    VESK_OFFSETOF_END
