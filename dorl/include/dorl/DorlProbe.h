#pragma once

#include "DorlExport.h"
#include "DorlString.h"

// A named value that a monitor can find by path and name for as long as the variable lives.
class DORL_API CDorlProberVariable {
public:
    CDorlProberVariable(const char* path, const char* name);
    virtual ~CDorlProberVariable();
    CDorlProberVariable(const CDorlProberVariable&) = delete;
    CDorlProberVariable& operator=(const CDorlProberVariable&) = delete;

    const char* GetPath() const { return m_path; }
    const char* GetName() const { return m_name; }
    virtual long GetValue() const = 0;

private:
    CDorlString m_path;
    CDorlString m_name;
};

// A long counter that reads and writes like a plain long.
class DORL_API CDorlProbedLong : public CDorlProberVariable {
public:
    // tree names the monitor's grouping; the registry is flat, so it is not kept.
    CDorlProbedLong(const char* path, const char* name, long initial, void* tree);
    operator long&() { return m_value; }
    long GetValue() const override;

private:
    long m_value;
};

// The most recently created live variable of that path and name, or null.
DORL_API CDorlProberVariable* DorlFindProbe(const char* path, const char* name);
