#include "dorl/DorlString.h"

#include <cstdint>
#include <cwchar>

namespace {

constexpr uint32_t kReplacementCharacter = 0xFFFD;

bool IsScalarValue(uint32_t codePoint)
{
    return codePoint <= 0x10FFFF && (codePoint < 0xD800 || codePoint > 0xDFFF);
}

int EncodeUtf8(uint32_t codePoint, char* out)
{
    if (!IsScalarValue(codePoint))
        codePoint = kReplacementCharacter;
    if (codePoint < 0x80) {
        out[0] = static_cast<char>(codePoint);
        return 1;
    }
    if (codePoint < 0x800) {
        out[0] = static_cast<char>(0xC0 | (codePoint >> 6));
        out[1] = static_cast<char>(0x80 | (codePoint & 0x3F));
        return 2;
    }
    if (codePoint < 0x10000) {
        out[0] = static_cast<char>(0xE0 | (codePoint >> 12));
        out[1] = static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
        out[2] = static_cast<char>(0x80 | (codePoint & 0x3F));
        return 3;
    }
    out[0] = static_cast<char>(0xF0 | (codePoint >> 18));
    out[1] = static_cast<char>(0x80 | ((codePoint >> 12) & 0x3F));
    out[2] = static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
    out[3] = static_cast<char>(0x80 | (codePoint & 0x3F));
    return 4;
}

// The byte count of the well-formed sequence at text, with its code point; 0 when the bytes
// there are not one (overlong forms and encoded surrogates included).
int DecodeUtf8(const unsigned char* text, int available, uint32_t& codePoint)
{
    unsigned char lead = text[0];
    int count;
    uint32_t smallest;
    if (lead < 0x80) {
        codePoint = lead;
        return 1;
    }
    if ((lead & 0xE0) == 0xC0) {
        count = 2;
        codePoint = lead & 0x1F;
        smallest = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
        count = 3;
        codePoint = lead & 0x0F;
        smallest = 0x800;
    } else if ((lead & 0xF8) == 0xF0) {
        count = 4;
        codePoint = lead & 0x07;
        smallest = 0x10000;
    } else {
        return 0;
    }
    if (count > available)
        return 0;
    for (int i = 1; i < count; ++i) {
        if ((text[i] & 0xC0) != 0x80)
            return 0;
        codePoint = (codePoint << 6) | (text[i] & 0x3F);
    }
    if (codePoint < smallest || !IsScalarValue(codePoint))
        return 0;
    return count;
}

char* PutUtf16Unit(char* out, uint32_t unit)
{
    out[0] = static_cast<char>(unit & 0xFF);
    out[1] = static_cast<char>(unit >> 8);
    return out + 2;
}

char* PutUtf16(char* out, uint32_t codePoint)
{
    if (codePoint < 0x10000)
        return PutUtf16Unit(out, codePoint);
    codePoint -= 0x10000;
    out = PutUtf16Unit(out, 0xD800 | (codePoint >> 10));
    return PutUtf16Unit(out, 0xDC00 | (codePoint & 0x3FF));
}

int HexDigitValue(char ch)
{
    if (ch >= '0' && ch <= '9')
        return ch - '0';
    if (ch >= 'a' && ch <= 'f')
        return ch - 'a' + 10;
    if (ch >= 'A' && ch <= 'F')
        return ch - 'A' + 10;
    return -1;
}

} // namespace

CDorlString::CDorlString(const wchar_t* text) : CDorlString()
{
    if (!text)
        return;
    size_t count = std::wcslen(text);
    if (count == 0 || count > 0x1FFFFFFF)
        return;
    char* out = GetBuffer(static_cast<int>(count * 4));
    int length = 0;
    for (size_t i = 0; i < count; ++i)
        length += EncodeUtf8(static_cast<uint32_t>(text[i]), out + length);
    ReleaseBuffer(length);
}

CDorlString CDorlString::ConvertToWide() const
{
    int length = GetLength();
    CDorlString wide;
    if (length == 0 || length > 0x3FFFFFFF)
        return wide;
    // Every input byte yields at most two output bytes: a four-byte sequence becomes two units.
    char* start = wide.GetBuffer(length * 2);
    char* out = start;
    const unsigned char* text = reinterpret_cast<const unsigned char*>(m_pchData);
    for (int i = 0; i < length;) {
        uint32_t codePoint;
        int count = DecodeUtf8(text + i, length - i, codePoint);
        if (count == 0) {
            codePoint = text[i];
            count = 1;
        }
        out = PutUtf16(out, codePoint);
        i += count;
    }
    wide.ReleaseBuffer(static_cast<int>(out - start));
    return wide;
}

int CDorlBinStringRaw::FromString(const char* text, int nBytes, unsigned char* out)
{
    if (nBytes <= 0)
        return 1;
    if (!text || !out)
        return 0;
    for (int i = 0; i < nBytes; ++i) {
        int high = HexDigitValue(text[2 * i]);
        if (high < 0)
            return 0;
        int low = HexDigitValue(text[2 * i + 1]);
        if (low < 0)
            return 0;
        out[i] = static_cast<unsigned char>(high << 4 | low);
    }
    return 1;
}
