#pragma once

#include "DorlExport.h"
#include "DorlString.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

// A byte stream with fixed little-endian widths whatever the build (int and unsigned int four
// bytes, double eight), so that what one build writes any other reads. Damaged input never
// crashes: what cannot be read reads as zero or empty and HasFailed() says so.
class DORL_API CDorlArchive {
public:
    // In memory, storing.
    CDorlArchive();
    // In memory, loading a copy of data.
    CDorlArchive(const void* data, size_t size);
    ~CDorlArchive();
    CDorlArchive(const CDorlArchive&) = delete;
    CDorlArchive& operator=(const CDorlArchive&) = delete;

    // Replaces whatever the archive held. A file opened for loading is read whole.
    bool OpenFile(const char* path, bool bStoring);
    // Flushes a file; a failed flush shows in HasFailed().
    void Close();

    bool IsStoring() const { return m_bStoring; }
    bool IsLoading() const { return !m_bStoring; }
    const unsigned char* GetData() const { return m_data.data(); }
    size_t GetSize() const { return m_data.size(); }
    bool HasFailed() const { return m_bFailed; }

    // Raw bytes, for formats layered on top. Read yields how many bytes it delivered; the
    // rest of out is zeroed.
    void Write(const void* data, size_t size);
    size_t Read(void* out, size_t size);
    size_t GetRemaining() const { return m_data.size() - m_readPos; }
    // Gives up what is left, for a reader that finds the data damaged: the rest reads as zero
    // or empty and the archive counts as failed.
    void SkipRest();

    CDorlArchive& operator<<(int value);
    CDorlArchive& operator<<(unsigned int value);
    CDorlArchive& operator<<(unsigned char value);
    CDorlArchive& operator<<(double value);
    CDorlArchive& operator>>(int& value);
    CDorlArchive& operator>>(unsigned int& value);
    CDorlArchive& operator>>(unsigned char& value);
    CDorlArchive& operator>>(double& value);

private:
    void WriteUInt32(uint32_t value);
    uint32_t ReadUInt32();

    std::vector<unsigned char> m_data;
    size_t m_readPos = 0;
    std::FILE* m_file = nullptr;
    bool m_bStoring = true;
    bool m_bFailed = false;
    bool m_bClosed = false;

    friend DORL_API CDorlArchive& operator>>(CDorlArchive& ar, CDorlString& text);
};

// A string is its byte count as a four-byte int, then the bytes.
DORL_API CDorlArchive& operator<<(CDorlArchive& ar, const CDorlString& text);
DORL_API CDorlArchive& operator>>(CDorlArchive& ar, CDorlString& text);
