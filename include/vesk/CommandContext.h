#pragma once

// The context of one method call. The caller fills it with parameters, hands it to CallMethod and
// reads the return value; the callee fetches its parameters by name and type and the context
// matches, checks and complains. A context is a stack object used for one call on one thread.

#include <dorl/DorlString.h>

#include "vesk/GenericData.h"
#include "vesk/VeskExport.h"

class CVeskCOMObject;
class CVeskGdIndirect;

struct VESK_API CVeskCommandParam {
    CDorlString m_sName;                    // empty for a positional parameter
    CVeskGenericData* m_pValue = nullptr;   // one reference; null once a fetch took it over
    CVeskGdIndirect* m_pIndirect = nullptr; // the caller's indirect, if it passed one
    int m_bUsed = 0;
    CVeskGenericData::DataType m_eType = CVeskGenericData::dtNone; // the type when added
};

class VESK_API CVeskCommandContext {
public:
    typedef void (*ErrorHandler)(const char* text);

    enum { InlineParams = 10 };

    CVeskCommandContext();
    ~CVeskCommandContext();
    CVeskCommandContext(const CVeskCommandContext&) = delete;
    CVeskCommandContext& operator=(const CVeskCommandContext&) = delete;

    // An empty name (DorlPchNil) makes a positional parameter. Positional parameters are fetched
    // last added first: to have the callee see a, b, c, add c, b, a.
    void AddParamNoRef(const CDorlString& name, CVeskGenericData* value); // takes the reference
    void AddParam(const CDorlString& name, CVeskGenericData* value);
    void AddParam(const CDorlString& name, double value);
    void AddParam(const CDorlString& name, const CDorlString& value);
    void AddParam(const CDorlString& name, int value);             // a Boolean, not a Number
    void AddParam(const CDorlString& name, IUnknown* value);       // an object value
    void AddParam(const CDorlString& name, CVeskCOMObject* value); // an object value
    int GetNumParams() const;

    void SetCalledFunctionName(const CDorlString& name);
    void SetErrorHandler(ErrorHandler handler);
    void FetchNamedOnly(int bNamedOnly);
    void DefaultParameters();
    // Makes this a query call: the callee's fetches describe its parameters to pQuery instead
    // of fetching; null discards the descriptions.
    void QueryParameters(IVeskCommand* pQuery);

    // Each yields 1 when the target was written. A missing optional parameter leaves the target
    // as it was, so the callee's default is what it put there first.
    int GetParam(const char* name, int* pTarget, int bOptional);
    int GetParam(const char* name, double* pTarget, int bOptional);
    // The by-reference forms point into the caller's value for as long as the context lives.
    int GetParam(const char* name, double** ppTarget, int bOptional);
    int GetParam(const char* name, CDorlString* pTarget, int bOptional);
    int GetParam(const char* name, CDorlString** ppTarget, int bOptional);
    // Any type; the reference moves to the caller.
    int GetParam(const char* name, CVeskGenericData** ppTarget, int bOptional);
    // Objects: the target is in-out, and what it held is released first. Null is accepted
    // wherever an object is asked and leaves the target null. The caller gets a reference.
    int GetParam(const char* name, IUnknown** ppTarget, int bOptional);
    int GetParam(const char* name, IVeskCommand** ppTarget, int bOptional);
    // The interface iid of the object, or of its property sProperty (see
    // CVeskGdObject::GetInterface).
    int GetParam(const char* name, const GUID& iid, void** ppv, int bOptional,
                 const CDorlString& sProperty);
    // The caller's indirect when it passed one, so that a write reaches the caller; else a new
    // indirect on the value. The caller gets the reference.
    int GetParam(const char* name, CVeskGdIndirect** ppTarget, int bOptional);

    // 1 when the function may go on. bExtraPositional accepts positional parameters left over.
    int CanProceed(int bExtraPositional);

    void SetReturnValue(CVeskGenericData* value);      // takes a reference of its own
    void SetReturnValueNoRef(CVeskGenericData* value); // takes over the caller's; null allowed
    CVeskGenericData* GetReturnValue();                // a new reference, or null
    CVeskGenericData* GetReturnValueOnce();            // the context's own reference

    // Bounded to 2048 bytes, terminator included; to the error handler, else to DorlDump.
    void OutputErrorString(const char* format, ...) __attribute__((format(printf, 2, 3)));

    // Moves the parameters of source that were not fetched into this new context.
    void TransferContext(CVeskCommandContext* source);

    // Describes one parameter to the query object of a query call.
    void ReportParam(const char* name, const char* sTypeName, int bByReference, int bOptional);

private:
    CVeskCommandParam* FetchParam(const char* name, CVeskGenericData::DataType eType,
                                  int bOptional);
    CVeskCommandParam* FetchForValue(const char* name, CVeskGenericData::DataType eType,
                                     const char* queryType, int bByReference, int bOptional);
    void Grow();
    // The common start of the object overloads: the entry of an object to deliver, or null
    // with the overload's result in result. The target is emptied whenever it will be written.
    CVeskCommandParam* FetchObject(const char* name, const char* queryType, int bOptional,
                                   void** ppTarget, int& result);
    void Fail();
    const char* FunctionName() const;

    CVeskCommandParam m_aInlineParams[InlineParams];
    CVeskCommandParam* m_pParams;
    int m_nCapacity;
    int m_nPositional;
    int m_nFirstNamed;
    int m_nPositionalLeft;
    unsigned char m_bNamedOnly;
    CVeskGenericData* m_pReturnValue;
    ErrorHandler m_pfnErrorHandler;
    IVeskCommand* m_pQuery;
    unsigned char m_bError;
    unsigned char m_bDefaults;
    CDorlString m_sFunctionName;
};
