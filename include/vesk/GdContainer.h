#pragma once

// Named sets of values behind the call protocol. A container is an object, not a value: it
// reaches the value world inside a CVeskGdObject. Its properties are its entries, kept in key
// order, and a read hands out a copy so that changing what was read leaves the entry alone.
//
// VeskAssocArray is the sparse map with a default value: a key without an entry reads as the
// default, and storing the default under a key removes the entry. Names that begin with '*' and
// '_' are the array's own. All associative arrays share one re-entrant lock, taken by their
// reads, writes and serialisation; the direct operations of the container take none.

#include <map>

#include <dorl/DorlString.h>

#include "vesk/COMObject.h"
#include "vesk/Command.h"
#include "vesk/FunctionObj.h"
#include "vesk/GdSerialiser.h"
#include "vesk/GenericData.h"
#include <dorl/DorlPool.h>

class VESK_API CVeskGenericDataContainer : public CVeskCOMObject {
    VESK_DECLARE_INTERFACE_MAP(CVeskGenericDataContainer)

    VESK_BEGIN_INTERFACE_PART(Command, IVeskCommand)
        CVeskGenericData* STDMETHODCALLTYPE GetProperty(const CDorlString& name, int bByRef)
            override;
        int STDMETHODCALLTYPE SetProperty(const CDorlString& name, CVeskGenericData* value)
            override;
        int STDMETHODCALLTYPE CallMethod(CVeskCommandContext * context) override;
        CVeskPropertyEnum* STDMETHODCALLTYPE GetPropertyEnumerator() override;
    VESK_END_INTERFACE_PART(Command)

public:
    // Each entry owns one reference; no value is null.
    typedef std::map<CDorlString, CVeskGenericData*, std::less<CDorlString>,
                     CDorlPoolAllocator<std::pair<const CDorlString, CVeskGenericData*>>>
        PropertyMap;

    // With bAutoCreate, a missing name comes into being on read (as None) and on write.
    explicit CVeskGenericDataContainer(int bAutoCreate = 0);
    ~CVeskGenericDataContainer() override;

    int Size() const;
    void AddProperty(const CDorlString& name, CVeskGenericData* value);
    // Takes over the caller's reference. An entry of that name keeps its place.
    void AddPropertyNoRef(const CDorlString& name, CVeskGenericData* value);
    void AddPropertyNoRef(CDorlString&& name, CVeskGenericData* value);
    void AddObject(const CDorlString& name, IUnknown* object);
    void AddObject(const CDorlString& name, CVeskCOMObject* object);
    void AddString(const CDorlString& name, const CDorlString& value);
    void AddDouble(const CDorlString& name, double value);
    void AddBoolean(const CDorlString& name, bool value);
    void RemoveProperty(const CDorlString& name);
    void RemoveAllProperties();

    // A copy of the entry, or with bByRef an indirect onto the entry's slot, which must not be
    // used after the entry or the container is gone. Null for a missing name.
    virtual CVeskGenericData* OnGetProperty(const CDorlString& name, int bByRef);
    // 1 when an entry took the value; the caller keeps its reference.
    virtual int OnSetProperty(const CDorlString& name, CVeskGenericData* value);
    virtual int OnCallMethod(CVeskCommandContext* context);
    // Walks the entries in key order; the container must outlive it.
    virtual CVeskPropertyEnum* OnGetPropertyEnumerator();

protected:
    PropertyMap m_Properties;
    int m_bAutoCreate;
};

// Describes the entries of a container in key order and gives their stored values.
class VESK_API CVeskGenericDataContainerEnumerator : public CVeskPropertyEnum {
public:
    explicit CVeskGenericDataContainerEnumerator(CVeskGenericDataContainer::PropertyMap& map);

    void Reset() override;
    int Next(CDorlString* pName, CDorlString* pDescription, CDorlString* pType,
             ReadOnlyStatus* pStatus) override;
    // The value stored in the entry that Next gave last, with a reference; 0 before the first
    // Next and after the last.
    int GetCurrentValue(CVeskGenericData** ppValue) override;
    void Delete() override;

private:
    CVeskGenericDataContainer::PropertyMap& m_Map;
    CVeskGenericDataContainer::PropertyMap::iterator m_Position;
    CVeskGenericData* m_pCurrent; // no reference: the entry holds one
    int m_bHasCurrent;
};

class VESK_API VeskAssocArray : public CVeskGenericDataContainer {
    VESK_DECLARE_INTERFACE_MAP(VeskAssocArray)

    VESK_BEGIN_INTERFACE_PART(VeskSerialise, IVeskSerialise)
        int STDMETHODCALLTYPE Serialise(CVeskGdSerialiser * serialiser) override;
        // The array is read into itself: replacement is never set.
        int STDMETHODCALLTYPE Deserialise(CVeskGdSerialiser * serialiser,
                                          CVeskGenericData * *replacement) override;
        CDorlString STDMETHODCALLTYPE GetCreationName() override;
    VESK_END_INTERFACE_PART(VeskSerialise)

public:
    // Takes a reference on defaultValue.
    explicit VeskAssocArray(CVeskGenericData* defaultValue);
    ~VeskAssocArray() override;

    static void SetAllocationMonitor(CVeskGenericData::AllocationMonitor monitor);
    // How many entries the lock of the associative arrays holds now: 0 when no thread is in it.
    static int GetLockDepth();

    // A missing name reads as the default itself, not a copy; by reference it stays null.
    CVeskGenericData* OnGetProperty(const CDorlString& name, int bByRef) override;
    // Storing the default removes the entry; the only writable '*' name is "*default".
    int OnSetProperty(const CDorlString& name, CVeskGenericData* value) override;
    // Name and value pairs, the default first as "*default", closed by the name "*end".
    virtual int OnSerialise(CVeskGdSerialiser* serialiser);
    // Reads pairs until "*end" into this array through OnSetProperty; the entries read before
    // a failure stay.
    virtual int OnDeserialise(CVeskGdSerialiser* serialiser);
    virtual CDorlString OnGetCreationName();

protected:
    CVeskGenericData* m_poDefault; // one reference; never null

private:
    // The configuration reader fills arrays that no one else sees yet.
    friend class VeskConfigReader;

    CVeskGenericData* ReservedProperty(const CDorlString& name);
    bool IsDefault(CVeskGenericData* value);
    // OnSetProperty for an array that no other thread can reach: takes over the name and the
    // caller's reference to the value, without the lock.
    void TakeEntry(CDorlString&& name, CVeskGenericData* value);
};

// "_Exist" of an array: whether a key has an entry. Holds the array alive.
class VESK_API CVeskGdAAExistFunctionObj : public CVeskFunctionObj {
public:
    CVeskGdAAExistFunctionObj(const CDorlString& name, const CDorlString& description,
                              VeskAssocArray* array);
    ~CVeskGdAAExistFunctionObj() override;
    int STDMETHODCALLTYPE CallMethod(CVeskCommandContext* context) override;

    VeskAssocArray* m_poArray;
};

// "_ForEach" of an array: calls a predicate with each key and value, in key order. The
// predicate must not add or remove entries of the array. Holds the array alive.
class VESK_API CVeskGdAAForEachFunctionObj : public CVeskFunctionObj {
public:
    CVeskGdAAForEachFunctionObj(const CDorlString& name, const CDorlString& description,
                                VeskAssocArray* array);
    ~CVeskGdAAForEachFunctionObj() override;
    int STDMETHODCALLTYPE CallMethod(CVeskCommandContext* context) override;

    VeskAssocArray* m_poArray;
    IVeskCommand* m_poPredicate = nullptr; // held during a call

private:
    void CallPredicate();
};
