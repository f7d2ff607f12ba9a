// The data store: open state and section depth, the hooks that a subclass stores with, their
// interface and the script functions that reach them.

#include "vesk/DataStore.h"

#include <cstring>

#include <dorl/DorlDiag.h>

#include "dataset/Truncate.h"
#include "vesk/CommandContext.h"
#include "vesk/GdIndirect.h"
#include "vesk/InterfaceIds.h"

using vesk::TruncateToInt;

#define VESK_STORE_ASSERT(expr)                                                                    \
    do {                                                                                           \
        if (!(expr))                                                                               \
            DorlDisplayAssert(#expr, "DataStore", __LINE__);                                       \
    } while (0)

VESK_BEGIN_INTERFACE_MAP(CVeskDataStore, CVeskComponent)
    VESK_INTERFACE(IID_IVeskDataStore, VeskDataStore)
VESK_END_INTERFACE_MAP()

VESK_BEGIN_PROPERTY_MAP(CVeskDataStore, CVeskComponent)
    VESK_FUNCTION_PROPERTY("Open", Open)
    VESK_FUNCTION_PROPERTY("Close", Close)
    VESK_FUNCTION_PROPERTY("Descend", Descend)
    VESK_FUNCTION_PROPERTY("Ascend", Ascend)
    VESK_FUNCTION_PROPERTY("WriteBool", WriteBool)
    VESK_FUNCTION_PROPERTY("WriteString", WriteString)
    VESK_FUNCTION_PROPERTY("WriteBinary", WriteBinary)
    VESK_FUNCTION_PROPERTY("WriteNumber", WriteNumber)
    VESK_FUNCTION_PROPERTY("WriteInteger", WriteInteger)
    VESK_FUNCTION_PROPERTY("WriteObject", WriteObject)
    VESK_FUNCTION_PROPERTY("WriteVector", WriteVector)
    VESK_FUNCTION_PROPERTY("WriteAssocArray", WriteAssocArray)
    VESK_FUNCTION_PROPERTY("ReadBool", ReadBool)
    VESK_FUNCTION_PROPERTY("ReadString", ReadString)
    VESK_FUNCTION_PROPERTY("ReadBinary", ReadBinary)
    VESK_FUNCTION_PROPERTY("ReadNumber", ReadNumber)
    VESK_FUNCTION_PROPERTY("ReadInteger", ReadInteger)
    VESK_FUNCTION_PROPERTY("ReadObject", ReadObject)
    VESK_FUNCTION_PROPERTY("ReadVector", ReadVector)
    VESK_FUNCTION_PROPERTY("ReadAssocArray", ReadAssocArray)
    VESK_FUNCTION_PROPERTY("EnumSections", EnumSections)
    VESK_FUNCTION_PROPERTY("EnumEntries", EnumEntries)
    VESK_FUNCTION_PROPERTY("ClearSection", ClearSection)
    VESK_BOOLEAN_PROPERTY("opened", m_bOpened, VeskReadOnly)
    VESK_DOUBLE_PROPERTY("level", m_dLevel, VeskReadOnly)
    VESK_STRING_PROPERTY("accessStatus", m_sAccessStatus, VeskReadOnly)
VESK_END_PROPERTY_MAP()

namespace {

void ReturnBoolean(CVeskCommandContext* context, int bValue)
{
    context->SetReturnValueNoRef(CVeskGdBoolean::Allocate(bValue ? 1 : 0));
}

// Tells the script's variable behind "bSuccess" how a read went, and gives the indirect back.
void ReportSuccess(CVeskGdIndirect* bSuccess, int bResult)
{
    if (!bSuccess)
        return;
    CVeskGenericData* value = CVeskGdBoolean::Allocate(bResult ? 1 : 0);
    bSuccess->SetValue(value);
    value->Release();
    bSuccess->Release();
}

// A write that failed leaves the return value None, so the script can tell it from a false.
void ReturnIfWritten(CVeskCommandContext* context, int bResult)
{
    if (bResult)
        ReturnBoolean(context, 1);
}

// The name at the script's 1-based "index", empty past the last one.
template <class Hook> int EnumName(CVeskCommandContext* context, Hook hook)
{
    double dIndex = 0;
    context->GetParam("index", &dIndex, 0);
    CDorlString name;
    if (context->CanProceed(0))
        name = hook(TruncateToInt(dIndex) - 1);
    context->SetReturnValueNoRef(CVeskGdString::Allocate(name));
    return 1;
}

// A write of one "value" under "tag".
template <class Value, class Hook> int WriteValue(CVeskCommandContext* context, Hook hook)
{
    CDorlString tag;
    Value value{};
    context->GetParam("tag", &tag, 0);
    context->GetParam("value", &value, 0);
    ReturnIfWritten(context, context->CanProceed(0) && hook(tag, value));
    return 1;
}

// A read of the value under "tag": the script's "default" unless the hook delivers, how it went
// in "bSuccess", and the value returned as makeResult makes it.
template <class Value, class Hook, class MakeResult>
int ReadValue(CVeskCommandContext* context, Hook hook, MakeResult makeResult)
{
    CDorlString tag;
    Value value{};
    CVeskGdIndirect* bSuccess = nullptr;
    context->GetParam("tag", &tag, 0);
    context->GetParam("default", &value, 0);
    context->GetParam("bSuccess", &bSuccess, 1);
    int bResult = context->CanProceed(0) && hook(tag, value);
    ReportSuccess(bSuccess, bResult);
    context->SetReturnValueNoRef(makeResult(value));
    return 1;
}

} // namespace

CVeskDataStore::CVeskDataStore(const CDorlString& name)
    : CVeskComponent(name), m_bOpened(0), m_dLevel(-1.0), m_sAccessStatus("Success")
{
    VESK_FILL_PROPERTY_MAP();
}

// The store is not closed here: closing is the application's decision, and a subclass's
// OnClose is no longer reachable from this destructor anyway.
CVeskDataStore::~CVeskDataStore() = default;

// Default hooks ----------------------------------------------------------------------------------

int CVeskDataStore::OnOpen(const CDorlString&, const int&)
{
    m_dLevel = 0.0;
    m_bOpened = 1;
    return 1;
}

void CVeskDataStore::OnClose()
{
    m_bOpened = 0;
    m_dLevel = -1.0;
}

int CVeskDataStore::OnDescend(const CDorlString&, const int&)
{
    VESK_STORE_ASSERT(m_dLevel >= 0);
    m_dLevel += 1;
    return 1;
}

int CVeskDataStore::OnAscend()
{
    m_dLevel -= 1;
    VESK_STORE_ASSERT(m_dLevel >= 0);
    return 1;
}

int CVeskDataStore::OnReadString(const CDorlString&, CDorlString&) { return 1; }
int CVeskDataStore::OnWriteString(const CDorlString&, const CDorlString&) { return 1; }
int CVeskDataStore::OnReadInt(const CDorlString&, int*) { return 1; }
int CVeskDataStore::OnWriteInt(const CDorlString&, int) { return 1; }
int CVeskDataStore::OnReadDouble(const CDorlString&, double*) { return 1; }
int CVeskDataStore::OnWriteDouble(const CDorlString&, double) { return 1; }
int CVeskDataStore::OnReadLong(const CDorlString&, long*) { return 1; }
int CVeskDataStore::OnWriteLong(const CDorlString&, long) { return 1; }
int CVeskDataStore::OnReadShort(const CDorlString&, short*) { return 1; }
int CVeskDataStore::OnWriteShort(const CDorlString&, short) { return 1; }
int CVeskDataStore::OnReadWord(const CDorlString&, unsigned short*) { return 1; }
int CVeskDataStore::OnWriteWord(const CDorlString&, unsigned short) { return 1; }
int CVeskDataStore::OnReadBool(const CDorlString&, int*) { return 1; }
int CVeskDataStore::OnWriteBool(const CDorlString&, int) { return 1; }
int CVeskDataStore::OnReadDWord(const CDorlString&, unsigned long*) { return 1; }
int CVeskDataStore::OnWriteDWord(const CDorlString&, unsigned long) { return 1; }
int CVeskDataStore::OnReadByte(const CDorlString&, unsigned char*) { return 1; }
int CVeskDataStore::OnWriteByte(const CDorlString&, unsigned char) { return 1; }
int CVeskDataStore::OnReadChar(const CDorlString&, char*) { return 1; }
int CVeskDataStore::OnWriteChar(const CDorlString&, char) { return 1; }
int CVeskDataStore::OnReadBinary(const CDorlString&, void*, unsigned long) { return 1; }
int CVeskDataStore::OnWriteBinary(const CDorlString&, void*, unsigned long) { return 1; }
int CVeskDataStore::OnReadFloat(const CDorlString&, float*) { return 1; }
int CVeskDataStore::OnWriteFloat(const CDorlString&, float) { return 1; }
int CVeskDataStore::OnReadAssocArray(const CDorlString&, CVeskGdObject**) { return 0; }
int CVeskDataStore::OnWriteAssocArray(const CDorlString&, CVeskGdObject*) { return 0; }
int CVeskDataStore::OnReadVector(const CDorlString&, CVeskGdVector**) { return 0; }
int CVeskDataStore::OnWriteVector(const CDorlString&, CVeskGdVector*) { return 0; }
CDorlString CVeskDataStore::OnEnumSections(int) { return CDorlString(); }
CDorlString CVeskDataStore::OnEnumEntries(int) { return CDorlString(); }
int CVeskDataStore::OnClearSection(const CDorlString&) { return 1; }

// Script functions: the store's state ------------------------------------------------------------

int CVeskDataStore::Open(CVeskCommandContext* context)
{
    CDorlString name;
    int bReadOnly = 0;
    context->GetParam("name", &name, 0);
    context->GetParam("readOnly", &bReadOnly, 1);
    ReturnBoolean(context, context->CanProceed(0) && OnOpen(name, bReadOnly));
    return 1;
}

int CVeskDataStore::Close(CVeskCommandContext* context)
{
    if (context->CanProceed(0))
        OnClose();
    return 1;
}

int CVeskDataStore::Descend(CVeskCommandContext* context)
{
    CDorlString section;
    int bReadOnly = 0;
    context->GetParam("section", &section, 0);
    context->GetParam("readOnly", &bReadOnly, 1);
    ReturnBoolean(context, context->CanProceed(0) && OnDescend(section, bReadOnly));
    return 1;
}

int CVeskDataStore::Ascend(CVeskCommandContext* context)
{
    ReturnBoolean(context, context->CanProceed(0) && OnAscend());
    return 1;
}

int CVeskDataStore::EnumSections(CVeskCommandContext* context)
{
    return EnumName(context, [this](int nIndex) { return OnEnumSections(nIndex); });
}

int CVeskDataStore::EnumEntries(CVeskCommandContext* context)
{
    return EnumName(context, [this](int nIndex) { return OnEnumEntries(nIndex); });
}

int CVeskDataStore::ClearSection(CVeskCommandContext* context)
{
    CDorlString section;
    context->GetParam("section", &section, 0);
    if (context->CanProceed(0))
        OnClearSection(section);
    return 1;
}

// Script functions: writes ------------------------------------------------------------------------

int CVeskDataStore::WriteBool(CVeskCommandContext* context)
{
    return WriteValue<int>(
        context, [this](const CDorlString& tag, int bValue) { return OnWriteBool(tag, bValue); });
}

int CVeskDataStore::WriteString(CVeskCommandContext* context)
{
    return WriteValue<CDorlString>(context,
                                   [this](const CDorlString& tag, const CDorlString& value) {
                                       return OnWriteString(tag, value);
                                   });
}

int CVeskDataStore::WriteBinary(CVeskCommandContext* context)
{
    CDorlString tag;
    CDorlString value;
    context->GetParam("tag", &tag, 0);
    context->GetParam("value", &value, 0);
    if (!context->CanProceed(0))
        return 1;
    // The hook takes a writable buffer; it gets a copy of its own, never the script's string.
    int nLength = value.GetLength();
    void* pBuffer = value.GetBuffer(nLength);
    int bResult = OnWriteBinary(tag, pBuffer, static_cast<unsigned long>(nLength));
    value.ReleaseBuffer(nLength);
    ReturnIfWritten(context, bResult);
    return 1;
}

int CVeskDataStore::WriteNumber(CVeskCommandContext* context)
{
    return WriteValue<double>(context, [this](const CDorlString& tag, double dValue) {
        return OnWriteDouble(tag, dValue);
    });
}

int CVeskDataStore::WriteInteger(CVeskCommandContext* context)
{
    return WriteValue<double>(context, [this](const CDorlString& tag, double dValue) {
        return OnWriteInt(tag, TruncateToInt(dValue));
    });
}

template <class Value>
int CVeskDataStore::WriteReference(CVeskCommandContext* context, CVeskGenericData::DataType eType,
                                   int (CVeskDataStore::*pfnWrite)(const CDorlString&, Value*))
{
    CDorlString tag;
    CVeskGenericData* value = nullptr; // ours once fetched
    context->GetParam("tag", &tag, 0);
    context->GetParam("value", &value, 0);
    int bResult = context->CanProceed(0) && value && value->GetType() == eType &&
                  (this->*pfnWrite)(tag, static_cast<Value*>(value));
    ReturnBoolean(context, bResult);
    if (value)
        value->Release();
    return 1;
}

int CVeskDataStore::WriteVector(CVeskCommandContext* context)
{
    return WriteReference(context, CVeskGenericData::dtVector, &CVeskDataStore::OnWriteVector);
}

int CVeskDataStore::WriteAssocArray(CVeskCommandContext* context)
{
    return WriteReference(context, CVeskGenericData::dtObject, &CVeskDataStore::OnWriteAssocArray);
}

int CVeskDataStore::PassToComponent(CVeskCommandContext* context, int bWrite)
{
    CDorlString tag;
    IVeskComponent* component = nullptr; // a reference once fetched
    context->GetParam("tag", &tag, 0);
    context->GetParam("object", IID_IVeskComponent, reinterpret_cast<void**>(&component), 0,
                      CDorlString());
    if (context->CanProceed(0)) {
        // The map's interface, without a reference: the component uses it during the call.
        IVeskDataStore* store = &m_xVeskDataStore;
        int bResult = 0;
        if (component)
            bResult = bWrite ? component->WriteData(tag, store) : component->ReadData(tag, store);
        ReturnBoolean(context, bResult);
    }
    if (component)
        component->Release();
    return 1;
}

int CVeskDataStore::WriteObject(CVeskCommandContext* context)
{
    return PassToComponent(context, 1);
}

// Script functions: reads -------------------------------------------------------------------------

int CVeskDataStore::ReadBool(CVeskCommandContext* context)
{
    return ReadValue<int>(
        context, [this](const CDorlString& tag, int& bValue) { return OnReadBool(tag, &bValue); },
        [](int bValue) { return CVeskGdBoolean::Allocate(bValue ? 1 : 0); });
}

int CVeskDataStore::ReadString(CVeskCommandContext* context)
{
    return ReadValue<CDorlString>(
        context,
        [this](const CDorlString& tag, CDorlString& value) { return OnReadString(tag, value); },
        [](const CDorlString& value) { return CVeskGdString::Allocate(value); });
}

int CVeskDataStore::ReadNumber(CVeskCommandContext* context)
{
    return ReadValue<double>(
        context,
        [this](const CDorlString& tag, double& dValue) { return OnReadDouble(tag, &dValue); },
        [](double dValue) { return CVeskGdDouble::Allocate(dValue); });
}

int CVeskDataStore::ReadInteger(CVeskCommandContext* context)
{
    // The default stays as the script gave it, fraction and all, unless the hook delivers.
    return ReadValue<double>(
        context,
        [this](const CDorlString& tag, double& dValue) {
            int nValue = TruncateToInt(dValue);
            int bResult = OnReadInt(tag, &nValue);
            if (bResult)
                dValue = nValue;
            return bResult;
        },
        [](double dValue) { return CVeskGdDouble::Allocate(dValue); });
}

int CVeskDataStore::ReadBinary(CVeskCommandContext* context)
{
    CDorlString tag;
    double dLength = 0;
    context->GetParam("tag", &tag, 0);
    context->GetParam("length", &dLength, 0);
    CDorlString value;
    if (context->CanProceed(0)) {
        int nLength = TruncateToInt(dLength);
        if (nLength < 0)
            nLength = 0;
        // Bytes the hook does not fill read as zeros, never as what the heap held.
        char* pBuffer = value.GetBuffer(nLength);
        std::memset(pBuffer, 0, static_cast<size_t>(nLength));
        OnReadBinary(tag, pBuffer, static_cast<unsigned long>(nLength));
        value.ReleaseBuffer(nLength);
    }
    context->SetReturnValueNoRef(CVeskGdString::Allocate(value));
    return 1;
}

int CVeskDataStore::ReadObject(CVeskCommandContext* context) { return PassToComponent(context, 0); }

template <class Value>
int CVeskDataStore::ReadReference(CVeskCommandContext* context,
                                  int (CVeskDataStore::*pfnRead)(const CDorlString&, Value**))
{
    CDorlString tag;
    CVeskGenericData* defaultValue = nullptr; // ours once fetched
    CVeskGdIndirect* bSuccess = nullptr;
    context->GetParam("tag", &tag, 0);
    context->GetParam("default", &defaultValue, 0);
    context->GetParam("bSuccess", &bSuccess, 1);
    int bResult = 0;
    if (context->CanProceed(0)) {
        Value* read = nullptr; // a reference when the read says it delivered
        bResult = (this->*pfnRead)(tag, &read);
        if (bResult && read)
            context->SetReturnValue(read);
        else if (defaultValue)
            context->SetReturnValue(defaultValue);
        if (read)
            read->Release();
    }
    ReportSuccess(bSuccess, bResult);
    if (defaultValue)
        defaultValue->Release();
    return 1;
}

int CVeskDataStore::ReadVector(CVeskCommandContext* context)
{
    return ReadReference(context, &CVeskDataStore::OnReadVector);
}

int CVeskDataStore::ReadAssocArray(CVeskCommandContext* context)
{
    return ReadReference(context, &CVeskDataStore::OnReadAssocArray);
}

// The interface ---------------------------------------------------------------------------------

#define VESK_FORWARD(Operation, Params, Args)                                                      \
    int CVeskDataStore::XVeskDataStoreObj::Operation Params { return Owner()->On##Operation Args; }

VESK_FORWARD(Open, (const CDorlString& name, const int& bReadOnly), (name, bReadOnly))
VESK_FORWARD(Descend, (const CDorlString& section, const int& bReadOnly), (section, bReadOnly))
VESK_FORWARD(Ascend, (), ())
VESK_FORWARD(ReadString, (const CDorlString& tag, CDorlString& value), (tag, value))
VESK_FORWARD(WriteString, (const CDorlString& tag, const CDorlString& value), (tag, value))
VESK_FORWARD(ReadInt, (const CDorlString& tag, int* pValue), (tag, pValue))
VESK_FORWARD(WriteInt, (const CDorlString& tag, int value), (tag, value))
VESK_FORWARD(ReadDouble, (const CDorlString& tag, double* pValue), (tag, pValue))
VESK_FORWARD(WriteDouble, (const CDorlString& tag, double value), (tag, value))
VESK_FORWARD(ReadLong, (const CDorlString& tag, long* pValue), (tag, pValue))
VESK_FORWARD(WriteLong, (const CDorlString& tag, long value), (tag, value))
VESK_FORWARD(ReadShort, (const CDorlString& tag, short* pValue), (tag, pValue))
VESK_FORWARD(WriteShort, (const CDorlString& tag, short value), (tag, value))
VESK_FORWARD(ReadWord, (const CDorlString& tag, unsigned short* pValue), (tag, pValue))
VESK_FORWARD(WriteWord, (const CDorlString& tag, unsigned short value), (tag, value))
VESK_FORWARD(ReadBool, (const CDorlString& tag, int* pValue), (tag, pValue))
VESK_FORWARD(WriteBool, (const CDorlString& tag, int value), (tag, value))
VESK_FORWARD(ReadDWord, (const CDorlString& tag, unsigned long* pValue), (tag, pValue))
VESK_FORWARD(WriteDWord, (const CDorlString& tag, unsigned long value), (tag, value))
VESK_FORWARD(ReadByte, (const CDorlString& tag, unsigned char* pValue), (tag, pValue))
VESK_FORWARD(WriteByte, (const CDorlString& tag, unsigned char value), (tag, value))
VESK_FORWARD(ReadChar, (const CDorlString& tag, char* pValue), (tag, pValue))
VESK_FORWARD(WriteChar, (const CDorlString& tag, char value), (tag, value))
VESK_FORWARD(ReadBinary, (const CDorlString& tag, void* pBuffer, unsigned long nLength),
             (tag, pBuffer, nLength))
VESK_FORWARD(WriteBinary, (const CDorlString& tag, void* pBuffer, unsigned long nLength),
             (tag, pBuffer, nLength))
VESK_FORWARD(ClearSection, (const CDorlString& section), (section))
VESK_FORWARD(ReadFloat, (const CDorlString& tag, float* pValue), (tag, pValue))
VESK_FORWARD(WriteFloat, (const CDorlString& tag, float value), (tag, value))
VESK_FORWARD(ReadAssocArray, (const CDorlString& tag, CVeskGdObject** ppValue), (tag, ppValue))
VESK_FORWARD(WriteAssocArray, (const CDorlString& tag, CVeskGdObject* value), (tag, value))
VESK_FORWARD(ReadVector, (const CDorlString& tag, CVeskGdVector** ppValue), (tag, ppValue))
VESK_FORWARD(WriteVector, (const CDorlString& tag, CVeskGdVector* value), (tag, value))

void CVeskDataStore::XVeskDataStoreObj::Close() { Owner()->OnClose(); }

CDorlString CVeskDataStore::XVeskDataStoreObj::EnumSections(int nIndex)
{
    return Owner()->OnEnumSections(nIndex);
}

CDorlString CVeskDataStore::XVeskDataStoreObj::EnumEntries(int nIndex)
{
    return Owner()->OnEnumEntries(nIndex);
}
