#pragma once

// What the two stream formats share: the byte order of numbers, counters that step down on every
// way out of a call, and the meeting points with objects.

#include <cstdint>
#include <cstring>

#include <dorl/DorlDiag.h>

#include "vesk/GdObject.h"
#include "vesk/GdSerialiser.h"
#include "vesk/GdVector.h"

namespace vesk::serialise {

// Both formats are little-endian whatever the machine.
inline void PutLE32(unsigned char* out, uint32_t value)
{
    for (int i = 0; i < 4; ++i)
        out[i] = static_cast<unsigned char>(value >> (8 * i));
}

inline uint32_t GetLE32(const unsigned char* in)
{
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i)
        value |= static_cast<uint32_t>(in[i]) << (8 * i);
    return value;
}

inline void PutDouble(unsigned char* out, double value)
{
    uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    for (int i = 0; i < 8; ++i)
        out[i] = static_cast<unsigned char>(bits >> (8 * i));
}

inline double GetDouble(const unsigned char* in)
{
    uint64_t bits = 0;
    for (int i = 0; i < 8; ++i)
        bits |= static_cast<uint64_t>(in[i]) << (8 * i);
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

// One level of a depth counter for the length of a scope.
class Level {
public:
    explicit Level(int& depth) : m_depth(depth) { ++m_depth; }
    ~Level() { --m_depth; }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;

private:
    int& m_depth;
};

// Strings are read in steps of this size, so that a damaged length costs memory only as far as
// the data lasts.
constexpr int kStringStep = 4 * 1024 * 1024;
// The longest text a CDorlString holds: a longer length cannot be a string of this process.
constexpr uint32_t kLongestString = 0x7FFFFF00u;
// A vector is made this large at first whatever its count says; reading grows it past this.
constexpr int kInitialVectorLimit = 5000;

// What a vector of that count is made with before its elements are read: a damaged count must
// not reserve memory that no data backs, so past the first elements the vector grows as they are
// read.
inline int InitialVectorSize(int64_t count)
{
    if (count <= 0)
        return 0;
    return count < kInitialVectorLimit ? static_cast<int>(count) : kInitialVectorLimit;
}

// The object's IVeskSerialise with a reference, or null when it has none.
IVeskSerialise* SerialiseOf(CVeskGdObject* object);

// Makes the object of that creation name through the stream's creator: a new reference to an
// object value, or null with the reason reported.
CVeskGenericData* CreateObject(CVeskGdSerialiserIO* io, const CDorlString& name);

// Reads size bytes from the stream, setting endOfData once it has said that its data ended.
inline int ReadBytes(CVeskGdSerialiserIO* io, void* data, int size, int& endOfData)
{
    if (io->Read(data, size))
        return 1;
    endOfData = 1;
    return 0;
}

// Hands a value that was read to the caller, or drops it when the caller only skips.
inline int Deliver(CVeskGenericData* value, CVeskGenericData** out)
{
    if (out)
        *out = value;
    else if (value)
        value->Release();
    return 1;
}

// Writes a value through the serialiser's own typed writes, the same in every format but for the
// two values without a payload: Null and None go to writeMarker(type), each format's own form.
// 0 for a value that cannot be written.
template <class MarkerFn>
int WriteValue(CVeskGdSerialiser* out, CVeskGenericData* value, MarkerFn writeMarker)
{
    if (!value)
        return 0;
    switch (value->GetType()) {
    case CVeskGenericData::dtNull:
    case CVeskGenericData::dtNone:
        writeMarker(value->GetType());
        return 1;
    case CVeskGenericData::dtBoolean:
        out->WriteBoolean(static_cast<CVeskGdBoolean*>(value)->m_bValue, true);
        return 1;
    case CVeskGenericData::dtNumber:
        out->WriteDouble(static_cast<CVeskGdDouble*>(value)->m_dValue, true);
        return 1;
    case CVeskGenericData::dtString:
        out->WriteString(static_cast<CVeskGdString*>(value)->m_sValue, true);
        return 1;
    case CVeskGenericData::dtVector: {
        CVeskGdVector* vector = static_cast<CVeskGdVector*>(value);
        int size = vector->GetSize();
        out->WriteVectorHeader(size);
        for (int i = 0; i < size; ++i) {
            CVeskGenericData* element = vector->GetElement(i);
            int written = out->WriteGdObject(element);
            element->Release();
            if (!written) {
                DorlDump("Could not serialise vector element at position (%d).\n", i + 1);
                return 0;
            }
        }
        return 1;
    }
    case CVeskGenericData::dtObject:
        return out->WriteObject(static_cast<CVeskGdObject*>(value));
    default:
        return 0;
    }
}

// Reads length bytes into out in steps; false when the data ended first, with out as
// ReleaseBuffer(-1) leaves it.
template <class ReadFn> bool ReadStringBytes(CDorlString& out, uint32_t length, ReadFn read)
{
    out.Empty();
    int have = 0;
    const int total = static_cast<int>(length);
    while (have < total) {
        int step = total - have < kStringStep ? total - have : kStringStep;
        char* buffer = out.GetBufferSetLength(have + step);
        if (!read(buffer + have, step)) {
            // What was read stays up to the first zero byte; the unread rest is never looked at.
            buffer[have] = 0;
            out.ReleaseBuffer(-1);
            return false;
        }
        have += step;
        out.ReleaseBuffer(have);
    }
    return true;
}

// Truncates a double to 32 bits as a 32-bit program's conversion does for every value in range;
// values that no 64-bit integer holds give 0 rather than undefined behaviour.
inline uint32_t TruncateTo32(double value)
{
    if (!(value > -9.2e18 && value < 9.2e18))
        return 0;
    return static_cast<uint32_t>(static_cast<uint64_t>(static_cast<int64_t>(value)));
}

} // namespace vesk::serialise
