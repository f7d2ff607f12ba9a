#pragma once

#include "DorlExport.h"
#include "DorlString.h"

#include <cstdint>

// A moment as seconds since 1970 (UTC). Formatting uses strftime forms; a moment the C
// library cannot represent formats as empty text.
class DORL_API CDorlTime {
public:
    explicit CDorlTime(int64_t secondsSince1970 = 0);
    int64_t GetTime() const { return m_time; }
    CDorlString Format(const char* format) const;
    CDorlString FormatGmt(const char* format) const;

private:
    int64_t m_time;
};

// A signed duration in seconds. The parts of a negative span are negative; Format writes a
// leading '-' and the parts of its magnitude.
class DORL_API CDorlTimeSpan {
public:
    explicit CDorlTimeSpan(int64_t seconds = 0);
    int64_t GetTotalSeconds() const { return m_seconds; }
    int64_t GetDays() const;
    int GetHours() const;
    int GetMinutes() const;
    int GetSeconds() const;
    // %D total days, %H hours, %M minutes, %S seconds (two digits each), %% a percent sign.
    CDorlString Format(const char* format) const;

private:
    int64_t m_seconds;
};
