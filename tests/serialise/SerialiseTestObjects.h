#pragma once

// What the stream tests share: bytes written as hex, a value as configuration text, and a small
// object of our own that serialises itself and is made again by name.

#include <cstdio>
#include <cstdlib>
#include <string>

#include "support/VeskTest.h"

namespace vesk_test {

// "0b 03 07" to the bytes it spells.
inline std::string Bytes(const char* hex)
{
    std::string bytes;
    for (const char* p = hex; *p;) {
        if (*p == ' ') {
            ++p;
            continue;
        }
        bytes += static_cast<char>(std::strtol(std::string(p, 2).c_str(), nullptr, 16));
        p += 2;
    }
    return bytes;
}

inline std::string Hex(const std::string& bytes)
{
    std::string hex;
    char digits[4];
    for (unsigned char byte : bytes) {
        std::snprintf(digits, sizeof digits, hex.empty() ? "%02x" : " %02x", byte);
        hex += digits;
    }
    return hex;
}

inline std::string Written(CVeskGdMemorySerialiserIO& io)
{
    return std::string(reinterpret_cast<const char*>(io.GetData()), io.GetSize());
}

// The value as the configuration writer puts it, on one line; "<null>" for no value.
inline std::string AsText(CVeskGenericData* value)
{
    if (!value)
        return "<null>";
    char* buffer = nullptr;
    size_t size = 0;
    FILE* stream = open_memstream(&buffer, &size);
    VeskWriteConfigStream(stream, value);
    std::fclose(stream);
    std::string text;
    for (size_t i = 0; i < size; ++i)
        if (buffer[i] != '\t')
            text += buffer[i] == '\n' ? ' ' : buffer[i];
    std::free(buffer);
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    return text;
}

// Reads one value from the bytes with a serialiser of the given format; "<null>" for none.
template <class Serialiser>
std::string ReadText(const std::string& bytes, IVeskCommand* creator = nullptr)
{
    CVeskGdMemorySerialiserIO io(bytes.data(), static_cast<int>(bytes.size()), creator);
    Serialiser serialiser(&io);
    Ref<CVeskGenericData> value(serialiser.ReadGdObject());
    return AsText(value.get());
}

template <class Serialiser> std::string WriteHex(CVeskGenericData* value, int expectedResult = 1)
{
    CVeskGdMemorySerialiserIO io;
    Serialiser serialiser(&io);
    EXPECT_EQ(serialiser.WriteGdObject(value), expectedResult);
    return Hex(Written(io));
}

// The bytes one call on a fresh serialiser of the format writes.
template <class Serialiser, class Write> std::string WrittenBy(Write write)
{
    CVeskGdMemorySerialiserIO io;
    Serialiser serialiser(&io);
    write(serialiser);
    return Hex(Written(io));
}

// A point with a label: its data are a double, a long, an unsigned long, a Boolean and a string,
// each read with its type checked. What it does on a stream can be made to fail or to replace
// it, and its creation name can be set, blank too.
class CTestPoint : public CVeskCOMObject {
    VESK_DECLARE_INTERFACE_MAP(CTestPoint)

    VESK_BEGIN_INTERFACE_PART(VeskSerialise, IVeskSerialise)
        int STDMETHODCALLTYPE Serialise(CVeskGdSerialiser * serialiser) override
        {
            CTestPoint* point = Owner();
            if (point->m_bFailSerialise)
                return 0;
            serialiser->WriteDouble(point->m_dX, true);
            serialiser->WriteLong(point->m_nY, true);
            serialiser->WriteUnsignedLong(static_cast<long>(point->m_nZ), true);
            serialiser->WriteBoolean(point->m_bShown, true);
            serialiser->WriteString(point->m_sLabel, true);
            return 1;
        }
        int STDMETHODCALLTYPE Deserialise(CVeskGdSerialiser * serialiser,
                                          CVeskGenericData * *replacement) override
        {
            CTestPoint* point = Owner();
            if (point->m_pReplacement) {
                point->m_pReplacement->AddRef();
                *replacement = point->m_pReplacement;
            }
            unsigned long z = 0;
            return serialiser->ReadDouble(point->m_dX, 1) && serialiser->ReadLong(point->m_nY, 1) &&
                   serialiser->ReadUnsignedLong(z, 1) && (point->m_nZ = z, true) &&
                   serialiser->ReadBoolean(point->m_bShown, 1) &&
                   serialiser->ReadString(point->m_sLabel, 1);
        }
        CDorlString STDMETHODCALLTYPE GetCreationName() override { return Owner()->m_sName; }
    VESK_END_INTERFACE_PART(VeskSerialise)

    ~CTestPoint() override
    {
        if (m_pReplacement)
            m_pReplacement->Release();
    }

    // A new object value on a new point.
    static CVeskGenericData* Make(const CDorlString& name)
    {
        return MakeWith(name, 0, 0, 0, 0, "");
    }
    static CVeskGenericData* MakeWith(const CDorlString& name, double x, long y, unsigned long z,
                                      int shown, const char* label)
    {
        CTestPoint* point = new CTestPoint;
        point->m_sName = name;
        point->m_dX = x;
        point->m_nY = y;
        point->m_nZ = z;
        point->m_bShown = shown;
        point->m_sLabel = label;
        CVeskGenericData* value = CVeskGdObject::Allocate(point);
        point->Release();
        return value;
    }
    // The point inside an object value that holds one.
    static CTestPoint* Of(CVeskGenericData* value)
    {
        void* found = nullptr;
        static_cast<CVeskGdObject*>(value)->GetInterface(IID_IVeskSerialise, &found, DorlPchNil);
        XVeskSerialiseObj* face =
            static_cast<XVeskSerialiseObj*>(static_cast<IVeskSerialise*>(found));
        face->Release();
        return face->Owner();
    }
    std::string Describe() const
    {
        return std::to_string(m_dX) + "," + std::to_string(m_nY) + "," + std::to_string(m_nZ) +
               "," + std::to_string(m_bShown) + "," + std::string(m_sLabel);
    }

    CDorlString m_sName = "Point";
    double m_dX = 0;
    long m_nY = 0;
    unsigned long m_nZ = 0;
    int m_bShown = 0;
    CDorlString m_sLabel;
    int m_bFailSerialise = 0;
    CVeskGenericData* m_pReplacement = nullptr;
};

// An object with no serialised form at all.
class CTestOpaque : public CVeskCOMObject {
    VESK_DECLARE_INTERFACE_MAP(CTestOpaque)
    VESK_BEGIN_INTERFACE_PART(VeskCommand, IVeskCommand)
        CVeskGenericData* STDMETHODCALLTYPE GetProperty(const CDorlString&, int) override
        {
            return nullptr;
        }
        int STDMETHODCALLTYPE SetProperty(const CDorlString&, CVeskGenericData*) override
        {
            return 0;
        }
        int STDMETHODCALLTYPE CallMethod(CVeskCommandContext*) override { return 0; }
        CVeskPropertyEnum* STDMETHODCALLTYPE GetPropertyEnumerator() override { return nullptr; }
    VESK_END_INTERFACE_PART(VeskCommand)

public:
    static CVeskGenericData* Make(const CDorlString&)
    {
        CTestOpaque* object = new CTestOpaque;
        CVeskGenericData* value = CVeskGdObject::Allocate(object);
        object->Release();
        return value;
    }
};

// A creator that knows "Point", "Swap" (a point replaced by a string when read) and "Opaque"
// besides "AssocArray".
CVeskGdObjectCreator* MakeTestCreator();

} // namespace vesk_test
