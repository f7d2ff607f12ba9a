#include "dorl/DorlTime.h"

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <limits>

namespace {

constexpr int64_t kSecondsPerMinute = 60;
constexpr int64_t kSecondsPerHour = 60 * kSecondsPerMinute;
constexpr int64_t kSecondsPerDay = 24 * kSecondsPerHour;
// Longer results than this are taken as a runaway format rather than grown further.
constexpr size_t kMaxFormattedLength = 65536;

bool ToTimeT(int64_t seconds, std::time_t& out)
{
    // time_t is 32 bits in some i386 configurations.
    if (seconds < std::numeric_limits<std::time_t>::min() ||
        seconds > std::numeric_limits<std::time_t>::max())
        return false;
    out = static_cast<std::time_t>(seconds);
    return true;
}

CDorlString FormatBrokenDownTime(const std::tm& parts, const char* format)
{
    if (!format || !*format)
        return CDorlString();
    // strftime yields 0 both for an empty result and for a too small buffer; a trailing space
    // makes every result non-empty, so 0 can only mean "grow".
    CDorlString padded = CDorlString(format) + " ";
    for (size_t capacity = 128; capacity <= kMaxFormattedLength; capacity *= 2) {
        CDorlString text;
        char* buffer = text.GetBuffer(static_cast<int>(capacity));
        size_t length = std::strftime(buffer, capacity, padded, &parts);
        if (length > 0) {
            text.ReleaseBuffer(static_cast<int>(length - 1));
            return text;
        }
        text.ReleaseBuffer(0);
    }
    return CDorlString();
}

CDorlString FormatTime(int64_t seconds, const char* format, bool local)
{
    std::time_t when;
    std::tm parts;
    if (!ToTimeT(seconds, when))
        return CDorlString();
    std::tm* converted = local ? localtime_r(&when, &parts) : gmtime_r(&when, &parts);
    if (!converted)
        return CDorlString();
    return FormatBrokenDownTime(parts, format);
}

void AppendNumber(CDorlString& text, uint64_t value, bool twoDigits)
{
    char digits[24];
    std::snprintf(digits, sizeof digits, twoDigits ? "%02" PRIu64 : "%" PRIu64, value);
    text += digits;
}

} // namespace

CDorlTime::CDorlTime(int64_t secondsSince1970) : m_time(secondsSince1970) {}

CDorlString CDorlTime::Format(const char* format) const { return FormatTime(m_time, format, true); }

CDorlString CDorlTime::FormatGmt(const char* format) const
{
    return FormatTime(m_time, format, false);
}

CDorlTimeSpan::CDorlTimeSpan(int64_t seconds) : m_seconds(seconds) {}

int64_t CDorlTimeSpan::GetDays() const { return m_seconds / kSecondsPerDay; }

int CDorlTimeSpan::GetHours() const { return static_cast<int>(m_seconds / kSecondsPerHour % 24); }

int CDorlTimeSpan::GetMinutes() const
{
    return static_cast<int>(m_seconds / kSecondsPerMinute % 60);
}

int CDorlTimeSpan::GetSeconds() const { return static_cast<int>(m_seconds % 60); }

CDorlString CDorlTimeSpan::Format(const char* format) const
{
    CDorlString text;
    if (!format)
        return text;
    // The magnitude as unsigned, so that the most negative span has one too.
    uint64_t magnitude = m_seconds < 0 ? 0 - static_cast<uint64_t>(m_seconds) : m_seconds;
    if (m_seconds < 0)
        text += '-';
    for (const char* at = format; *at; ++at) {
        if (*at != '%' || at[1] == 0) {
            text += *at;
            continue;
        }
        switch (*++at) {
        case 'D':
            AppendNumber(text, magnitude / kSecondsPerDay, false);
            break;
        case 'H':
            AppendNumber(text, magnitude / kSecondsPerHour % 24, true);
            break;
        case 'M':
            AppendNumber(text, magnitude / kSecondsPerMinute % 60, true);
            break;
        case 'S':
            AppendNumber(text, magnitude % 60, true);
            break;
        case '%':
            text += '%';
            break;
        default:
            // An unknown code is kept as written.
            text += '%';
            text += *at;
            break;
        }
    }
    return text;
}
