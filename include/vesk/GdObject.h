#pragma once

// A value that holds a COM object of any sort. What the protocol asks of the value goes to a
// small helper chosen by the sort of object: one that speaks IVeskCommand, one that speaks only
// IDispatch, or any other IUnknown.

#include "vesk/GenericData.h"

class CVeskCOMObject;
class CVeskGdObject;
struct IDispatch;

class VESK_API CObjectLookupHelper {
public:
    enum Kind { kindUnknown = 0, kindCommand = 1, kindDispatch = 2 };

    explicit CObjectLookupHelper(CVeskGdObject* pOwner);
    virtual ~CObjectLookupHelper();

    virtual int GetKind() = 0;
    virtual CVeskGenericData* GetProperty(const CDorlString& name, int bByRef) = 0;
    virtual int SetProperty(const CDorlString& name, CVeskGenericData* value) = 0;
    virtual int CallMethod(CVeskCommandContext* context) = 0;
    virtual CVeskPropertyEnum* GetPropertyEnumerator() = 0;

    CVeskGdObject* m_pOwner; // owns the helper; no reference is held
};

// Any object: it is only named.
class VESK_API CUnknownHelper : public CObjectLookupHelper {
public:
    using CObjectLookupHelper::CObjectLookupHelper;
    int GetKind() override;
    CVeskGenericData* GetProperty(const CDorlString& name, int bByRef) override;
    int SetProperty(const CDorlString& name, CVeskGenericData* value) override;
    int CallMethod(CVeskCommandContext* context) override;
    CVeskPropertyEnum* GetPropertyEnumerator() override;
};

// An object of the call protocol: everything is forwarded to it.
class VESK_API CVeskCommandHelper : public CObjectLookupHelper {
public:
    using CObjectLookupHelper::CObjectLookupHelper;
    int GetKind() override;
    CVeskGenericData* GetProperty(const CDorlString& name, int bByRef) override;
    int SetProperty(const CDorlString& name, CVeskGenericData* value) override;
    int CallMethod(CVeskCommandContext* context) override;
    CVeskPropertyEnum* GetPropertyEnumerator() override;
};

// An object that speaks IDispatch alone; it is reached through its type information.
class VESK_API CDispatchHelper : public CObjectLookupHelper {
public:
    using CObjectLookupHelper::CObjectLookupHelper;
    // False when the object's type information cannot be had; the value then keeps its
    // object without a helper.
    bool LoadTypeInfo();
    int GetKind() override;
    CVeskGenericData* GetProperty(const CDorlString& name, int bByRef) override;
    int SetProperty(const CDorlString& name, CVeskGenericData* value) override;
    int CallMethod(CVeskCommandContext* context) override;
    CVeskPropertyEnum* GetPropertyEnumerator() override;
};

class VESK_API CVeskGdObject : public CVeskGenericData {
public:
    // bKeepPointer matters for a plain object only: non-zero stores the pointer as it came,
    // zero stores its IUnknown.
    CVeskGdObject(IUnknown* object, int bKeepPointer);
    ~CVeskGdObject() override;

    static CVeskGdObject* Allocate(IUnknown* object, int bKeepPointer);
    static CVeskGdObject* Allocate(CVeskCOMObject* object);
    static CVeskGdObject* Allocate(IDispatch* object);
    static void SetAllocationMonitor(AllocationMonitor monitor);

    void SetObject(IUnknown* object, int bKeepPointer);
    // No reference is taken.
    IUnknown* GetObjectA();
    // The object as IVeskCommand when it speaks the protocol, else null; no reference taken.
    IVeskCommand* GetIVeskCommand();
    // The interface from the object, or else from its property called name, followed down a
    // chain of objects that each have such a property.
    HRESULT GetInterface(const GUID& iid, void** ppv, const CDorlString& name);

    CVeskGenericData* STDMETHODCALLTYPE GetProperty(const CDorlString& name, int bByRef) override;
    int STDMETHODCALLTYPE SetProperty(const CDorlString& name, CVeskGenericData* value) override;
    int STDMETHODCALLTYPE CallMethod(CVeskCommandContext* context) override;
    CVeskPropertyEnum* STDMETHODCALLTYPE GetPropertyEnumerator() override;

    DataType GetType() const override;
    void Print(std::ostream& stream) const override;
    void Write(CDorlArchive& archive) const override;
    void Read(CDorlArchive& archive) override;
    CVeskGenericData* Copy() override;
    int _IsEqual(CVeskGenericData* other) override;
    int _Assign(CVeskGenericData* other) override;

    IUnknown* m_pObject;
    CObjectLookupHelper* m_pHelper;

private:
    void Clear();
};
