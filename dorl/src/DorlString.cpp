#include "dorl/DorlString.h"

#include "DorlFormat.h"
#include "dorl/DorlPool.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>

namespace {

// Leaves room for the block header and the terminators in a 32-bit size.
constexpr int kMaxLength = 0x7FFFFF00;

// Sits just before the text of every string. The capacity does not count the two zero bytes
// that always follow the text.
struct StringBlock {
    std::atomic<int32_t> refs;
    int32_t length;
    int32_t capacity;
    // A GetBuffer is outstanding: the owner may be writing through a raw pointer, so the block
    // is never shared until ReleaseBuffer.
    int32_t locked;

    char* Text() { return reinterpret_cast<char*>(this + 1); }
};

struct EmptyStringBlock {
    StringBlock header;
    char text[2];
};

// Every empty string points here, so empty strings never allocate. It is never counted, written
// or freed.
constinit EmptyStringBlock s_emptyBlock{{1, 0, 0, 0}, {0, 0}};
static_assert(offsetof(EmptyStringBlock, text) == sizeof(StringBlock));
// The header's inline GetLength reads the length three fields before the text.
static_assert(offsetof(StringBlock, length) == sizeof(StringBlock) - 3 * sizeof(int32_t));

char* EmptyText() { return s_emptyBlock.text; }

bool IsEmptyBlock(const char* text) { return text == s_emptyBlock.text; }

StringBlock* BlockOf(const char* text)
{
    return reinterpret_cast<StringBlock*>(const_cast<char*>(text)) - 1;
}

bool IsUnique(const char* text)
{
    if (IsEmptyBlock(text))
        return false;
    StringBlock* block = BlockOf(text);
    return block->locked || block->refs.load(std::memory_order_acquire) == 1;
}

void SetLength(char* text, int length)
{
    BlockOf(text)->length = length;
    text[length] = 0;
    text[length + 1] = 0;
}

size_t BlockSize(int capacity) { return sizeof(StringBlock) + static_cast<size_t>(capacity) + 2; }

char* AllocateText(int capacity)
{
    void* memory = DorlPoolAllocate(BlockSize(capacity));
    StringBlock* block = new (memory) StringBlock{1, 0, capacity, 0};
    char* text = block->Text();
    SetLength(text, 0);
    return text;
}

char* CopyText(const char* source, int length, int capacity)
{
    char* text = AllocateText(std::max(length, capacity));
    std::memcpy(text, source, static_cast<size_t>(length));
    SetLength(text, length);
    return text;
}

void ReleaseText(char* text)
{
    if (IsEmptyBlock(text))
        return;
    StringBlock* block = BlockOf(text);
    if (!block->locked && block->refs.fetch_sub(1, std::memory_order_acq_rel) != 1)
        return;
    size_t size = BlockSize(block->capacity);
    block->~StringBlock();
    DorlPoolFree(block, size);
}

char* ShareText(char* text)
{
    if (IsEmptyBlock(text))
        return text;
    StringBlock* block = BlockOf(text);
    if (block->locked)
        return CopyText(text, block->length, block->length);
    block->refs.fetch_add(1, std::memory_order_relaxed);
    return text;
}

int LengthOf(const char* text)
{
    if (!text)
        return 0;
    return static_cast<int>(strnlen(text, kMaxLength));
}

int GrowCapacity(int64_t needed)
{
    return static_cast<int>(
        std::min<int64_t>(std::max<int64_t>(needed + needed / 2, 16), kMaxLength));
}

int Sign(int value) { return (value > 0) - (value < 0); }

int CompareBytes(const char* left, int leftLength, const char* right, int rightLength)
{
    int common = std::min(leftLength, rightLength);
    int result = common > 0 ? std::memcmp(left, right, static_cast<size_t>(common)) : 0;
    if (result != 0)
        return Sign(result);
    return Sign(leftLength - rightLength);
}

int FoldCase(unsigned char ch) { return ch >= 'A' && ch <= 'Z' ? ch + ('a' - 'A') : ch; }

int CompareBytesNoCase(const char* left, int leftLength, const char* right, int rightLength)
{
    int common = std::min(leftLength, rightLength);
    for (int i = 0; i < common; ++i) {
        int difference = FoldCase(static_cast<unsigned char>(left[i])) -
                         FoldCase(static_cast<unsigned char>(right[i]));
        if (difference != 0)
            return Sign(difference);
    }
    return Sign(leftLength - rightLength);
}

CDorlString Concatenate(const char* left, int leftLength, const char* right, int rightLength)
{
    CDorlString result;
    if (int64_t(leftLength) + rightLength > kMaxLength)
        return result;
    int length = leftLength + rightLength;
    char* buffer = result.GetBufferSetLength(length);
    std::memcpy(buffer, left, static_cast<size_t>(leftLength));
    std::memcpy(buffer + leftLength, right, static_cast<size_t>(rightLength));
    result.ReleaseBuffer(length);
    return result;
}

} // namespace

const CDorlString DorlPchNil;

CDorlString::CDorlString(const char* text) : m_pchData(EmptyText())
{
    AssignCopy(text, LengthOf(text));
}

CDorlString::CDorlString(const char* text, int length) : m_pchData(EmptyText())
{
    if (text)
        AssignCopy(text, std::min(length, kMaxLength));
}

CDorlString::CDorlString(const CDorlString& other) : m_pchData(ShareText(other.m_pchData)) {}

CDorlString::CDorlString(CDorlString&& other) noexcept : m_pchData(other.m_pchData)
{
    other.m_pchData = EmptyText();
}

char* const dorl_detail::g_pchEmptyText = s_emptyBlock.text;

void CDorlString::Release() noexcept { ReleaseText(m_pchData); }

CDorlString& CDorlString::operator=(const char* text)
{
    AssignCopy(text, LengthOf(text));
    return *this;
}

CDorlString& CDorlString::operator=(const CDorlString& other)
{
    if (m_pchData == other.m_pchData)
        return *this;
    char* shared = ShareText(other.m_pchData);
    ReleaseText(m_pchData);
    m_pchData = shared;
    return *this;
}

CDorlString& CDorlString::operator=(CDorlString&& other) noexcept
{
    if (this == &other)
        return *this;
    ReleaseText(m_pchData);
    m_pchData = other.m_pchData;
    other.m_pchData = EmptyText();
    return *this;
}

char CDorlString::operator[](int index) const
{
    if (index < 0 || index >= GetLength())
        return 0;
    return m_pchData[index];
}

void CDorlString::Empty()
{
    ReleaseText(m_pchData);
    m_pchData = EmptyText();
}

char* CDorlString::GetBuffer(int minLength)
{
    PrepareToWrite(std::clamp(minLength, 0, kMaxLength));
    BlockOf(m_pchData)->locked = 1;
    return m_pchData;
}

char* CDorlString::GetBufferSetLength(int length)
{
    length = std::clamp(length, 0, kMaxLength);
    GetBuffer(length);
    SetLength(m_pchData, length);
    return m_pchData;
}

void CDorlString::ReleaseBuffer(int newLength)
{
    if (IsEmptyBlock(m_pchData))
        return;
    // Only a misuse reaches here with a shared block; it must not write into the other owners.
    PrepareToWrite(0);
    StringBlock* block = BlockOf(m_pchData);
    int length = newLength < 0 ? static_cast<int>(strnlen(m_pchData, block->capacity))
                               : std::min(newLength, block->capacity);
    SetLength(m_pchData, length);
    block->locked = 0;
}

int CDorlString::Compare(const char* text) const
{
    return CompareBytes(m_pchData, LengthOf(m_pchData), text, LengthOf(text));
}

int CDorlString::Compare(const CDorlString& other) const
{
    return CompareBytes(m_pchData, GetLength(), other.m_pchData, other.GetLength());
}

int CDorlString::CompareNoCase(const char* text) const
{
    return CompareBytesNoCase(m_pchData, LengthOf(m_pchData), text, LengthOf(text));
}

int CDorlString::CompareNoCase(const CDorlString& other) const
{
    return CompareBytesNoCase(m_pchData, GetLength(), other.m_pchData, other.GetLength());
}

void CDorlString::Format(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    // Built aside first: the arguments may point into this string.
    CDorlString text = DorlFormatV(format, args);
    va_end(args);
    *this = static_cast<CDorlString&&>(text);
}

CDorlString& CDorlString::operator+=(const CDorlString& other)
{
    Append(other.m_pchData, other.GetLength());
    return *this;
}

CDorlString& CDorlString::operator+=(const char* text)
{
    Append(text, LengthOf(text));
    return *this;
}

CDorlString& CDorlString::operator+=(char ch)
{
    Append(&ch, 1);
    return *this;
}

void CDorlString::AssignCopy(const char* text, int length)
{
    if (!text || length <= 0) {
        Empty();
        return;
    }
    if (IsUnique(m_pchData) && BlockOf(m_pchData)->capacity >= length) {
        std::memmove(m_pchData, text, static_cast<size_t>(length));
        SetLength(m_pchData, length);
        return;
    }
    char* fresh = CopyText(text, length, length);
    ReleaseText(m_pchData);
    m_pchData = fresh;
}

void CDorlString::Append(const char* text, int length)
{
    if (!text || length <= 0)
        return;
    int oldLength = GetLength();
    int64_t needed = int64_t(oldLength) + length;
    if (needed > kMaxLength)
        return;
    if (IsUnique(m_pchData) && BlockOf(m_pchData)->capacity >= needed) {
        std::memmove(m_pchData + oldLength, text, static_cast<size_t>(length));
        SetLength(m_pchData, static_cast<int>(needed));
        return;
    }
    // The old block is released only after copying: text may lie inside it.
    char* grown = CopyText(m_pchData, oldLength, GrowCapacity(needed));
    std::memcpy(grown + oldLength, text, static_cast<size_t>(length));
    SetLength(grown, static_cast<int>(needed));
    ReleaseText(m_pchData);
    m_pchData = grown;
}

void CDorlString::PrepareToWrite(int capacity)
{
    if (IsUnique(m_pchData) && BlockOf(m_pchData)->capacity >= capacity)
        return;
    char* fresh = CopyText(m_pchData, GetLength(), capacity);
    ReleaseText(m_pchData);
    m_pchData = fresh;
}

CDorlString DorlFormatV(const char* format, va_list args)
{
    if (!format)
        return CDorlString();
    char small[256];
    va_list attempt;
    va_copy(attempt, args);
    int length = std::vsnprintf(small, sizeof small, format, attempt);
    va_end(attempt);
    if (length < 0)
        return CDorlString();
    if (length < static_cast<int>(sizeof small))
        return CDorlString(small, length);
    CDorlString text;
    std::vsnprintf(text.GetBufferSetLength(length), static_cast<size_t>(length) + 1, format, args);
    text.ReleaseBuffer(length);
    return text;
}

CDorlString operator+(const CDorlString& left, const CDorlString& right)
{
    return Concatenate(left, left.GetLength(), right, right.GetLength());
}

CDorlString operator+(const CDorlString& left, const char* right)
{
    return Concatenate(left, left.GetLength(), right ? right : "", LengthOf(right));
}

CDorlString operator+(const char* left, const CDorlString& right)
{
    return Concatenate(left ? left : "", LengthOf(left), right, right.GetLength());
}

CDorlString operator+(const CDorlString& left, char right)
{
    return Concatenate(left, left.GetLength(), &right, 1);
}

bool operator==(const CDorlString& left, const char* right) { return left.Compare(right) == 0; }

bool operator!=(const CDorlString& left, const char* right) { return !(left == right); }

bool operator==(const char* left, const CDorlString& right) { return right.Compare(left) == 0; }

bool operator!=(const char* left, const CDorlString& right) { return !(right == left); }
