#include "dorl/DorlArchive.h"

#include <cstdint>
#include <cstring>
#include <limits>

static_assert(sizeof(double) == 8 && std::numeric_limits<double>::is_iec559,
              "the archive stores doubles as their IEEE 754 bits");

namespace {

void PutLittleEndian(unsigned char* out, uint64_t value, int size)
{
    for (int i = 0; i < size; ++i)
        out[i] = static_cast<unsigned char>(value >> (8 * i));
}

uint64_t GetLittleEndian(const unsigned char* in, int size)
{
    uint64_t value = 0;
    for (int i = 0; i < size; ++i)
        value |= uint64_t(in[i]) << (8 * i);
    return value;
}

bool ReadWholeFile(std::FILE* file, std::vector<unsigned char>& data)
{
    unsigned char chunk[65536];
    size_t got;
    while ((got = std::fread(chunk, 1, sizeof chunk, file)) > 0)
        data.insert(data.end(), chunk, chunk + got);
    return !std::ferror(file);
}

} // namespace

CDorlArchive::CDorlArchive() = default;

CDorlArchive::CDorlArchive(const void* data, size_t size) : m_bStoring(false)
{
    if (data && size > 0) {
        const unsigned char* bytes = static_cast<const unsigned char*>(data);
        m_data.assign(bytes, bytes + size);
    }
}

CDorlArchive::~CDorlArchive() { Close(); }

bool CDorlArchive::OpenFile(const char* path, bool bStoring)
{
    Close();
    m_data.clear();
    m_readPos = 0;
    m_bStoring = bStoring;
    m_bFailed = false;
    m_bClosed = false;
    std::FILE* file = path ? std::fopen(path, bStoring ? "wb" : "rb") : nullptr;
    if (!file) {
        m_bFailed = true;
        m_bClosed = true;
        return false;
    }
    if (bStoring) {
        m_file = file;
        return true;
    }
    // Loading from memory makes a hostile length checkable against what is really left.
    bool ok = ReadWholeFile(file, m_data);
    std::fclose(file);
    m_bFailed = !ok;
    return ok;
}

void CDorlArchive::Close()
{
    if (!m_file)
        return;
    if (std::fclose(m_file) != 0)
        m_bFailed = true;
    m_file = nullptr;
    m_bClosed = true;
}

void CDorlArchive::Write(const void* data, size_t size)
{
    if (!m_bStoring || m_bClosed) {
        m_bFailed = true;
        return;
    }
    if (size == 0)
        return;
    if (m_file) {
        if (std::fwrite(data, 1, size, m_file) != size)
            m_bFailed = true;
        return;
    }
    const unsigned char* bytes = static_cast<const unsigned char*>(data);
    m_data.insert(m_data.end(), bytes, bytes + size);
}

size_t CDorlArchive::Read(void* out, size_t size)
{
    if (m_bStoring || size > GetRemaining()) {
        std::memset(out, 0, size);
        SkipRest();
        return 0;
    }
    std::memcpy(out, m_data.data() + m_readPos, size);
    m_readPos += size;
    return size;
}

void CDorlArchive::SkipRest()
{
    m_bFailed = true;
    m_readPos = m_data.size();
}

void CDorlArchive::WriteUInt32(uint32_t value)
{
    unsigned char bytes[4];
    PutLittleEndian(bytes, value, 4);
    Write(bytes, 4);
}

uint32_t CDorlArchive::ReadUInt32()
{
    unsigned char bytes[4];
    Read(bytes, 4);
    return static_cast<uint32_t>(GetLittleEndian(bytes, 4));
}

CDorlArchive& CDorlArchive::operator<<(int value)
{
    WriteUInt32(static_cast<uint32_t>(static_cast<int32_t>(value)));
    return *this;
}

CDorlArchive& CDorlArchive::operator<<(unsigned int value)
{
    WriteUInt32(static_cast<uint32_t>(value));
    return *this;
}

CDorlArchive& CDorlArchive::operator<<(unsigned char value)
{
    Write(&value, 1);
    return *this;
}

CDorlArchive& CDorlArchive::operator<<(double value)
{
    uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    unsigned char bytes[8];
    PutLittleEndian(bytes, bits, 8);
    Write(bytes, 8);
    return *this;
}

CDorlArchive& CDorlArchive::operator>>(int& value)
{
    value = static_cast<int32_t>(ReadUInt32());
    return *this;
}

CDorlArchive& CDorlArchive::operator>>(unsigned int& value)
{
    value = ReadUInt32();
    return *this;
}

CDorlArchive& CDorlArchive::operator>>(unsigned char& value)
{
    Read(&value, 1);
    return *this;
}

CDorlArchive& CDorlArchive::operator>>(double& value)
{
    unsigned char bytes[8];
    Read(bytes, 8);
    uint64_t bits = GetLittleEndian(bytes, 8);
    std::memcpy(&value, &bits, sizeof value);
    return *this;
}

CDorlArchive& operator<<(CDorlArchive& ar, const CDorlString& text)
{
    ar << text.GetLength();
    ar.Write(static_cast<const char*>(text), static_cast<size_t>(text.GetLength()));
    return ar;
}

CDorlArchive& operator>>(CDorlArchive& ar, CDorlString& text)
{
    text.Empty();
    int length = 0;
    ar >> length;
    if (length < 0 || static_cast<size_t>(length) > ar.GetRemaining()) {
        ar.SkipRest();
        return ar;
    }
    if (length == 0)
        return ar;
    ar.Read(text.GetBufferSetLength(length), static_cast<size_t>(length));
    text.ReleaseBuffer(length);
    return ar;
}
