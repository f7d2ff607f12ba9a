#pragma once

// Property maps: a class publishes its members and methods to the call protocol by declaring one
// static table, which answers GetProperty, SetProperty and GetPropertyEnumerator for every
// instance. The class body declares the map:
//
//     class CThermostat : public CVeskComponent {
//         VESK_DECLARE_PROPERTY_MAP(CThermostat)
//     public:
//         CThermostat() : CVeskComponent("thermostat") { VESK_FILL_PROPERTY_MAP(); }
//         ...
//     };
//
// and its source holds the table, one line per name, the base class named once so that names
// this class does not know go on to it:
//
//     VESK_BEGIN_PROPERTY_MAP(CThermostat, CVeskComponent)
//         VESK_STRING_PROPERTY("room", m_sRoom, VeskReadWrite)
//         VESK_DOUBLE_PROPERTY("target", m_dTarget, VeskReadWrite)
//         VESK_NOTIFIED_BOOLEAN_PROPERTY("heating", Heating)
//         VESK_FUNCTION_PROPERTY("Adjust", Adjust)
//     VESK_END_PROPERTY_MAP()
//
// Each entry's description is its member as written, "&CThermostat::m_sRoom". The map is filled
// by the first constructor of the class, once per process, and only read afterwards.

#include <map>

#include <dorl/DorlString.h>
#include <standin/Unknown.h>

#include "vesk/COMObject.h"
#include "vesk/Command.h"
#include "vesk/FunctionObj.h"
#include "vesk/GdObject.h"
#include "vesk/GenericData.h"
#include "vesk/VeskExport.h"

class CVeskCommandContext;

// Maps and iterators --------------------------------------------------------------------------

class CVeskVoidPtrMapIterator;

// Names to items in ascending key order. Which items it owns, and how they go, is DeleteItem's.
class VESK_API CVeskVoidPtrMap {
public:
    typedef std::map<CDorlString, void*> Entries;

    CVeskVoidPtrMap();
    virtual ~CVeskVoidPtrMap();
    CVeskVoidPtrMap(const CVeskVoidPtrMap&) = delete;
    CVeskVoidPtrMap& operator=(const CVeskVoidPtrMap&) = delete;

    virtual void DeleteItem(void* item) = 0;

    // An item already under the name is deleted and replaced.
    void Set(const CDorlString& name, void* item);
    void* Lookup(const CDorlString& name) const;
    CVeskVoidPtrMapIterator GetIterator();
    // Deletes every item in key order and leaves the map empty.
    void DeleteAllItems();

    Entries m_Entries;
};

// A position in a map; owns nothing. The map must not change while the iterator is in use.
class VESK_API CVeskVoidPtrMapIterator {
public:
    explicit CVeskVoidPtrMapIterator(CVeskVoidPtrMap& map);

    void Reset();
    int IsEnd() const;
    void Next();
    const CDorlString& Name() const;
    void* Value() const;

private:
    CVeskVoidPtrMap* m_pMap;
    CVeskVoidPtrMap::Entries::iterator m_Position;
};

// Owns its items and deletes them through their virtual destructor.
template <class T> class CVeskPtrMap : public CVeskVoidPtrMap {
public:
    CVeskPtrMap() = default;
    ~CVeskPtrMap() override { DeleteAllItems(); }

    void DeleteItem(void* item) override { delete static_cast<T*>(item); }
    T* Lookup(const CDorlString& name) const
    {
        return static_cast<T*>(CVeskVoidPtrMap::Lookup(name));
    }
};

// Conversions between native members and values ------------------------------------------------
//
// A Get yields a new value for the caller, or null when bByRef asks for a reference: a member
// has no storage that an indirect value could point to. A Set yields 1 when it wrote the
// target; 0, with the target untouched, when bReadOnly is set or the value is of another type.

VESK_API CVeskGenericData* CVeskStringPropertyGet(const CDorlString& value, int bByRef);
VESK_API int CVeskStringPropertySet(CVeskGenericData* value, CDorlString* pTarget, int bReadOnly);
VESK_API CVeskGenericData* CVeskBooleanPropertyGet(int value, int bByRef);
VESK_API int CVeskBooleanPropertySet(CVeskGenericData* value, int* pTarget, int bReadOnly);
VESK_API CVeskGenericData* CVeskDoublePropertyGet(double value, int bByRef);
VESK_API int CVeskDoublePropertySet(CVeskGenericData* value, double* pTarget, int bReadOnly);
// A null pointer reads as Null, never as an empty object value.
VESK_API CVeskGenericData* CVeskInterfacePropertyGet(IUnknown* value, int bByRef);
// Accepts an Object that yields iid (from itself or its property sProperty), or Null, which
// clears the target. The target takes the new interface's reference and releases its old one.
VESK_API int CVeskInterfacePropertySet(CVeskGenericData* value, const GUID& iid,
                                       const CDorlString& sProperty, IUnknown** ppTarget,
                                       int bReadOnly);

VESK_API CDorlString CVeskGetStringPropertyType();
VESK_API CDorlString CVeskGetBooleanPropertyType();
VESK_API CDorlString CVeskGetDoublePropertyType();
VESK_API CDorlString CVeskGetFunctionPropertyType();
VESK_API CDorlString CVeskGetGeneralPropertyType();
// The interface's registered name, followed by "(sProperty)" when sProperty is not empty.
VESK_API CDorlString CVeskGetInterfacePropertyType(const GUID& iid, const CDorlString& sProperty);

// The last argument of a member entry: whether SetProperty may write the member.
enum VeskPropertyAccess { VeskReadWrite = 0, VeskReadOnly = 1 };

// Entries ---------------------------------------------------------------------------------------

class VESK_API CVeskPropertyDescriptor {
public:
    // status: 0 ReadOnly, 1 ReadWrite, 2 Notified.
    CVeskPropertyDescriptor(const CDorlString& description, int status);

    virtual CDorlString GetType() = 0;

    void DescribeProperty(CDorlString* pDescription, CDorlString* pType,
                          CVeskPropertyEnum::ReadOnlyStatus* pStatus);
    // A Notified property is not read-only: its function decides.
    int IsReadOnly() const;

    CDorlString m_sDescription;
    int m_eStatus;

protected:
    ~CVeskPropertyDescriptor() = default;
};

template <class T> class CVeskPropertyMapItem : public CVeskPropertyDescriptor {
public:
    using CVeskPropertyDescriptor::CVeskPropertyDescriptor;
    virtual ~CVeskPropertyMapItem() = default;

    // A new reference, or null.
    virtual CVeskGenericData* Get(T* pObject, int bByRef) = 0;
    // Above 0 when written.
    virtual int Set(T*, CVeskGenericData*) { return 0; }
};

// Status 0 for read-only entries, else 1.
inline int VeskMemberStatus(int bReadOnly) { return bReadOnly ? 0 : 1; }

template <class T> class CVeskStringPropertyMapItem : public CVeskPropertyMapItem<T> {
public:
    typedef CDorlString T::*Member;
    CVeskStringPropertyMapItem(Member member, int bReadOnly, const CDorlString& description)
        : CVeskPropertyMapItem<T>(description, VeskMemberStatus(bReadOnly)), m_pMember(member)
    {}
    CDorlString GetType() override { return CVeskGetStringPropertyType(); }
    CVeskGenericData* Get(T* pObject, int bByRef) override
    {
        return CVeskStringPropertyGet(pObject->*m_pMember, bByRef);
    }
    int Set(T* pObject, CVeskGenericData* value) override
    {
        return CVeskStringPropertySet(value, &(pObject->*m_pMember), this->IsReadOnly());
    }
    Member m_pMember;
};

template <class T> class CVeskBooleanPropertyMapItem : public CVeskPropertyMapItem<T> {
public:
    typedef int T::*Member;
    CVeskBooleanPropertyMapItem(Member member, int bReadOnly, const CDorlString& description)
        : CVeskPropertyMapItem<T>(description, VeskMemberStatus(bReadOnly)), m_pMember(member)
    {}
    CDorlString GetType() override { return CVeskGetBooleanPropertyType(); }
    CVeskGenericData* Get(T* pObject, int bByRef) override
    {
        return CVeskBooleanPropertyGet(pObject->*m_pMember, bByRef);
    }
    int Set(T* pObject, CVeskGenericData* value) override
    {
        return CVeskBooleanPropertySet(value, &(pObject->*m_pMember), this->IsReadOnly());
    }
    Member m_pMember;
};

template <class T> class CVeskDoublePropertyMapItem : public CVeskPropertyMapItem<T> {
public:
    typedef double T::*Member;
    CVeskDoublePropertyMapItem(Member member, int bReadOnly, const CDorlString& description)
        : CVeskPropertyMapItem<T>(description, VeskMemberStatus(bReadOnly)), m_pMember(member)
    {}
    CDorlString GetType() override { return CVeskGetDoublePropertyType(); }
    CVeskGenericData* Get(T* pObject, int bByRef) override
    {
        return CVeskDoublePropertyGet(pObject->*m_pMember, bByRef);
    }
    int Set(T* pObject, CVeskGenericData* value) override
    {
        return CVeskDoublePropertySet(value, &(pObject->*m_pMember), this->IsReadOnly());
    }
    Member m_pMember;
};

// The member holds one reference on its interface, or null.
template <class T> class CVeskInterfacePropertyMapItem : public CVeskPropertyMapItem<T> {
public:
    typedef IUnknown* T::*Member;
    CVeskInterfacePropertyMapItem(Member member, const GUID& iid, const CDorlString& sProperty,
                                  int bReadOnly, const CDorlString& description)
        : CVeskPropertyMapItem<T>(description, VeskMemberStatus(bReadOnly)), m_iid(iid),
          m_sProperty(sProperty), m_pMember(member)
    {}
    CDorlString GetType() override { return CVeskGetInterfacePropertyType(m_iid, m_sProperty); }
    CVeskGenericData* Get(T* pObject, int bByRef) override
    {
        return CVeskInterfacePropertyGet(pObject->*m_pMember, bByRef);
    }
    int Set(T* pObject, CVeskGenericData* value) override
    {
        return CVeskInterfacePropertySet(value, m_iid, m_sProperty, &(pObject->*m_pMember),
                                         this->IsReadOnly());
    }
    const GUID& m_iid;
    CDorlString m_sProperty;
    Member m_pMember;
};

template <class T> class CVeskClassFunctionObj;

// A method. Its function-object half carries the name and description that a script reads from
// the function objects it hands out; the item itself is never handed out.
template <class T>
class CVeskFunctionPropertyMapItem : public CVeskPropertyMapItem<T>, public CVeskFunctionObj {
public:
    typedef int (T::*Method)(CVeskCommandContext* context);
    CVeskFunctionPropertyMapItem(const CDorlString& name, Method method,
                                 const CDorlString& description)
        : CVeskPropertyMapItem<T>(description, CVeskPropertyEnum::ReadOnly),
          CVeskFunctionObj(name, description), m_pfnMethod(method)
    {}
    CDorlString GetType() override { return CVeskGetFunctionPropertyType(); }
    // An Object value holding a function bound to pObject; it keeps pObject alive.
    CVeskGenericData* Get(T* pObject, int bByRef) override
    {
        if (bByRef)
            return nullptr;
        CVeskClassFunctionObj<T>* function = new CVeskClassFunctionObj<T>(this, pObject);
        CVeskGenericData* value = CVeskGdObject::Allocate(function, 1);
        function->Release(); // the value holds the only reference now
        return value;
    }
    Method m_pfnMethod;
};

// The function reads the member into *pValue with bSet 0 (non-zero: there is a value) and takes
// *pValue with bSet 1.
template <class T> class CVeskNotifiedBooleanPropertyMapItem : public CVeskPropertyMapItem<T> {
public:
    typedef int (T::*Function)(int* pValue, int bSet);
    CVeskNotifiedBooleanPropertyMapItem(Function function, const CDorlString& description)
        : CVeskPropertyMapItem<T>(description, CVeskPropertyEnum::Notified), m_pfnFunction(function)
    {}
    CDorlString GetType() override { return CVeskGetBooleanPropertyType(); }
    CVeskGenericData* Get(T* pObject, int bByRef) override
    {
        if (bByRef)
            return nullptr;
        int bValue = 0;
        if (!(pObject->*m_pfnFunction)(&bValue, 0))
            return CVeskGdNone::Allocate();
        return CVeskGdBoolean::Allocate(bValue);
    }
    int Set(T* pObject, CVeskGenericData* value) override
    {
        if (value->GetType() != CVeskGenericData::dtBoolean)
            return 0;
        int bValue = static_cast<CVeskGdBoolean*>(value)->m_bValue;
        return (pObject->*m_pfnFunction)(&bValue, 1);
    }
    Function m_pfnFunction;
};

// On a read the function finds a None in *ppValue and may replace it with a value of its own,
// releasing the None; what it leaves there goes to the caller. On a write *ppValue is the
// caller's value, lent without a reference: the function takes one if it keeps the value.
template <class T> class CVeskNotifiedGenericDataPropertyMapItem : public CVeskPropertyMapItem<T> {
public:
    typedef int (T::*Function)(CVeskGenericData** ppValue, int bSet);
    CVeskNotifiedGenericDataPropertyMapItem(Function function, const CDorlString& description)
        : CVeskPropertyMapItem<T>(description, CVeskPropertyEnum::Notified), m_pfnFunction(function)
    {}
    CDorlString GetType() override { return CVeskGetGeneralPropertyType(); }
    CVeskGenericData* Get(T* pObject, int bByRef) override
    {
        if (bByRef)
            return nullptr;
        CVeskGenericData* local = CVeskGdNone::Allocate();
        (pObject->*m_pfnFunction)(&local, 0);
        return local;
    }
    int Set(T* pObject, CVeskGenericData* value) override
    {
        CVeskGenericData* local = value;
        return (pObject->*m_pfnFunction)(&local, 1);
    }
    Function m_pfnFunction;
};

// On a read the function hands over a reference in *ppValue (null reads as Null; a result of 0
// as None). On a write it is lent the interface and takes its own reference if it keeps it.
template <class T> class CVeskNotifiedInterfacePropertyMapItem : public CVeskPropertyMapItem<T> {
public:
    typedef int (T::*Function)(IUnknown** ppValue, int bSet);
    CVeskNotifiedInterfacePropertyMapItem(Function function, const GUID& iid,
                                          const CDorlString& sProperty,
                                          const CDorlString& description)
        : CVeskPropertyMapItem<T>(description, CVeskPropertyEnum::Notified), m_iid(iid),
          m_sProperty(sProperty), m_pfnFunction(function)
    {}
    CDorlString GetType() override { return CVeskGetInterfacePropertyType(m_iid, m_sProperty); }
    CVeskGenericData* Get(T* pObject, int bByRef) override
    {
        if (bByRef)
            return nullptr;
        IUnknown* local = nullptr;
        if (!(pObject->*m_pfnFunction)(&local, 0))
            return CVeskGdNone::Allocate();
        if (!local)
            return CVeskGdNull::Allocate();
        CVeskGenericData* value = CVeskGdObject::Allocate(local, 0);
        local->Release();
        return value;
    }
    int Set(T* pObject, CVeskGenericData* value) override
    {
        IUnknown* local = nullptr;
        if (!CVeskInterfacePropertySet(value, m_iid, m_sProperty, &local, 0))
            return 0;
        (pObject->*m_pfnFunction)(&local, 1);
        if (local)
            local->Release();
        return 1;
    }
    const GUID& m_iid;
    CDorlString m_sProperty;
    Function m_pfnFunction;
};

// What a function property hands out: the method bound to one object, which it keeps alive by
// an external reference. Name and description come from the map's item.
template <class T> class CVeskClassFunctionObj : public CVeskSimpleCommandObject {
public:
    CVeskClassFunctionObj(CVeskFunctionPropertyMapItem<T>* pItem, T* pObject)
        : m_pObject(pObject), m_pItem(pItem)
    {
        m_pObject->ExternalAddRef();
    }
    ~CVeskClassFunctionObj() override { m_pObject->ExternalRelease(); }

    CVeskGenericData* STDMETHODCALLTYPE GetProperty(const CDorlString& name, int bByRef) override
    {
        return static_cast<CVeskFunctionObj*>(m_pItem)->GetProperty(name, bByRef);
    }
    int STDMETHODCALLTYPE CallMethod(CVeskCommandContext* context) override
    {
        return (m_pObject->*(m_pItem->m_pfnMethod))(context);
    }

    T* m_pObject;
    CVeskFunctionPropertyMapItem<T>* m_pItem; // the map's, not owned
};

// The map and its enumerator ----------------------------------------------------------------

// Lists one map in key order, then whatever enumerator it was given for the base classes.
template <class T> class CVeskPropertyMapEnumerator : public CVeskPropertyEnum {
public:
    // Takes over pNext, which may be null.
    CVeskPropertyMapEnumerator(CVeskVoidPtrMap& map, CVeskPropertyEnum* pNext)
        : m_pNext(pNext), m_Iterator(map)
    {
        Reset();
    }

    void Reset() override
    {
        m_Iterator.Reset();
        if (m_pNext)
            m_pNext->Reset();
    }
    int Next(CDorlString* pName, CDorlString* pDescription, CDorlString* pType,
             ReadOnlyStatus* pStatus) override
    {
        if (m_Iterator.IsEnd())
            return m_pNext ? m_pNext->Next(pName, pDescription, pType, pStatus) : 0;
        *pName = m_Iterator.Name();
        static_cast<CVeskPropertyMapItem<T>*>(m_Iterator.Value())
            ->DescribeProperty(pDescription, pType, pStatus);
        m_Iterator.Next();
        return 1;
    }
    int GetCurrentValue(CVeskGenericData**) override { return 0; }
    void Delete() override
    {
        if (m_pNext)
            m_pNext->Delete();
        delete this;
    }

    CVeskPropertyEnum* m_pNext;
    CVeskVoidPtrMapIterator m_Iterator;
};

template <class T> class CVeskPropertyMap {
public:
    typedef CVeskPropertyMapItem<T> Item;

    // Null when the name is not in the map.
    virtual CVeskGenericData* GetProperty(T* pObject, const CDorlString& name, int bByRef)
    {
        Item* item = m_Items.Lookup(name);
        return item ? item->Get(pObject, bByRef) : nullptr;
    }
    // -1 when the name is not in the map, so that the caller asks its base class; 0 when the
    // map knows the name and refused the value; 1 when written.
    virtual int SetProperty(T* pObject, const CDorlString& name, CVeskGenericData* value)
    {
        Item* item = m_Items.Lookup(name);
        if (!item)
            return -1;
        return item->Set(pObject, value) > 0 ? 1 : 0;
    }
    // Takes over pNext, the enumerator of the base classes, which may be null.
    CVeskPropertyEnum* GetEnumerator(CVeskPropertyEnum* pNext)
    {
        return new CVeskPropertyMapEnumerator<T>(m_Items, pNext);
    }

    // Registration, used while the map is filled; a name registered twice keeps the last item.
    void Register(const CDorlString& name, Item* item) { m_Items.Set(name, item); }
    void AddString(const CDorlString& name, CDorlString T::*member, int bReadOnly,
                   const CDorlString& description)
    {
        Register(name, new CVeskStringPropertyMapItem<T>(member, bReadOnly, description));
    }
    void AddBoolean(const CDorlString& name, int T::*member, int bReadOnly,
                    const CDorlString& description)
    {
        Register(name, new CVeskBooleanPropertyMapItem<T>(member, bReadOnly, description));
    }
    void AddDouble(const CDorlString& name, double T::*member, int bReadOnly,
                   const CDorlString& description)
    {
        Register(name, new CVeskDoublePropertyMapItem<T>(member, bReadOnly, description));
    }
    void AddInterface(const CDorlString& name, IUnknown* T::*member, const GUID& iid,
                      const CDorlString& sProperty, int bReadOnly, const CDorlString& description)
    {
        Register(name, new CVeskInterfacePropertyMapItem<T>(member, iid, sProperty, bReadOnly,
                                                            description));
    }
    void AddFunction(const CDorlString& name,
                     typename CVeskFunctionPropertyMapItem<T>::Method method,
                     const CDorlString& description)
    {
        Register(name, new CVeskFunctionPropertyMapItem<T>(name, method, description));
    }
    void AddNotifiedBoolean(const CDorlString& name,
                            typename CVeskNotifiedBooleanPropertyMapItem<T>::Function function,
                            const CDorlString& description)
    {
        Register(name, new CVeskNotifiedBooleanPropertyMapItem<T>(function, description));
    }
    void
    AddNotifiedGenericData(const CDorlString& name,
                           typename CVeskNotifiedGenericDataPropertyMapItem<T>::Function function,
                           const CDorlString& description)
    {
        Register(name, new CVeskNotifiedGenericDataPropertyMapItem<T>(function, description));
    }
    void AddNotifiedInterface(const CDorlString& name,
                              typename CVeskNotifiedInterfacePropertyMapItem<T>::Function function,
                              const GUID& iid, const CDorlString& sProperty,
                              const CDorlString& description)
    {
        Register(name, new CVeskNotifiedInterfacePropertyMapItem<T>(function, iid, sProperty,
                                                                    description));
    }

    CVeskPtrMap<Item> m_Items;
};

// Runs pfnFill and then sets *pbFilled, unless *pbFilled is already set. Threads that construct
// the first instances of a class at once wait for the one that fills; afterwards the flag is
// read without a lock.
VESK_API void VeskFillPropertyMap(int* pbFilled, void (*pfnFill)());

// Declaring macros ------------------------------------------------------------------------------

// In the class body: the map, its flag and the three protocol operations, which ask the map and
// then the base class. Leaves the access public.
#define VESK_DECLARE_PROPERTY_MAP(Class)                                                           \
    VESK_DECLARE_PROPERTY_TABLE(Class)                                                             \
public:                                                                                            \
    CVeskGenericData* GetProperty(const CDorlString& name, int bByRef) override;                   \
    int SetProperty(const CDorlString& name, CVeskGenericData* value) override;                    \
    CVeskPropertyEnum* GetPropertyEnumerator() override;

// The statics alone, for a class that writes the protocol operations itself.
#define VESK_DECLARE_PROPERTY_TABLE(Class)                                                         \
public:                                                                                            \
    typedef Class _VeskPropertyClass;                                                              \
                                                                                                   \
protected:                                                                                         \
    static CVeskPropertyMap<Class> sm_PropertyMap;                                                 \
    static int sm_bPropertyMapFilled;                                                              \
    static void _FillPropertyMap();

// In every constructor of the class.
#define VESK_FILL_PROPERTY_MAP() VeskFillPropertyMap(&sm_bPropertyMapFilled, &_FillPropertyMap)

// In the source: the statics, and the function that fills the map, entries in between.
#define VESK_BEGIN_PROPERTY_TABLE(Class)                                                           \
    CVeskPropertyMap<Class> Class::sm_PropertyMap;                                                 \
    int Class::sm_bPropertyMapFilled = 0;                                                          \
    void Class::_FillPropertyMap()                                                                 \
    {                                                                                              \
        const CDorlString _sVeskMemberPrefix("&" #Class "::");

// As the table, with the protocol operations that pass unknown names on to Base.
#define VESK_BEGIN_PROPERTY_MAP(Class, Base)                                                       \
    CVeskGenericData* Class::GetProperty(const CDorlString& name, int bByRef)                      \
    {                                                                                              \
        CVeskGenericData* value = sm_PropertyMap.GetProperty(this, name, bByRef);                  \
        return value ? value : Base::GetProperty(name, bByRef);                                    \
    }                                                                                              \
    int Class::SetProperty(const CDorlString& name, CVeskGenericData* value)                       \
    {                                                                                              \
        int result = sm_PropertyMap.SetProperty(this, name, value);                                \
        if (result == -1)                                                                          \
            return Base::SetProperty(name, value);                                                 \
        return result == 1 ? 1 : 0;                                                                \
    }                                                                                              \
    CVeskPropertyEnum* Class::GetPropertyEnumerator()                                              \
    {                                                                                              \
        return sm_PropertyMap.GetEnumerator(Base::GetPropertyEnumerator());                        \
    }                                                                                              \
    VESK_BEGIN_PROPERTY_TABLE(Class)

#define VESK_END_PROPERTY_MAP() }

// Entries. bReadOnly is VeskReadOnly or VeskReadWrite; member and function are names of the
// class, without the class.
#define VESK_STRING_PROPERTY(name, member, bReadOnly)                                              \
    sm_PropertyMap.AddString(name, &_VeskPropertyClass::member, bReadOnly,                         \
                             _sVeskMemberPrefix + #member);
#define VESK_BOOLEAN_PROPERTY(name, member, bReadOnly)                                             \
    sm_PropertyMap.AddBoolean(name, &_VeskPropertyClass::member, bReadOnly,                        \
                              _sVeskMemberPrefix + #member);
#define VESK_DOUBLE_PROPERTY(name, member, bReadOnly)                                              \
    sm_PropertyMap.AddDouble(name, &_VeskPropertyClass::member, bReadOnly,                         \
                             _sVeskMemberPrefix + #member);
#define VESK_INTERFACE_PROPERTY(name, member, iid, sProperty, bReadOnly)                           \
    sm_PropertyMap.AddInterface(name, &_VeskPropertyClass::member, iid, sProperty, bReadOnly,      \
                                _sVeskMemberPrefix + #member);
#define VESK_FUNCTION_PROPERTY(name, function)                                                     \
    sm_PropertyMap.AddFunction(name, &_VeskPropertyClass::function, _sVeskMemberPrefix + #function);
#define VESK_NOTIFIED_BOOLEAN_PROPERTY(name, function)                                             \
    sm_PropertyMap.AddNotifiedBoolean(name, &_VeskPropertyClass::function,                         \
                                      _sVeskMemberPrefix + #function);
#define VESK_NOTIFIED_GD_PROPERTY(name, function)                                                  \
    sm_PropertyMap.AddNotifiedGenericData(name, &_VeskPropertyClass::function,                     \
                                          _sVeskMemberPrefix + #function);
#define VESK_NOTIFIED_INTERFACE_PROPERTY(name, function, iid, sProperty)                           \
    sm_PropertyMap.AddNotifiedInterface(name, &_VeskPropertyClass::function, iid, sProperty,       \
                                        _sVeskMemberPrefix + #function);
