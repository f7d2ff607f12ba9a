#include "vesk/CommandContext.h"

#include <cstdarg>
#include <cstdio>

#include <dorl/DorlDiag.h>

#include "vesk/COMObject.h"
#include "vesk/GdIndirect.h"
#include "vesk/GdObject.h"
#include "vesk/InterfaceIds.h"

namespace {

// Marks a query call whose descriptions nobody wants. It is compared, never called or released.
char s_discardMarker;
IVeskCommand* const DiscardQuery = reinterpret_cast<IVeskCommand*>(&s_discardMarker);

// The defaults that by-reference fetches point at when a parameter is missing.
double s_dSharedZero = 0.0;
CDorlString s_sSharedEmpty;

const char* NameText(const char* name) { return name ? name : ""; }

} // namespace

CVeskCommandContext::CVeskCommandContext()
    : m_pParams(m_aInlineParams), m_nCapacity(InlineParams), m_nPositional(0),
      m_nFirstNamed(InlineParams), m_nPositionalLeft(0), m_bNamedOnly(0),
      m_pReturnValue(CVeskGdNone::Allocate()), m_pfnErrorHandler(nullptr), m_pQuery(nullptr),
      m_bError(0), m_bDefaults(0)
{}

CVeskCommandContext::~CVeskCommandContext()
{
    auto releaseEntry = [](CVeskCommandParam& param) {
        if (param.m_pValue)
            param.m_pValue->Release();
        if (param.m_pIndirect)
            param.m_pIndirect->Release();
    };
    for (int i = 0; i < m_nPositional; ++i)
        releaseEntry(m_pParams[i]);
    for (int i = m_nFirstNamed; i < m_nCapacity; ++i)
        releaseEntry(m_pParams[i]);
    if (m_pParams != m_aInlineParams)
        delete[] m_pParams;
    if (m_pQuery && m_pQuery != DiscardQuery)
        m_pQuery->Release();
    if (m_pReturnValue)
        m_pReturnValue->Release();
}

// Adding parameters -------------------------------------------------------------------------------

void CVeskCommandContext::Grow()
{
    int capacity = m_nCapacity * 2;
    CVeskCommandParam* params = new CVeskCommandParam[capacity];
    for (int i = 0; i < m_nPositional; ++i)
        params[i] = m_pParams[i];
    // Named entries keep their distance from the top end.
    int shift = capacity - m_nCapacity;
    for (int i = m_nFirstNamed; i < m_nCapacity; ++i)
        params[i + shift] = m_pParams[i];
    if (m_pParams != m_aInlineParams)
        delete[] m_pParams;
    else
        for (CVeskCommandParam& param : m_aInlineParams)
            param = CVeskCommandParam();
    m_pParams = params;
    m_nCapacity = capacity;
    m_nFirstNamed += shift;
}

void CVeskCommandContext::AddParamNoRef(const CDorlString& name, CVeskGenericData* value)
{
    if (m_nPositional == m_nFirstNamed)
        Grow();
    CVeskCommandParam* param;
    if (name.IsEmpty()) {
        param = &m_pParams[m_nPositional];
        ++m_nPositional;
        ++m_nPositionalLeft;
    } else {
        --m_nFirstNamed;
        param = &m_pParams[m_nFirstNamed];
    }
    param->m_sName = name;
    param->m_bUsed = 0;
    param->m_pIndirect = nullptr;
    param->m_pValue = value;
    if (value->GetType() == CVeskGenericData::dtIndirect) {
        // The parameter is what the indirect refers to now; the indirect stays with it, so
        // that the callee can write back to the caller.
        CVeskGdIndirect* indirect = static_cast<CVeskGdIndirect*>(value);
        param->m_pIndirect = indirect;
        param->m_pValue = indirect->GetValue(1);
    }
    param->m_eType = param->m_pValue->GetType();
}

void CVeskCommandContext::AddParam(const CDorlString& name, CVeskGenericData* value)
{
    value->AddRef();
    AddParamNoRef(name, value);
}

void CVeskCommandContext::AddParam(const CDorlString& name, double value)
{
    AddParamNoRef(name, CVeskGdDouble::Allocate(value));
}

void CVeskCommandContext::AddParam(const CDorlString& name, const CDorlString& value)
{
    AddParamNoRef(name, CVeskGdString::Allocate(value));
}

void CVeskCommandContext::AddParam(const CDorlString& name, int value)
{
    AddParamNoRef(name, CVeskGdBoolean::Allocate(value));
}

void CVeskCommandContext::AddParam(const CDorlString& name, IUnknown* value)
{
    AddParamNoRef(name, CVeskGdObject::Allocate(value, 1));
}

void CVeskCommandContext::AddParam(const CDorlString& name, CVeskCOMObject* value)
{
    AddParamNoRef(name, CVeskGdObject::Allocate(value));
}

int CVeskCommandContext::GetNumParams() const
{
    return m_nPositional + m_nCapacity - m_nFirstNamed;
}

// Setting up the call -----------------------------------------------------------------------------

void CVeskCommandContext::SetCalledFunctionName(const CDorlString& name) { m_sFunctionName = name; }

void CVeskCommandContext::SetErrorHandler(ErrorHandler handler) { m_pfnErrorHandler = handler; }

void CVeskCommandContext::FetchNamedOnly(int bNamedOnly) { m_bNamedOnly = bNamedOnly ? 1 : 0; }

void CVeskCommandContext::DefaultParameters() { m_bDefaults = 1; }

void CVeskCommandContext::QueryParameters(IVeskCommand* pQuery)
{
    if (m_pQuery)
        return;
    if (!pQuery) {
        m_pQuery = DiscardQuery;
        return;
    }
    pQuery->AddRef();
    m_pQuery = pQuery;
}

// Fetching parameters -----------------------------------------------------------------------------

const char* CVeskCommandContext::FunctionName() const { return m_sFunctionName; }

void CVeskCommandContext::Fail() { m_bError = 1; }

CVeskCommandParam* CVeskCommandContext::FetchParam(const char* name,
                                                   CVeskGenericData::DataType eType, int bOptional)
{
    CVeskCommandParam* param = nullptr;
    if (!m_bNamedOnly && m_nPositionalLeft > 0) {
        --m_nPositionalLeft;
        param = &m_pParams[m_nPositionalLeft];
    } else if (name) {
        // The named entries run upwards from the one added last, so the last of one name wins.
        for (int i = m_nFirstNamed; i < m_nCapacity && !param; ++i)
            if (m_pParams[i].m_sName == name)
                param = &m_pParams[i];
    }

    if (!param) {
        if (bOptional || m_bDefaults)
            return nullptr;
        OutputErrorString("Parameter '%s' missing for function %s", NameText(name), FunctionName());
        Fail();
        return nullptr;
    }
    if (param->m_bUsed) {
        OutputErrorString("Parameter '%s' already used", NameText(name));
        Fail();
        return nullptr;
    }
    bool typeMatches =
        eType == CVeskGenericData::dtNone || eType == param->m_eType ||
        (eType == CVeskGenericData::dtObject && param->m_eType == CVeskGenericData::dtNull);
    param->m_bUsed = 1;
    if (!typeMatches) {
        OutputErrorString("Incorrect type for parameter '%s', was %s, expected %s for function %s",
                          NameText(name), CVeskGenericData::GetTypeName(param->m_eType),
                          CVeskGenericData::GetTypeName(eType), FunctionName());
        Fail();
        return nullptr;
    }
    return param;
}

// The common path of the value overloads: in a query call the parameter is only described.
CVeskCommandParam* CVeskCommandContext::FetchForValue(const char* name,
                                                      CVeskGenericData::DataType eType,
                                                      const char* queryType, int bByReference,
                                                      int bOptional)
{
    if (m_pQuery) {
        ReportParam(name, queryType, bByReference, bOptional);
        return nullptr;
    }
    return FetchParam(name, eType, bOptional);
}

int CVeskCommandContext::GetParam(const char* name, int* pTarget, int bOptional)
{
    CVeskCommandParam* param =
        FetchForValue(name, CVeskGenericData::dtBoolean, "Boolean", 0, bOptional);
    if (param) {
        *pTarget = static_cast<CVeskGdBoolean*>(param->m_pValue)->m_bValue;
        return 1;
    }
    if (m_pQuery || !m_bDefaults)
        return 0;
    *pTarget = 0;
    return 1;
}

int CVeskCommandContext::GetParam(const char* name, double* pTarget, int bOptional)
{
    CVeskCommandParam* param =
        FetchForValue(name, CVeskGenericData::dtNumber, "Number", 0, bOptional);
    if (param) {
        *pTarget = static_cast<CVeskGdDouble*>(param->m_pValue)->m_dValue;
        return 1;
    }
    if (m_pQuery || !m_bDefaults)
        return 0;
    *pTarget = 0.0;
    return 1;
}

int CVeskCommandContext::GetParam(const char* name, double** ppTarget, int bOptional)
{
    CVeskCommandParam* param =
        FetchForValue(name, CVeskGenericData::dtNumber, "Number", 1, bOptional);
    if (param) {
        *ppTarget = &static_cast<CVeskGdDouble*>(param->m_pValue)->m_dValue;
        return 1;
    }
    if (m_pQuery || !m_bDefaults)
        return 0;
    s_dSharedZero = 0.0;
    *ppTarget = &s_dSharedZero;
    return 1;
}

int CVeskCommandContext::GetParam(const char* name, CDorlString* pTarget, int bOptional)
{
    CVeskCommandParam* param =
        FetchForValue(name, CVeskGenericData::dtString, "String", 0, bOptional);
    if (param) {
        *pTarget = static_cast<CVeskGdString*>(param->m_pValue)->m_sValue;
        return 1;
    }
    if (m_pQuery || !m_bDefaults)
        return 0;
    pTarget->Empty();
    return 1;
}

int CVeskCommandContext::GetParam(const char* name, CDorlString** ppTarget, int bOptional)
{
    CVeskCommandParam* param =
        FetchForValue(name, CVeskGenericData::dtString, "String", 1, bOptional);
    if (param) {
        *ppTarget = &static_cast<CVeskGdString*>(param->m_pValue)->m_sValue;
        return 1;
    }
    if (m_pQuery || !m_bDefaults)
        return 0;
    s_sSharedEmpty.Empty();
    *ppTarget = &s_sSharedEmpty;
    return 1;
}

int CVeskCommandContext::GetParam(const char* name, CVeskGenericData** ppTarget, int bOptional)
{
    CVeskCommandParam* param = FetchForValue(name, CVeskGenericData::dtNone, "Any", 0, bOptional);
    if (param) {
        *ppTarget = param->m_pValue;
        param->m_pValue = nullptr;
        return 1;
    }
    if (m_pQuery || !m_bDefaults)
        return 0;
    *ppTarget = CVeskGdNone::Allocate();
    return 1;
}

CVeskCommandParam* CVeskCommandContext::FetchObject(const char* name, const char* queryType,
                                                    int bOptional, void** ppTarget, int& result)
{
    result = 0;
    if (m_pQuery) {
        ReportParam(name, queryType, 0, bOptional);
        return nullptr;
    }
    CVeskCommandParam* param = FetchParam(name, CVeskGenericData::dtObject, bOptional);
    if (!param && !m_bDefaults)
        return nullptr;
    if (*ppTarget) {
        static_cast<IUnknown*>(*ppTarget)->Release();
        *ppTarget = nullptr;
    }
    result = 1;
    // Null stands for no object wherever an object is asked.
    if (!param || param->m_eType == CVeskGenericData::dtNull)
        return nullptr;
    return param;
}

int CVeskCommandContext::GetParam(const char* name, IUnknown** ppTarget, int bOptional)
{
    int result;
    CVeskCommandParam* param =
        FetchObject(name, "IUnknown", bOptional, reinterpret_cast<void**>(ppTarget), result);
    if (!param)
        return result;
    IUnknown* object = static_cast<CVeskGdObject*>(param->m_pValue)->GetObjectA();
    if (object)
        object->AddRef();
    *ppTarget = object;
    return 1;
}

int CVeskCommandContext::GetParam(const char* name, IVeskCommand** ppTarget, int bOptional)
{
    int result;
    CVeskCommandParam* param =
        FetchObject(name, "IVeskCommand", bOptional, reinterpret_cast<void**>(ppTarget), result);
    if (!param)
        return result;
    CVeskGdObject* value = static_cast<CVeskGdObject*>(param->m_pValue);
    IVeskCommand* command = value->GetObjectA() ? value->GetIVeskCommand() : nullptr;
    if (command) {
        command->AddRef();
        *ppTarget = command;
        param->m_pValue = nullptr;
        value->Release();
        return 1;
    }
    if (!value->GetObjectA())
        return 1;
    OutputErrorString("Incorrect type for parameter '%s', expected IVeskCommand for function %s",
                      NameText(name), FunctionName());
    Fail();
    return 0;
}

int CVeskCommandContext::GetParam(const char* name, const GUID& iid, void** ppv, int bOptional,
                                  const CDorlString& sProperty)
{
    CDorlString interfaceText = VeskTranslateInterfaceId(iid);
    if (!sProperty.IsEmpty())
        interfaceText += "(" + sProperty + ")";
    int result;
    CVeskCommandParam* param = FetchObject(name, interfaceText, bOptional, ppv, result);
    if (!param)
        return result;
    CVeskGdObject* value = static_cast<CVeskGdObject*>(param->m_pValue);
    if (value->GetInterface(iid, ppv, sProperty) != E_NOINTERFACE || !value->GetObjectA())
        return 1;
    OutputErrorString("Incorrect type for parameter '%s', expected %s for function %s",
                      NameText(name), static_cast<const char*>(interfaceText), FunctionName());
    Fail();
    return 0;
}

int CVeskCommandContext::GetParam(const char* name, CVeskGdIndirect** ppTarget, int bOptional)
{
    CVeskCommandParam* param = FetchForValue(name, CVeskGenericData::dtNone, "Any", 1, bOptional);
    if (param) {
        if (param->m_pIndirect) {
            *ppTarget = param->m_pIndirect;
            param->m_pIndirect = nullptr;
            return 1;
        }
        // Passed directly: a new indirect that writes no further than itself.
        CVeskGdIndirect* indirect = CVeskGdIndirect::Allocate();
        indirect->SetValue(param->m_pValue);
        *ppTarget = indirect;
        return 1;
    }
    if (m_pQuery || !m_bDefaults)
        return 0;
    *ppTarget = CVeskGdIndirect::Allocate();
    return 1;
}

int CVeskCommandContext::CanProceed(int bExtraPositional)
{
    if (m_pQuery) {
        if (bExtraPositional)
            ReportParam("", "any", 0, 1);
        return 0;
    }
    if (!bExtraPositional && m_nPositionalLeft > 0) {
        OutputErrorString("%d excess positional parameters supplied to %s", m_nPositionalLeft,
                          FunctionName());
        Fail();
    }
    for (int i = m_nFirstNamed; i < m_nCapacity; ++i) {
        if (m_pParams[i].m_bUsed)
            continue;
        OutputErrorString("Parameter '%s' is not expected by function %s",
                          static_cast<const char*>(m_pParams[i].m_sName), FunctionName());
        Fail();
    }
    return m_bError ? 0 : 1;
}

void CVeskCommandContext::ReportParam(const char* name, const char* sTypeName, int bByReference,
                                      int bOptional)
{
    if (!m_pQuery || m_pQuery == DiscardQuery)
        return;
    // The query object fetches name, type, by-reference flag, optional flag: added in reverse.
    CVeskCommandContext report;
    report.AddParam(DorlPchNil, bOptional ? 1 : 0);
    report.AddParam(DorlPchNil, bByReference ? 1 : 0);
    report.AddParam(DorlPchNil, CDorlString(sTypeName));
    report.AddParam(DorlPchNil, CDorlString(NameText(name)));
    m_pQuery->CallMethod(&report);
}

// Return value ------------------------------------------------------------------------------------

void CVeskCommandContext::SetReturnValue(CVeskGenericData* value)
{
    value->AddRef();
    SetReturnValueNoRef(value);
}

void CVeskCommandContext::SetReturnValueNoRef(CVeskGenericData* value)
{
    CVeskGenericData* previous = m_pReturnValue;
    m_pReturnValue = value;
    if (previous)
        previous->Release();
}

CVeskGenericData* CVeskCommandContext::GetReturnValue()
{
    if (m_pReturnValue)
        m_pReturnValue->AddRef();
    return m_pReturnValue;
}

CVeskGenericData* CVeskCommandContext::GetReturnValueOnce()
{
    CVeskGenericData* value = m_pReturnValue;
    m_pReturnValue = nullptr;
    return value;
}

// Messages and transfer ---------------------------------------------------------------------------

void CVeskCommandContext::OutputErrorString(const char* format, ...)
{
    // vsnprintf truncates to the buffer, so a name of any length cannot overrun it.
    char text[2048];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    if (m_pfnErrorHandler)
        m_pfnErrorHandler(text);
    else
        DorlDump("%s\n", text);
}

void CVeskCommandContext::TransferContext(CVeskCommandContext* source)
{
    if (source->m_pParams != source->m_aInlineParams) {
        m_pParams = new CVeskCommandParam[source->m_nCapacity];
        m_nCapacity = source->m_nCapacity;
        m_nFirstNamed = m_nCapacity;
    }

    // The waiting positional entries keep their indices, so the stack goes on where it stood.
    int waiting = source->m_nPositionalLeft;
    for (int i = 0; i < waiting; ++i)
        m_pParams[i] = source->m_pParams[i];
    m_nPositional = waiting;
    m_nPositionalLeft = waiting;

    // The fetched positional entries stay with source, moved down to the bottom.
    int fetched = source->m_nPositional - waiting;
    for (int i = 0; i < fetched; ++i)
        source->m_pParams[i] = source->m_pParams[waiting + i];
    for (int i = fetched; i < source->m_nPositional; ++i)
        source->m_pParams[i] = CVeskCommandParam();
    source->m_nPositional = fetched;
    source->m_nPositionalLeft = 0;

    // Unfetched named entries move over; the fetched ones close up towards the top of source.
    for (int i = source->m_nFirstNamed; i < source->m_nCapacity; ++i) {
        if (source->m_pParams[i].m_bUsed)
            continue;
        --m_nFirstNamed;
        m_pParams[m_nFirstNamed] = source->m_pParams[i];
    }
    int keepTop = source->m_nCapacity;
    for (int i = source->m_nCapacity - 1; i >= source->m_nFirstNamed; --i) {
        if (!source->m_pParams[i].m_bUsed)
            continue;
        --keepTop;
        if (keepTop != i)
            source->m_pParams[keepTop] = source->m_pParams[i];
    }
    for (int i = source->m_nFirstNamed; i < keepTop; ++i)
        source->m_pParams[i] = CVeskCommandParam();
    source->m_nFirstNamed = keepTop;
}
