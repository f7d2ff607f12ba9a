#pragma once

// Data stores: the abstract form of a hierarchical place to keep named values. A store is opened
// under a name, sections are entered and left like directories, and inside a section values are
// written and read under tags. The same shape is offered three ways: IVeskDataStore for native
// clients, script functions for the call protocol, and the On... operations that an
// application's subclass overrides to do the real storing.
//
// The base class stores nothing. It keeps the open state and the section depth, its writes
// succeed and its reads deliver nothing, so a caller's default stays. A subclass that overrides
// OnOpen, OnClose, OnDescend or OnAscend calls the base's to keep "opened" and "level" right.
//
// A component takes part through IVeskComponent: "WriteObject" and "ReadObject" hand it the
// store, and it writes or reads its own values (CVeskComponent::OnWriteData, OnReadData).

#include <dorl/DorlString.h>

#include "vesk/Component.h"
#include "vesk/GdObject.h"
#include "vesk/GdVector.h"
#include "vesk/VeskExport.h"

// Every operation that takes a tag has it first. A read yields non-zero when it delivered a
// value and leaves the target alone otherwise; a write yields non-zero on success.
struct IVeskDataStore : public IUnknown {
    virtual int STDMETHODCALLTYPE Open(const CDorlString& name, const int& bReadOnly) = 0;
    virtual void STDMETHODCALLTYPE Close() = 0;
    virtual int STDMETHODCALLTYPE Descend(const CDorlString& section, const int& bReadOnly) = 0;
    virtual int STDMETHODCALLTYPE Ascend() = 0;
    virtual int STDMETHODCALLTYPE ReadString(const CDorlString& tag, CDorlString& value) = 0;
    virtual int STDMETHODCALLTYPE WriteString(const CDorlString& tag, const CDorlString& value) = 0;
    virtual int STDMETHODCALLTYPE ReadInt(const CDorlString& tag, int* pValue) = 0;
    virtual int STDMETHODCALLTYPE WriteInt(const CDorlString& tag, int value) = 0;
    virtual int STDMETHODCALLTYPE ReadDouble(const CDorlString& tag, double* pValue) = 0;
    virtual int STDMETHODCALLTYPE WriteDouble(const CDorlString& tag, double value) = 0;
    virtual int STDMETHODCALLTYPE ReadLong(const CDorlString& tag, long* pValue) = 0;
    virtual int STDMETHODCALLTYPE WriteLong(const CDorlString& tag, long value) = 0;
    virtual int STDMETHODCALLTYPE ReadShort(const CDorlString& tag, short* pValue) = 0;
    virtual int STDMETHODCALLTYPE WriteShort(const CDorlString& tag, short value) = 0;
    virtual int STDMETHODCALLTYPE ReadWord(const CDorlString& tag, unsigned short* pValue) = 0;
    virtual int STDMETHODCALLTYPE WriteWord(const CDorlString& tag, unsigned short value) = 0;
    virtual int STDMETHODCALLTYPE ReadBool(const CDorlString& tag, int* pValue) = 0;
    virtual int STDMETHODCALLTYPE WriteBool(const CDorlString& tag, int value) = 0;
    virtual int STDMETHODCALLTYPE ReadDWord(const CDorlString& tag, unsigned long* pValue) = 0;
    virtual int STDMETHODCALLTYPE WriteDWord(const CDorlString& tag, unsigned long value) = 0;
    virtual int STDMETHODCALLTYPE ReadByte(const CDorlString& tag, unsigned char* pValue) = 0;
    virtual int STDMETHODCALLTYPE WriteByte(const CDorlString& tag, unsigned char value) = 0;
    virtual int STDMETHODCALLTYPE ReadChar(const CDorlString& tag, char* pValue) = 0;
    virtual int STDMETHODCALLTYPE WriteChar(const CDorlString& tag, char value) = 0;
    virtual int STDMETHODCALLTYPE ReadBinary(const CDorlString& tag, void* pBuffer,
                                             unsigned long nLength) = 0;
    virtual int STDMETHODCALLTYPE WriteBinary(const CDorlString& tag, void* pBuffer,
                                              unsigned long nLength) = 0;
    // The name of the nIndex-th section or entry (from 0) of the current section; empty past
    // the last.
    virtual CDorlString STDMETHODCALLTYPE EnumSections(int nIndex) = 0;
    virtual CDorlString STDMETHODCALLTYPE EnumEntries(int nIndex) = 0;
    virtual int STDMETHODCALLTYPE ClearSection(const CDorlString& section) = 0;
    virtual int STDMETHODCALLTYPE ReadFloat(const CDorlString& tag, float* pValue) = 0;
    virtual int STDMETHODCALLTYPE WriteFloat(const CDorlString& tag, float value) = 0;
    // A read that yields non-zero has stored a new reference in *ppValue.
    virtual int STDMETHODCALLTYPE ReadAssocArray(const CDorlString& tag,
                                                 CVeskGdObject** ppValue) = 0;
    virtual int STDMETHODCALLTYPE WriteAssocArray(const CDorlString& tag, CVeskGdObject* value) = 0;
    virtual int STDMETHODCALLTYPE ReadVector(const CDorlString& tag, CVeskGdVector** ppValue) = 0;
    virtual int STDMETHODCALLTYPE WriteVector(const CDorlString& tag, CVeskGdVector* value) = 0;

protected:
    ~IVeskDataStore() = default;
};

class VESK_API CVeskDataStore : public CVeskComponent {
    VESK_DECLARE_PROPERTY_TABLE(CVeskDataStore)

protected:
    // Reached through IVeskCommand: "opened", "level" and "accessStatus", the script functions,
    // then the component's properties.
    CVeskGenericData* GetProperty(const CDorlString& name, int bByRef) override;
    int SetProperty(const CDorlString& name, CVeskGenericData* value) override;
    CVeskPropertyEnum* GetPropertyEnumerator() override;

    // The interface map, IVeskDataStore before the component's interfaces.
    typedef CVeskDataStore _VeskThisClass;
    static const _VeskCOM_IF_Map interfaceMap;
    static const _VeskCOM_IF_MapEntry _interfaceEntries[];
    static const _VeskCOM_IF_Map* _GetBaseInterfaceMap();
    const _VeskCOM_IF_Map* GetInterfaceMap() const override;

public:
    explicit CVeskDataStore(const CDorlString& name);
    ~CVeskDataStore() override;

    // Opening (again) puts the store at the top, level 0; closing works from any depth.
    virtual int OnOpen(const CDorlString& name, const int& bReadOnly);
    virtual void OnClose();
    // Complain through the assertion "m_dLevel >= 0" when they leave or find the store
    // outside its sections, and go on.
    virtual int OnDescend(const CDorlString& section, const int& bReadOnly);
    virtual int OnAscend();
    virtual int OnReadString(const CDorlString& tag, CDorlString& value);
    virtual int OnWriteString(const CDorlString& tag, const CDorlString& value);
    virtual int OnReadInt(const CDorlString& tag, int* pValue);
    virtual int OnWriteInt(const CDorlString& tag, int value);
    virtual int OnReadDouble(const CDorlString& tag, double* pValue);
    virtual int OnWriteDouble(const CDorlString& tag, double value);
    virtual int OnReadLong(const CDorlString& tag, long* pValue);
    virtual int OnWriteLong(const CDorlString& tag, long value);
    virtual int OnReadShort(const CDorlString& tag, short* pValue);
    virtual int OnWriteShort(const CDorlString& tag, short value);
    virtual int OnReadWord(const CDorlString& tag, unsigned short* pValue);
    virtual int OnWriteWord(const CDorlString& tag, unsigned short value);
    virtual int OnReadBool(const CDorlString& tag, int* pValue);
    virtual int OnWriteBool(const CDorlString& tag, int value);
    virtual int OnReadDWord(const CDorlString& tag, unsigned long* pValue);
    virtual int OnWriteDWord(const CDorlString& tag, unsigned long value);
    virtual int OnReadByte(const CDorlString& tag, unsigned char* pValue);
    virtual int OnWriteByte(const CDorlString& tag, unsigned char value);
    virtual int OnReadChar(const CDorlString& tag, char* pValue);
    virtual int OnWriteChar(const CDorlString& tag, char value);
    virtual int OnReadBinary(const CDorlString& tag, void* pBuffer, unsigned long nLength);
    virtual int OnWriteBinary(const CDorlString& tag, void* pBuffer, unsigned long nLength);
    virtual int OnReadFloat(const CDorlString& tag, float* pValue);
    virtual int OnWriteFloat(const CDorlString& tag, float value);
    // The defaults of these four store nothing and yield 0.
    virtual int OnReadAssocArray(const CDorlString& tag, CVeskGdObject** ppValue);
    virtual int OnWriteAssocArray(const CDorlString& tag, CVeskGdObject* value);
    virtual int OnReadVector(const CDorlString& tag, CVeskGdVector** ppValue);
    virtual int OnWriteVector(const CDorlString& tag, CVeskGdVector* value);
    virtual CDorlString OnEnumSections(int nIndex);
    virtual CDorlString OnEnumEntries(int nIndex);
    virtual int OnClearSection(const CDorlString& section);

    // Script functions; each returns 1 to CallMethod. A failed write leaves the return value
    // None, a failed read gives the default and says so through its "bSuccess" indirect.
    int Open(CVeskCommandContext* context);
    int Close(CVeskCommandContext* context);
    int Descend(CVeskCommandContext* context);
    int Ascend(CVeskCommandContext* context);
    int WriteBool(CVeskCommandContext* context);
    int WriteString(CVeskCommandContext* context);
    int WriteBinary(CVeskCommandContext* context);
    int WriteNumber(CVeskCommandContext* context);
    int WriteInteger(CVeskCommandContext* context);
    int WriteObject(CVeskCommandContext* context);
    int WriteVector(CVeskCommandContext* context);
    int WriteAssocArray(CVeskCommandContext* context);
    int ReadBool(CVeskCommandContext* context);
    int ReadString(CVeskCommandContext* context);
    int ReadBinary(CVeskCommandContext* context);
    int ReadNumber(CVeskCommandContext* context);
    int ReadInteger(CVeskCommandContext* context);
    int ReadObject(CVeskCommandContext* context);
    int ReadVector(CVeskCommandContext* context);
    int ReadAssocArray(CVeskCommandContext* context);
    int EnumSections(CVeskCommandContext* context);
    int EnumEntries(CVeskCommandContext* context);
    int ClearSection(CVeskCommandContext* context);

    VESK_BEGIN_INTERFACE_PART(VeskDataStore, IVeskDataStore)
        int STDMETHODCALLTYPE Open(const CDorlString& name, const int& bReadOnly) override;
        void STDMETHODCALLTYPE Close() override;
        int STDMETHODCALLTYPE Descend(const CDorlString& section, const int& bReadOnly) override;
        int STDMETHODCALLTYPE Ascend() override;
        int STDMETHODCALLTYPE ReadString(const CDorlString& tag, CDorlString& value) override;
        int STDMETHODCALLTYPE WriteString(const CDorlString& tag, const CDorlString& value)
            override;
        int STDMETHODCALLTYPE ReadInt(const CDorlString& tag, int* pValue) override;
        int STDMETHODCALLTYPE WriteInt(const CDorlString& tag, int value) override;
        int STDMETHODCALLTYPE ReadDouble(const CDorlString& tag, double* pValue) override;
        int STDMETHODCALLTYPE WriteDouble(const CDorlString& tag, double value) override;
        int STDMETHODCALLTYPE ReadLong(const CDorlString& tag, long* pValue) override;
        int STDMETHODCALLTYPE WriteLong(const CDorlString& tag, long value) override;
        int STDMETHODCALLTYPE ReadShort(const CDorlString& tag, short* pValue) override;
        int STDMETHODCALLTYPE WriteShort(const CDorlString& tag, short value) override;
        int STDMETHODCALLTYPE ReadWord(const CDorlString& tag, unsigned short* pValue) override;
        int STDMETHODCALLTYPE WriteWord(const CDorlString& tag, unsigned short value) override;
        int STDMETHODCALLTYPE ReadBool(const CDorlString& tag, int* pValue) override;
        int STDMETHODCALLTYPE WriteBool(const CDorlString& tag, int value) override;
        int STDMETHODCALLTYPE ReadDWord(const CDorlString& tag, unsigned long* pValue) override;
        int STDMETHODCALLTYPE WriteDWord(const CDorlString& tag, unsigned long value) override;
        int STDMETHODCALLTYPE ReadByte(const CDorlString& tag, unsigned char* pValue) override;
        int STDMETHODCALLTYPE WriteByte(const CDorlString& tag, unsigned char value) override;
        int STDMETHODCALLTYPE ReadChar(const CDorlString& tag, char* pValue) override;
        int STDMETHODCALLTYPE WriteChar(const CDorlString& tag, char value) override;
        int STDMETHODCALLTYPE ReadBinary(const CDorlString& tag, void* pBuffer,
                                         unsigned long nLength) override;
        int STDMETHODCALLTYPE WriteBinary(const CDorlString& tag, void* pBuffer,
                                          unsigned long nLength) override;
        CDorlString STDMETHODCALLTYPE EnumSections(int nIndex) override;
        CDorlString STDMETHODCALLTYPE EnumEntries(int nIndex) override;
        int STDMETHODCALLTYPE ClearSection(const CDorlString& section) override;
        int STDMETHODCALLTYPE ReadFloat(const CDorlString& tag, float* pValue) override;
        int STDMETHODCALLTYPE WriteFloat(const CDorlString& tag, float value) override;
        int STDMETHODCALLTYPE ReadAssocArray(const CDorlString& tag, CVeskGdObject** ppValue)
            override;
        int STDMETHODCALLTYPE WriteAssocArray(const CDorlString& tag, CVeskGdObject* value)
            override;
        int STDMETHODCALLTYPE ReadVector(const CDorlString& tag, CVeskGdVector** ppValue) override;
        int STDMETHODCALLTYPE WriteVector(const CDorlString& tag, CVeskGdVector* value) override;
    VESK_END_INTERFACE_PART(VeskDataStore)

    int m_bOpened;
    // The section depth: -1 while closed, 0 at the top of an open store.
    double m_dLevel;
    // Success or otherwise of the last access, in the subclass's words; "Success" here.
    CDorlString m_sAccessStatus;

private:
    // The common course of "ReadVector" and "ReadAssocArray".
    template <class Value>
    int ReadReference(CVeskCommandContext* context,
                      int (CVeskDataStore::*pfnRead)(const CDorlString&, Value**));
    template <class Value>
    int WriteReference(CVeskCommandContext* context, CVeskGenericData::DataType eType,
                       int (CVeskDataStore::*pfnWrite)(const CDorlString&, Value*));
    // "WriteObject" and "ReadObject": the component's WriteData or ReadData with this store.
    int PassToComponent(CVeskCommandContext* context, int bWrite);
};
