#pragma once

// Numbers of scripts become integers the way the platform's truncating instruction makes them:
// toward zero, and out of range (or not a number) to the "integer indefinite" value, the lowest
// number of the width. No conversion here is undefined, whatever the script passed.

#include <cstdint>

namespace vesk {

inline int64_t TruncateTo64(double value)
{
    if (!(value > -9223372036854775808.0 && value < 9223372036854775808.0))
        return INT64_MIN;
    return static_cast<int64_t>(value);
}

inline int TruncateToInt(double value)
{
    if (!(value > -2147483649.0 && value < 2147483648.0))
        return INT32_MIN;
    return static_cast<int>(value);
}

} // namespace vesk
