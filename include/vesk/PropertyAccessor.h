#pragma once

// Plain numbers and strings out of, and into, the properties of an object that answers the call
// protocol, with no value objects or reference counts in sight. A name is one property of the
// object. An index below 0 addresses the property itself; 0 or above, that element of a vector
// property. Every operation yields 1 for done and 0 for not done (GetType: -1), and there is no
// conversion between types: GetString of a Number fails.

#include <dorl/DorlString.h>

#include "vesk/Command.h"
#include "vesk/CommandContext.h"
#include "vesk/VeskExport.h"

class CVeskGenericData;

class VESK_API CVeskPropertyAccessor {
public:
    // No reference is taken: the object must outlive the accessor's use of it.
    CVeskPropertyAccessor(IVeskCommand* pCommand);

    void SetCommand(IVeskCommand* pCommand);
    IVeskCommand* GetCommand();

    // The DataType number of the property or element, or -1.
    int GetType(const CDorlString& name, const int& nIndex);

    int GetString(const CDorlString& name, CDorlString& value, const int& nIndex);
    int GetBool(const CDorlString& name, int& value, const int& nIndex);
    int GetDouble(const CDorlString& name, double& value, const int& nIndex);
    // The Number truncated toward zero.
    int GetLong(const CDorlString& name, long& value, const int& nIndex);

    // With an index the vector is changed, grown if the index is at or past its end, and written
    // back; the result is that of changing the element, whether or not the object took the
    // vector back.
    int SetString(const CDorlString& name, const CDorlString& value, const int& nIndex);
    int SetBool(const CDorlString& name, const int& value, const int& nIndex);
    int SetDouble(const CDorlString& name, const double& value, const int& nIndex);
    // Goes in as a Number.
    int SetLong(const CDorlString& name, const long& value, const int& nIndex);

    // Calls the Object property with the caller's context; 1 once it was called, whatever the
    // call yielded.
    int CallFunction(const CDorlString& name, CVeskCommandContext& context);
    // nLength is -1 unless the property is a Vector.
    int GetVectorLength(const CDorlString& name, int& nLength);

private:
    CVeskGenericData* Read(const CDorlString& name, int nIndex);
    int Write(const CDorlString& name, CVeskGenericData* value, int nIndex);

    IVeskCommand* m_pCommand;
};
