#pragma once

// Generic data: the dynamically typed value of the framework. Every value is itself an object of
// the call protocol. Values are counted; whatever an Allocate, Copy or Get... returns is a
// reference for the caller.

#include <iosfwd>

#include <dorl/DorlArchive.h>
#include <dorl/DorlString.h>
#include <standin/Types.h>

#include "vesk/Command.h"
#include "vesk/VeskExport.h"

class VESK_API CVeskGenericData : public IVeskCommand {
public:
    enum DataType {
        dtIndirect = 0,
        dtNull = 1,
        dtBoolean = 2,
        dtNumber = 3,
        dtString = 4,
        dtVector = 5,
        dtObject = 6,
        dtNone = 7
    };

    // Called with (1, count) after an AddRef and (0, count) after a Release of the debug object.
    typedef void (*DebugCallback)(int bAddRef, int nRefCount);
    // Called with (object, type name, 1) after construction and (object, type name, 0) before
    // destruction.
    typedef void (*AllocationMonitor)(void* object, const char* typeName, int bCreated);

    CVeskGenericData();

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppv) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    CVeskGenericData* STDMETHODCALLTYPE GetProperty(const CDorlString& name, int bByRef) override;
    int STDMETHODCALLTYPE SetProperty(const CDorlString& name, CVeskGenericData* value) override;
    int STDMETHODCALLTYPE CallMethod(CVeskCommandContext* context) override;
    CVeskPropertyEnum* STDMETHODCALLTYPE GetPropertyEnumerator() override;

    virtual ~CVeskGenericData();

    virtual DataType GetType() const = 0;
    virtual void Print(std::ostream& stream) const = 0;
    virtual void Write(CDorlArchive& archive) const = 0;
    virtual void Read(CDorlArchive& archive) = 0;
    virtual CVeskGenericData* Copy() = 0;
    // Both may assume that other has this value's type: IsEqual and Assign check it.
    virtual int _IsEqual(CVeskGenericData* other);
    virtual int _Assign(CVeskGenericData* other);
    virtual int _DescribeProperty(int index, CDorlString* name, CDorlString* description,
                                  CDorlString* type, CVeskPropertyEnum::ReadOnlyStatus* status);
    virtual void _Dispose();

    // 0 for different types: there is no conversion, so the number 1 is not the string "1".
    int IsEqual(CVeskGenericData* other);
    // Different types yield 0 and leave this value alone.
    int Assign(CVeskGenericData* other);

    // A fresh value of the type with its empty content; null for dtObject and unknown types.
    static CVeskGenericData* GenericAllocate(DataType type);
    static const char* GetTypeName(DataType type);

    // One object whose count changes are reported, and where they go; null switches off.
    static void SetDebugObj(CVeskGenericData* object);
    static void SetDebugCallback(DebugCallback callback);

protected:
    LONG m_nRefCount;
};

// The boolean values are two shared objects that are never freed: counting them costs nothing.
class VESK_API CVeskGdBoolean : public CVeskGenericData {
public:
    explicit CVeskGdBoolean(int value);
    ~CVeskGdBoolean() override;

    // The shared true for non-zero, the shared false for 0.
    static CVeskGdBoolean* Allocate(int value);
    static void SetAllocationMonitor(AllocationMonitor monitor);

    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    CVeskGenericData* STDMETHODCALLTYPE GetProperty(const CDorlString& name, int bByRef) override;
    DataType GetType() const override;
    void Print(std::ostream& stream) const override;
    void Write(CDorlArchive& archive) const override;
    void Read(CDorlArchive& archive) override;
    CVeskGenericData* Copy() override;
    int _IsEqual(CVeskGenericData* other) override;
    int _Assign(CVeskGenericData* other) override;

    int32_t m_bValue;
};

class VESK_API CVeskGdDouble : public CVeskGenericData {
public:
    explicit CVeskGdDouble(double value);
    ~CVeskGdDouble() override;

    static CVeskGdDouble* Allocate(double value);
    static void SetAllocationMonitor(AllocationMonitor monitor);

    CVeskGenericData* STDMETHODCALLTYPE GetProperty(const CDorlString& name, int bByRef) override;
    DataType GetType() const override;
    void Print(std::ostream& stream) const override;
    void Write(CDorlArchive& archive) const override;
    void Read(CDorlArchive& archive) override;
    CVeskGenericData* Copy() override;
    int _IsEqual(CVeskGenericData* other) override;
    int _Assign(CVeskGenericData* other) override;

    double m_dValue;
};

class VESK_API CVeskGdString : public CVeskGenericData {
public:
    explicit CVeskGdString(const CDorlString& value);
    explicit CVeskGdString(const char* value);
    ~CVeskGdString() override;

    static CVeskGdString* Allocate(const CDorlString& value);
    static CVeskGdString* Allocate(const char* value);
    static void SetAllocationMonitor(AllocationMonitor monitor);

    CVeskGenericData* STDMETHODCALLTYPE GetProperty(const CDorlString& name, int bByRef) override;
    DataType GetType() const override;
    void Print(std::ostream& stream) const override;
    void Write(CDorlArchive& archive) const override;
    void Read(CDorlArchive& archive) override;
    CVeskGenericData* Copy() override;
    int _IsEqual(CVeskGenericData* other) override;
    int _Assign(CVeskGenericData* other) override;
    int _DescribeProperty(int index, CDorlString* name, CDorlString* description, CDorlString* type,
                          CVeskPropertyEnum::ReadOnlyStatus* status) override;

    CDorlString m_sValue;
};

// Null is a value and equals Null; there is one shared Null.
class VESK_API CVeskGdNull : public CVeskGenericData {
public:
    static CVeskGdNull* Allocate();

    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    CVeskGenericData* STDMETHODCALLTYPE GetProperty(const CDorlString& name, int bByRef) override;
    DataType GetType() const override;
    void Print(std::ostream& stream) const override;
    void Write(CDorlArchive& archive) const override;
    void Read(CDorlArchive& archive) override;
    CVeskGenericData* Copy() override;
    int _IsEqual(CVeskGenericData* other) override;
    int _Assign(CVeskGenericData* other) override;
    void _Dispose() override;

private:
    CVeskGdNull() = default;
};

// None marks the absence of a value and equals nothing, not even None; there is one shared None.
class VESK_API CVeskGdNone : public CVeskGenericData {
public:
    static CVeskGdNone* Allocate();

    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    CVeskGenericData* STDMETHODCALLTYPE GetProperty(const CDorlString& name, int bByRef) override;
    DataType GetType() const override;
    void Print(std::ostream& stream) const override;
    void Write(CDorlArchive& archive) const override;
    void Read(CDorlArchive& archive) override;
    CVeskGenericData* Copy() override;
    int _IsEqual(CVeskGenericData* other) override;
    int _Assign(CVeskGenericData* other) override;
    void _Dispose() override;

private:
    CVeskGdNone() = default;
};

// Describes the properties of one value; holds a reference on it.
class VESK_API CVeskGenericDataPropertyEnumerator : public CVeskPropertyEnum {
public:
    explicit CVeskGenericDataPropertyEnumerator(CVeskGenericData* value);
    ~CVeskGenericDataPropertyEnumerator() override;

    void Reset() override;
    int Next(CDorlString* pName, CDorlString* pDescription, CDorlString* pType,
             ReadOnlyStatus* pStatus) override;
    int GetCurrentValue(CVeskGenericData** ppValue) override;
    void Delete() override;

private:
    CVeskGenericData* m_poValue;
    int m_nIndex;
};

VESK_API std::ostream& operator<<(std::ostream& stream, CVeskGenericData& value);
// No type byte is written: whoever reads a top-level value already knows its type.
VESK_API CDorlArchive& operator<<(CDorlArchive& archive, const CVeskGenericData& value);
VESK_API CDorlArchive& operator>>(CDorlArchive& archive, CVeskGenericData& value);

// The exact class of a value, one word: all instances of a class share it. The globals are 0
// until the library's start-up routine has run, and then no value matches them.
VESK_API long VeskGetGdProxyType(CVeskGenericData* value);
VESK_API extern long VeskGdDoubleProxyType;
VESK_API extern long VeskGdStringProxyType;
VESK_API extern long VeskGdBooleanProxyType;
VESK_API extern long VeskGdNullProxyType;
VESK_API extern long VeskGdNoneProxyType;
VESK_API extern long VeskGdObjectProxyType;
VESK_API extern long VeskGdIndirectProxyType;
VESK_API extern long VeskGdVectorProxyType;

VESK_API bool VeskIsGdDouble(CVeskGenericData* value);
VESK_API bool VeskIsGdString(CVeskGenericData* value);
VESK_API bool VeskIsGdBoolean(CVeskGenericData* value);
VESK_API bool VeskIsGdNull(CVeskGenericData* value);
VESK_API bool VeskIsGdNone(CVeskGenericData* value);
VESK_API bool VeskIsGdObject(CVeskGenericData* value);
VESK_API bool VeskIsGdIndirect(CVeskGenericData* value);
VESK_API bool VeskIsGdVector(CVeskGenericData* value);
