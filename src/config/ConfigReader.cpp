// The readers of the configuration text format.

#include <locale.h>

#include <algorithm>
#include <cfloat>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include <dorl/DorlDiag.h>

#include "config/ConfigNumber.h"
#include "vesk/ConfigText.h"
#include "vesk/GdContainer.h"
#include "vesk/GdObject.h"
#include "vesk/GdVector.h"

namespace {

// A plain decimal token, an optional minus, at most 15 digits and at most one point, as the bits
// of its double. Its digits are an integer below 2^53 and the divisor a power of ten up to 10^15,
// both exact in a double, so one correctly rounded division gives the double nearest to the
// token, the same as the general parser (a minus zero included). Only where doubles are
// computed as doubles for fractions: the x87 unit would round twice.
bool ParseSimpleDecimal(const char* token, int length, uint64_t* bits)
{
    const bool bExactDivision = FLT_EVAL_METHOD == 0;
    static const double kPowers[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                     1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    bool negative = token[0] == '-';
    int digits = 0;
    int fraction = -1;
    int64_t integer = 0;
    for (int i = negative ? 1 : 0; i < length; ++i) {
        char c = token[i];
        if (c == '.' && fraction < 0) {
            fraction = 0;
            continue;
        }
        if (c < '0' || c > '9' || ++digits > 15)
            return false;
        integer = integer * 10 + (c - '0');
        if (fraction >= 0)
            fraction++;
    }
    if (digits == 0)
        return false;
    double value = static_cast<double>(integer);
    if (fraction > 0) {
        if (!bExactDivision)
            return false;
        value /= kPowers[fraction];
    }
    if (negative)
        value = -value;
    std::memcpy(bits, &value, sizeof *bits);
    return true;
}

const int kMaxString = 65536;
const int kMaxLabel = 255;
const int kMaxNumber = 99;

// The classes of the classic locale, by hand: the process locale must not change the grammar.
bool IsSpace(int c) { return c == ' ' || (c >= 9 && c <= 13); }
bool IsPrint(int c) { return c >= 32 && c <= 126; }
bool IsDigit(int c) { return c >= '0' && c <= '9'; }
int ToUpper(int c) { return c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c; }

// Releases what it holds unless it is handed on with Take.
template <class T> class Holder {
public:
    Holder() = default;
    ~Holder()
    {
        if (m_p)
            m_p->Release();
    }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;
    void Reset(T* p)
    {
        if (m_p)
            m_p->Release();
        m_p = p;
    }
    T* Get() const { return m_p; }
    T* Take()
    {
        T* p = m_p;
        m_p = nullptr;
        return p;
    }

private:
    T* m_p = nullptr;
};

// The vector index of a numeric label, saturated so that no label overflows, on any build.
long long LabelIndex(const CDorlString& label)
{
    long long value = 0;
    for (int i = 0; i < label.GetLength() && value <= 0x7fffffff; ++i)
        value = value * 10 + (label[i] - '0');
    return value - 1;
}

} // namespace

namespace vesk_config {

double ParseDouble(const char* text, char** end)
{
    static locale_t s_classic = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(0));
    return strtod_l(text, end, s_classic);
}

} // namespace vesk_config

VeskConfigReader::VeskConfigReader() = default;

VeskConfigReader::~VeskConfigReader() = default;

CVeskGenericData* VeskConfigReader::Read() { return ReadValue(); }

void VeskConfigReader::ReportError(const char* format, ...)
{
    if (m_bError)
        return;
    char message[2048];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(message, sizeof message, format, arguments);
    va_end(arguments);
    DorlDump("%s", message);
    DorlDump(" at line %d in %s\n", static_cast<int>(m_nLine),
             static_cast<const char*>(GetSourceName()));
    m_bError = true;
}

int VeskConfigReader::GetChar(bool bEndAllowed)
{
    if (m_nPos >= m_nCount && !FillBuffer(!bEndAllowed))
        return -1;
    // Taken unsigned: a byte 255 is a byte like any other, not the end of the input.
    int c = static_cast<unsigned char>(m_aBuffer[m_nPos++]);
    if (c == '\n')
        m_nLine++;
    return c;
}

void VeskConfigReader::SkipSpace()
{
    // Scans the buffer through a local pointer: the members would be stored and loaded again
    // for every byte, since the compiler cannot tell them apart from the bytes of the buffer.
    bool bComment = false;
    for (;;) {
        if (m_nPos >= m_nCount && !FillBuffer(false))
            return;
        const char* p = m_aBuffer + m_nPos;
        const char* end = m_aBuffer + m_nCount;
        int32_t lines = 0;
        for (; p < end; ++p) {
            int c = static_cast<unsigned char>(*p);
            if (c == '\n') {
                lines++;
                bComment = false;
            } else if (!bComment && c == '#') {
                bComment = true;
            } else if (!bComment && !IsSpace(c)) {
                break;
            }
        }
        m_nLine += lines;
        m_nPos = static_cast<int32_t>(p - m_aBuffer);
        if (p < end)
            return;
    }
}

CVeskGenericData* VeskConfigReader::ReadValue()
{
    SkipSpace();
    int c = GetChar(false);
    if (c < 0)
        return nullptr;
    if (c == '"')
        return ReadStringValue();
    if (IsDigit(c) || c == 'x' || c == '-') {
        UngetChar();
        return ReadNumberValue();
    }
    if (c == '[')
        return ReadCollection();
    if (c == 't')
        return ReadKeyword("rue", "true", CVeskGdBoolean::Allocate(1));
    if (c == 'f')
        return ReadKeyword("alse", "false", CVeskGdBoolean::Allocate(0));
    if (c == 'n') {
        c = GetChar(false);
        if (c == 'u')
            return ReadKeyword("ll", "null", CVeskGdNull::Allocate());
        if (c == 'o')
            return ReadKeyword("ne", "none", CVeskGdNone::Allocate());
        if (c < 0)
            return nullptr;
    }
    ReportError("Unexpected character '%c'", c);
    return nullptr;
}

CVeskGenericData* VeskConfigReader::ReadKeyword(const char* rest, const char* keyword,
                                                CVeskGenericData* value)
{
    // value is one of the shared values, so dropping it on an error costs nothing.
    for (const char* expected = rest; *expected; ++expected) {
        int c = GetChar(false);
        if (c < 0)
            return nullptr;
        if (c != *expected) {
            ReportError("Unexpected character '%c', looking for string \"%s\"", c, keyword);
            return nullptr;
        }
    }
    return value;
}

int VeskConfigReader::ReadEscape()
{
    int c = GetChar(false);
    switch (c) {
    case -1:
        return -1;
    case 'n':
        return '\n';
    case 'r':
        return '\r';
    case 't':
        return '\t';
    case 'f':
        return '\f';
    case '"':
        return '"';
    case '\\':
        return '\\';
    case 'x': {
        char digits[2];
        for (char& digit : digits) {
            int d = GetChar(false);
            if (d < 0)
                return -1;
            digit = static_cast<char>(ToUpper(d));
        }
        // Digits that are no hexadecimal digits give what the decoder leaves.
        unsigned char byte = 0;
        CDorlBinStringRaw::FromString(digits, 1, &byte);
        return byte;
    }
    default:
        ReportError("Unexpected character '%c'", c);
        return -1;
    }
}

namespace {

// One buffer per thread for the strings of every read, off the stack so that deep nesting stays
// cheap: taking 64 KiB from the heap for each read costs more than reading a small file.
char* StringBuffer()
{
    static thread_local std::unique_ptr<char[]> s_buffer(new char[kMaxString]);
    return s_buffer.get();
}

} // namespace

CVeskGenericData* VeskConfigReader::ReadStringValue()
{
    char* text = StringBuffer();
    int length = 0;
    for (;;) {
        if (m_nPos >= m_nCount && !FillBuffer(true))
            return nullptr;
        // The plain bytes up to the next quote or escape, as one run.
        const char* run = m_aBuffer + m_nPos;
        const char* end = m_aBuffer + m_nCount;
        const char* p = run;
        int32_t lines = 0;
        for (; p < end && *p != '"' && *p != '\\'; ++p)
            lines += *p == '\n';
        m_nLine += lines;
        int take = std::min(static_cast<int>(p - run), kMaxString - length);
        std::memcpy(text + length, run, static_cast<size_t>(take));
        length += take;
        m_nPos = static_cast<int32_t>(p - m_aBuffer);
        if (p == end)
            continue;
        m_nPos++;
        if (*p == '"')
            break;
        int c = ReadEscape();
        if (c < 0)
            return nullptr;
        if (length < kMaxString)
            text[length++] = static_cast<char>(c);
    }
    return CVeskGdString::Allocate(CDorlString(text, length));
}

CVeskGenericData* VeskConfigReader::ReadNumberValue()
{
    SkipSpace();
    char token[kMaxNumber + 1];
    int length = 0;
    for (bool bEnded = false; !bEnded;) {
        if (m_nPos >= m_nCount && !FillBuffer(true))
            return nullptr;
        const char* p = m_aBuffer + m_nPos;
        const char* end = m_aBuffer + m_nCount;
        for (; p < end; ++p) {
            int c = static_cast<unsigned char>(*p);
            if (IsSpace(c)) {
                m_nLine += c == '\n';
                ++p;
                bEnded = true;
                break;
            }
            if (length < kMaxNumber)
                token[length++] = static_cast<char>(ToUpper(c));
        }
        m_nPos = static_cast<int32_t>(p - m_aBuffer);
    }
    token[length] = 0;

    uint64_t bits;
    if (token[0] == 'X') {
        if (length != 17) {
            ReportError("Invalid hexadecimally encoded number");
            return nullptr;
        }
        unsigned char bytes[8] = {};
        CDorlBinStringRaw::FromString(token + 1, 8, bytes);
        bits = 0;
        for (unsigned char byte : bytes)
            bits = bits << 8 | byte;
    } else if (ParseSimpleDecimal(token, length, &bits)) {
        // Most numbers of a settings file are short decimals: no need for the general parser.
    } else {
        char* end;
        double value = vesk_config::ParseDouble(token, &end);
        std::memcpy(&bits, &value, sizeof bits);
        // Measured against the length: a zero byte in the token is left over too.
        if (end != token + length) {
            ReportError("Invalid number");
            return nullptr;
        }
    }

    SkipSpace();
    int c = GetChar(true);
    if (c == '(') {
        do {
            c = GetChar(false);
            if (c < 0)
                return nullptr;
        } while (c != ')');
    } else if (c >= 0) {
        UngetChar();
    }
    // The bits go in as bytes: passing a double by value through the x87 unit of the i386
    // build would quieten a signalling NaN.
    CVeskGdDouble* number = CVeskGdDouble::Allocate(0);
    std::memcpy(&number->m_dValue, &bits, sizeof bits);
    return number;
}

bool VeskConfigReader::ReadLabel(CDorlString* pLabel, bool* pbNumeric)
{
    SkipSpace();
    char label[kMaxLabel + 1];
    int length = 0;
    bool bNumeric = true;
    int c = GetChar(false);
    if (c == '"') {
        bNumeric = false;
        for (;;) {
            c = GetChar(false);
            if (c < 0)
                return false;
            if (!IsPrint(c) || c == '"')
                break;
            if (c == '\\' && (c = ReadEscape()) < 0)
                return false;
            if (length < kMaxLabel)
                label[length++] = static_cast<char>(c);
        }
    } else if (IsPrint(c) && c != '=') {
        // A plain label, scanned in runs of the buffer up to the byte that ends it.
        UngetChar();
        for (bool bEnded = false; !bEnded;) {
            if (m_nPos >= m_nCount && !FillBuffer(true))
                return false;
            const char* p = m_aBuffer + m_nPos;
            const char* end = m_aBuffer + m_nCount;
            for (; p < end; ++p) {
                c = static_cast<unsigned char>(*p);
                if (!IsPrint(c) || c == '=') {
                    m_nLine += c == '\n';
                    ++p;
                    bEnded = true;
                    break;
                }
                if (length < kMaxLabel)
                    label[length++] = static_cast<char>(c);
                bNumeric = bNumeric && IsDigit(c);
            }
            m_nPos = static_cast<int32_t>(p - m_aBuffer);
        }
    }
    while (c != '=') {
        c = GetChar(false);
        if (c < 0)
            return false;
    }
    *pLabel = CDorlString(label, length);
    *pbNumeric = bNumeric && length > 0;
    return true;
}

CVeskGenericData* VeskConfigReader::ReadCollection()
{
    if (m_nDepth >= kMaxDepth) {
        ReportError("Collections nested too deeply");
        return nullptr;
    }
    m_nDepth++;
    Holder<CVeskGdVector> vector;
    Holder<VeskAssocArray> array;
    while (!m_bError) {
        SkipSpace();
        int c = GetChar(false);
        if (c < 0 || c == ']')
            break;
        UngetChar();

        CDorlString label;
        bool bNumeric;
        if (!ReadLabel(&label, &bNumeric))
            break;
        Holder<CVeskGenericData> value;
        if (!bNumeric || label != "0") {
            value.Reset(ReadValue());
            if (!value.Get())
                break;
        }

        if (!bNumeric) {
            if (!array.Get())
                array.Reset(new VeskAssocArray(CVeskGdNull::Allocate()));
            array.Get()->TakeEntry(std::move(label), value.Take());
            continue;
        }
        if (!vector.Get())
            vector.Reset(CVeskGdVector::Allocate(0));
        long long index = LabelIndex(label);
        if (index < 0)
            continue;
        if (index >= kMaxVectorSize) {
            ReportError("Numeric label %s too large", static_cast<const char*>(label));
            break;
        }
        CVeskGdVector* target = vector.Get();
        int size = target->GetSize();
        if (index > size) {
            target->SetSize(static_cast<int>(index) + 1);
            for (int i = size; i < index; ++i)
                target->SetElement(i, CVeskGdNull::Allocate());
        }
        target->SetElement(static_cast<int>(index), value.Get());
    }
    m_nDepth--;

    if (m_bError)
        return nullptr;
    if (vector.Get() && array.Get()) {
        ReportError("Mixed numeric and non-numeric labels in %s",
                    static_cast<const char*>(GetSourceName()));
        return nullptr;
    }
    if (vector.Get())
        return vector.Take();
    if (!array.Get())
        array.Reset(new VeskAssocArray(CVeskGdNull::Allocate()));
    return CVeskGdObject::Allocate(array.Get());
}

VeskConfigFileReader::VeskConfigFileReader(const char* path)
    : m_pFile(fopen(path, "r")), m_sPath(path)
{}

VeskConfigFileReader::~VeskConfigFileReader()
{
    if (m_pFile)
        fclose(m_pFile);
}

CVeskGenericData* VeskConfigFileReader::Read()
{
    if (!m_pFile) {
        ReportError("Cannot open input file");
        return nullptr;
    }
    return VeskConfigReader::Read();
}

CDorlString VeskConfigFileReader::GetSourceName() { return m_sPath; }

bool VeskConfigFileReader::FillBuffer(bool bReportEnd)
{
    if (m_bError)
        return false;
    m_nCount = static_cast<int32_t>(fread(m_aBuffer, 1, sizeof m_aBuffer, m_pFile));
    m_nPos = 0;
    if (m_nCount == 0 && bReportEnd)
        ReportError("Unexpected end of file");
    return m_nCount > 0;
}

VeskConfigStringReader::VeskConfigStringReader(const CDorlString& text) : m_sText(text) {}

CDorlString VeskConfigStringReader::GetSourceName() { return "string"; }

bool VeskConfigStringReader::FillBuffer(bool bReportEnd)
{
    if (m_bError)
        return false;
    int32_t available = m_sText.GetLength() - m_nOffset;
    m_nCount = available < static_cast<int32_t>(sizeof m_aBuffer)
                   ? available
                   : static_cast<int32_t>(sizeof m_aBuffer);
    std::memcpy(m_aBuffer, static_cast<const char*>(m_sText) + m_nOffset, m_nCount);
    m_nOffset += m_nCount;
    m_nPos = 0;
    if (m_nCount == 0 && bReportEnd)
        ReportError("Unexpected end of string");
    return m_nCount > 0;
}

CVeskGenericData* VeskReadConfigFile(const char* path)
{
    VeskConfigFileReader reader(path);
    return reader.Read();
}

CVeskGenericData* VeskReadConfigString(const CDorlString& text)
{
    VeskConfigStringReader reader(text);
    return reader.Read();
}
