#pragma once

// The configuration text format: the human-readable form of one value. The readers and the
// writer of the format.

#include <cstdint>
#include <cstdio>

#include <dorl/DorlString.h>

#include "vesk/GenericData.h"
#include "vesk/VeskExport.h"

// Reads the one value of a text. A reader lives on the caller's stack for one read; the first
// error is reported through DorlDump with the line and the source, and everything after it is
// silent until Read returns null.
class VESK_API VeskConfigReader {
public:
    VeskConfigReader();
    virtual ~VeskConfigReader();
    VeskConfigReader(const VeskConfigReader&) = delete;
    VeskConfigReader& operator=(const VeskConfigReader&) = delete;

    // The value, a new reference; null after a message. What follows the value is not read.
    virtual CVeskGenericData* Read();
    // The name that messages give for the text.
    virtual CDorlString GetSourceName() = 0;
    // Refills the buffer from the start; true when at least one byte is now available. With
    // bReportEnd, running out is an error.
    virtual bool FillBuffer(bool bReportEnd) = 0;

    // Deeper collections are refused with a message rather than risking the stack: each level is
    // a few frames of recursion, and readers run on threads with small stacks too.
    static const int kMaxDepth = 1000;
    // Larger numeric labels are refused with a message rather than risking the memory.
    static const int kMaxVectorSize = 1000000;

protected:
    // Only the first call says anything; it also stops all further reading.
    void ReportError(const char* format, ...) __attribute__((format(printf, 2, 3)));
    // The next byte (0 to 255), or -1 at the end of the input, which is an error unless
    // bEndAllowed.
    int GetChar(bool bEndAllowed);
    // Steps back over the byte just read, which must not be a line end.
    void UngetChar() { m_nPos--; }
    // Skips white space and # comments; the end of the input stops it silently.
    void SkipSpace();

    CVeskGenericData* ReadValue();

    char m_aBuffer[1024];
    int32_t m_nPos = 0;
    int32_t m_nCount = 0;
    bool m_bError = false;
    int32_t m_nLine = 1;

private:
    CVeskGenericData* ReadStringValue();
    CVeskGenericData* ReadNumberValue();
    CVeskGenericData* ReadCollection();
    CVeskGenericData* ReadKeyword(const char* rest, const char* keyword, CVeskGenericData* value);
    // The byte an escape stands for, or -1 after a message.
    int ReadEscape();
    // False on an error; *pbNumeric says whether the label is a vector index.
    bool ReadLabel(CDorlString* pLabel, bool* pbNumeric);

    int32_t m_nDepth = 0;
};

class VESK_API VeskConfigFileReader : public VeskConfigReader {
public:
    // The file is opened in text mode here; Read reports when it could not be.
    explicit VeskConfigFileReader(const char* path);
    ~VeskConfigFileReader() override;

    CVeskGenericData* Read() override;
    CDorlString GetSourceName() override;
    bool FillBuffer(bool bReportEnd) override;

private:
    FILE* m_pFile;
    CDorlString m_sPath;
};

class VESK_API VeskConfigStringReader : public VeskConfigReader {
public:
    // Keeps its own copy of the text.
    explicit VeskConfigStringReader(const CDorlString& text);

    CDorlString GetSourceName() override;
    bool FillBuffer(bool bReportEnd) override;

private:
    CDorlString m_sText;
    int32_t m_nOffset = 0;
};

// The value of the text in the file, a new reference; null on any failure, after a message.
VESK_API CVeskGenericData* VeskReadConfigFile(const char* path);
// The value of the text, a new reference; null on any failure, after a message.
VESK_API CVeskGenericData* VeskReadConfigString(const CDorlString& text);
// Replaces the file with the value's text, through a temporary file beside it that is renamed
// over it only once complete, so that readers see the old text or the new, never a part. The
// file keeps its permissions. False only when the file cannot be written at all; a failure
// later is reported through DorlDump and leaves the old file as it was.
VESK_API bool VeskWriteConfigFile(const char* path, CVeskGenericData* value);
// Writes the value's text to an open stream, as VeskWriteConfigFile puts it in a file. False when
// the value nests too deeply for the format or the stream refused the text.
VESK_API bool VeskWriteConfigStream(FILE* stream, CVeskGenericData* value);
