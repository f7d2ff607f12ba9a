#pragma once

// The one call protocol: every value, function, component and automation object answers these
// four operations by name.

#include <dorl/DorlString.h>
#include <standin/Unknown.h>

#include "vesk/VeskExport.h"

class CVeskGenericData;
class CVeskCommandContext;

// Lists the properties of an object. Not counted: whoever asked for it ends it with Delete.
class VESK_API CVeskPropertyEnum {
public:
    enum ReadOnlyStatus { ReadOnly = 0, ReadWrite = 1, Notified = 2 };

    virtual void Reset() = 0;
    // 1 with the four targets describing one property; 0 at the end, targets untouched.
    virtual int Next(CDorlString* pName, CDorlString* pDescription, CDorlString* pType,
                     ReadOnlyStatus* pStatus) = 0;
    // The value of the property that Next described last, as a new reference, for enumerators
    // over stored values; 0 from enumerators that only describe.
    virtual int GetCurrentValue(CVeskGenericData** ppValue) = 0;
    virtual void Delete() = 0;

protected:
    virtual ~CVeskPropertyEnum() = default;
};

struct IVeskCommand : public IUnknown {
    // A new reference for the caller, or null. With bByRef the caller asks for an indirect
    // value onto the property's storage; only containers of named values give one.
    virtual CVeskGenericData* STDMETHODCALLTYPE GetProperty(const CDorlString& name,
                                                            int bByRef) = 0;
    // 1 when stored. The caller keeps its reference.
    virtual int STDMETHODCALLTYPE SetProperty(const CDorlString& name, CVeskGenericData* value) = 0;
    // 0 when the object cannot be called. A call with bad parameters still yields 1: the
    // complaints travel through the context.
    virtual int STDMETHODCALLTYPE CallMethod(CVeskCommandContext* context) = 0;
    virtual CVeskPropertyEnum* STDMETHODCALLTYPE GetPropertyEnumerator() = 0;

protected:
    ~IVeskCommand() = default;
};
