#pragma once

// Ready streams for the serialisers, over memory and over files, and a creator that makes
// objects by creation name for the readers. Each stream can carry a creator; it holds a
// reference on it for as long as it carries it.

#include <cstddef>
#include <cstdio>
#include <map>
#include <string>

#include <dorl/DorlString.h>

#include "vesk/FunctionObj.h"
#include "vesk/GdSerialiser.h"
#include "vesk/GenericData.h"

// Makes objects by creation name: called with the name as its one parameter, it returns the new
// object value, or nothing for a name it does not know. It knows "AssocArray", which the legacy
// format needs made like any other object; applications register their own names.
class VESK_API CVeskGdObjectCreator : public CVeskFunctionObj {
public:
    // A new value for the name (an object value, with the caller's reference), or null.
    typedef CVeskGenericData* (*Factory)(const CDorlString& name);

    CVeskGdObjectCreator();

    // Replaces an earlier factory of the name; null forgets the name.
    void Register(const CDorlString& name, Factory factory);

    int STDMETHODCALLTYPE CallMethod(CVeskCommandContext* context) override;

private:
    std::map<CDorlString, Factory> m_Factories;
};

// A stream in memory: writes append at the end, reads go on from a position of their own that
// starts at the beginning, so what was written can be read back through the same object.
class VESK_API CVeskGdMemorySerialiserIO : public CVeskGdSerialiserIO {
public:
    explicit CVeskGdMemorySerialiserIO(IVeskCommand* creator = nullptr);
    // A copy of size bytes at data, to be read.
    CVeskGdMemorySerialiserIO(const void* data, int size, IVeskCommand* creator = nullptr);
    ~CVeskGdMemorySerialiserIO() override;
    CVeskGdMemorySerialiserIO(const CVeskGdMemorySerialiserIO&) = delete;
    CVeskGdMemorySerialiserIO& operator=(const CVeskGdMemorySerialiserIO&) = delete;

    void Write(const void* data, int size) override;
    // 0 when fewer than size bytes are left; the position is then at the end.
    int Read(void* data, int size) override;
    IVeskCommand* GetObjectCreator() override;
    void OnTypeMismatch() override;

    // Takes a reference on the new creator (null allowed) and drops the old one.
    void SetObjectCreator(IVeskCommand* creator);
    const unsigned char* GetData() const;
    size_t GetSize() const;
    CDorlString GetString() const;
    size_t GetPosition() const;
    size_t GetRemaining() const;
    void Rewind();
    // Empties the stream and rewinds it.
    void Clear();
    // How many type mismatches the reader has met on this stream.
    int GetMismatchCount() const;

private:
    std::string m_Bytes;
    size_t m_nPosition;
    IVeskCommand* m_pCreator;
    int m_nMismatches;
};

// A stream over a file: opened by path for reading or for writing, or an open stdio stream
// (standard input or output) that stays open. Failures to open, write and close are reported
// through DorlDump with the file's name.
class VESK_API CVeskGdFileSerialiserIO : public CVeskGdSerialiserIO {
public:
    enum Mode { modeRead = 0, modeWrite = 1 };

    // modeWrite replaces the file. IsOpen says whether it could be opened.
    CVeskGdFileSerialiserIO(const char* path, Mode mode, IVeskCommand* creator = nullptr);
    // name is what messages call the stream.
    CVeskGdFileSerialiserIO(FILE* stream, const char* name, IVeskCommand* creator = nullptr);
    ~CVeskGdFileSerialiserIO() override;
    CVeskGdFileSerialiserIO(const CVeskGdFileSerialiserIO&) = delete;
    CVeskGdFileSerialiserIO& operator=(const CVeskGdFileSerialiserIO&) = delete;

    void Write(const void* data, int size) override;
    int Read(void* data, int size) override;
    IVeskCommand* GetObjectCreator() override;

    void SetObjectCreator(IVeskCommand* creator);
    int IsOpen() const;
    // Flushes, and closes a file that this object opened. 0 when a write, the flush or the close
    // failed: the file may then be incomplete.
    int Close();

private:
    FILE* m_pFile;
    int m_bOwnsFile;
    int m_bWritten;
    int m_bWriteFailed;
    CDorlString m_sName;
    IVeskCommand* m_pCreator;
};
