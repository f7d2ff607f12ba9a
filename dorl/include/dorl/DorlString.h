#pragma once

#include <cstdint>
#include <cstring>

#include "DorlExport.h"

namespace dorl_detail {
// The text of the one shared empty block: every empty string points at it, so making and
// dropping empty strings costs no call and no count.
extern DORL_API char* const g_pchEmptyText;
} // namespace dorl_detail

// Narrow text in a shared, reference-counted block. Copies share the block and only the side
// that changes pays for a private copy, so passing strings by value is cheap. The bytes may
// hold zeros; the text is always followed by two zero bytes, so a UTF-16 payload is terminated
// too. The object is exactly one pointer wide.
class DORL_API CDorlString {
public:
    CDorlString() noexcept : m_pchData(dorl_detail::g_pchEmptyText) {}
    CDorlString(const char* text);
    CDorlString(const char* text, int length);
    // wchar_t text is UTF-32 here; it is stored as UTF-8.
    CDorlString(const wchar_t* text);
    CDorlString(const CDorlString& other);
    CDorlString(CDorlString&& other) noexcept;
    ~CDorlString()
    {
        if (m_pchData != dorl_detail::g_pchEmptyText)
            Release();
    }

    CDorlString& operator=(const char* text);
    CDorlString& operator=(const CDorlString& other);
    CDorlString& operator=(CDorlString&& other) noexcept;

    operator const char*() const noexcept { return m_pchData; }
    // Out-of-range indices read as zero rather than running off the block.
    char operator[](int index) const;

    // The block header before the text holds the count, then the length, as 32-bit fields.
    int GetLength() const noexcept { return reinterpret_cast<const int32_t*>(m_pchData)[-3]; }
    bool IsEmpty() const noexcept { return GetLength() == 0; }
    void Empty();

    // Raw writing: the buffer stays private to this string until ReleaseBuffer, even if it is
    // copied meanwhile. ReleaseBuffer(-1) takes the text up to the first zero.
    char* GetBuffer(int minLength);
    char* GetBufferSetLength(int length);
    void ReleaseBuffer(int newLength = -1);

    // The const char* forms compare C text; the string forms compare every byte. Bytes are
    // unsigned and a prefix sorts first.
    int Compare(const char* text) const;
    int Compare(const CDorlString& other) const;
    int CompareNoCase(const char* text) const;
    int CompareNoCase(const CDorlString& other) const;

    void Format(const char* format, ...) __attribute__((format(printf, 2, 3)));

    // The text (read as UTF-8) as UTF-16LE code units; GetLength counts bytes, two per unit.
    CDorlString ConvertToWide() const;

    CDorlString& operator+=(const CDorlString& other);
    CDorlString& operator+=(const char* text);
    CDorlString& operator+=(char ch);

private:
    void Release() noexcept;
    void AssignCopy(const char* text, int length);
    void Append(const char* text, int length);
    void PrepareToWrite(int capacity);

    char* m_pchData;
};

DORL_API CDorlString operator+(const CDorlString& left, const CDorlString& right);
DORL_API CDorlString operator+(const CDorlString& left, const char* right);
DORL_API CDorlString operator+(const char* left, const CDorlString& right);
// Without this, string + 'c' would quietly become pointer arithmetic on the C text.
DORL_API CDorlString operator+(const CDorlString& left, char right);

// Inline: every map keyed by string compares through these.
inline bool operator==(const CDorlString& left, const CDorlString& right)
{
    int length = left.GetLength();
    return length == right.GetLength() &&
           std::memcmp(static_cast<const char*>(left), static_cast<const char*>(right),
                       static_cast<size_t>(length)) == 0;
}
inline bool operator!=(const CDorlString& left, const CDorlString& right)
{
    return !(left == right);
}
// Unsigned bytes, all of them; a prefix sorts first.
inline bool operator<(const CDorlString& left, const CDorlString& right)
{
    int leftLength = left.GetLength();
    int rightLength = right.GetLength();
    int common = leftLength < rightLength ? leftLength : rightLength;
    int order = std::memcmp(static_cast<const char*>(left), static_cast<const char*>(right),
                            static_cast<size_t>(common));
    return order < 0 || (order == 0 && leftLength < rightLength);
}
DORL_API bool operator==(const CDorlString& left, const char* right);
DORL_API bool operator!=(const CDorlString& left, const char* right);
DORL_API bool operator==(const char* left, const CDorlString& right);
DORL_API bool operator!=(const char* left, const CDorlString& right);

// The empty string, usable wherever a const CDorlString& is wanted without a temporary.
extern DORL_API const CDorlString DorlPchNil;

class DORL_API CDorlBinStringRaw {
public:
    // Decodes nBytes bytes from two hex digits each; 0 at the first bad digit, with out
    // written up to there.
    static int FromString(const char* text, int nBytes, unsigned char* out);
};
