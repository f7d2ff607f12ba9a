#pragma once

// The interfaces through which values and serialisable objects go to a byte stream and back.
// The stream belongs to the caller, behind a CVeskGdSerialiserIO; a CVeskGdSerialiser writes one
// format on it; an object that can be written offers IVeskSerialise.

#include <cstdint>

#include <dorl/DorlString.h>
#include <standin/Unknown.h>

#include "vesk/VeskExport.h"

class CVeskGenericData;
class CVeskGdObject;
class CVeskGdSerialiser;
struct IVeskCommand;

// The type byte of the current format.
enum SerialiseType : int {
    SerialiseNone = 1,
    SerialiseNull = 2,
    SerialiseDouble = 3,
    SerialiseLong = 4,
    SerialiseUnsignedLong = 5,
    SerialiseString = 6,
    SerialiseTrue = 7,
    SerialiseFalse = 8,
    SerialiseObject = 9,
    SerialiseObjectTrailer = 10,
    SerialiseVector = 11,
    SerialiseArray = 12
};

// The caller's stream.
class VESK_API CVeskGdSerialiserIO {
public:
    virtual ~CVeskGdSerialiserIO();
    // Appends size bytes.
    virtual void Write(const void* data, int size) = 0;
    // Reads exactly size bytes; 0 when the data ended.
    virtual int Read(void* data, int size) = 0;
    // Creates objects by creation name when a stream is read; borrowed. Null by default.
    virtual IVeskCommand* GetObjectCreator();
    // Called before each report of a type that is not the one expected.
    virtual void OnTypeMismatch();
};

// What a serialisable object sees, the same for every format. Every int result is non-zero
// for success.
class VESK_API CVeskGdSerialiser {
public:
    virtual ~CVeskGdSerialiser();
    virtual int WriteGdObject(CVeskGenericData* value) = 0;
    virtual int WriteObject(CVeskGdObject* object) = 0;
    virtual void WriteDouble(double value, bool writeType) = 0;
    virtual void WriteLong(long value, bool writeType) = 0;
    virtual void WriteUnsignedLong(long value, bool writeType) = 0;
    virtual void WriteBoolean(int value, bool writeType) = 0;
    virtual void WriteString(CDorlString value, bool writeType) = 0;
    virtual void WriteNull(bool writeType) = 0;
    virtual void WriteVectorHeader(int size) = 0;
    // A new reference, or null on failure.
    virtual CVeskGenericData* ReadGdObject() = 0;
    virtual CVeskGenericData* ReadObject(int checkType) = 0;
    virtual int ReadDouble(double& value, int checkType) = 0;
    virtual int ReadLong(long& value, int checkType) = 0;
    virtual int ReadUnsignedLong(unsigned long& value, int checkType) = 0;
    virtual int ReadBoolean(int& value, int checkType) = 0;
    virtual int ReadString(CDorlString& value, int checkType) = 0;
    virtual SerialiseType ReadType() = 0;
    virtual int GetDebugOutputLevel();
};

struct IVeskSerialise : public IUnknown {
    // 0 for failure.
    virtual int STDMETHODCALLTYPE Serialise(CVeskGdSerialiser* serialiser) = 0;
    // 0 for failure. May store a new reference to another value in *replacement (null on
    // entry), which then takes the place of the created object.
    virtual int STDMETHODCALLTYPE Deserialise(CVeskGdSerialiser* serialiser,
                                              CVeskGenericData** replacement) = 0;
    // The name under which the object is created again when read.
    virtual CDorlString STDMETHODCALLTYPE GetCreationName() = 0;

protected:
    ~IVeskSerialise() = default;
};

// The current, compact format: one type byte per value, variable-length counts. A serialiser is
// made around the caller's stream for one stream and one thread; it owns nothing.
class VESK_API CVeskGdSerialiserImpl : public CVeskGdSerialiser {
public:
    explicit CVeskGdSerialiserImpl(CVeskGdSerialiserIO* io);

    int WriteGdObject(CVeskGenericData* value) override;
    int WriteObject(CVeskGdObject* object) override;
    void WriteDouble(double value, bool writeType) override;
    void WriteLong(long value, bool writeType) override;
    void WriteUnsignedLong(long value, bool writeType) override;
    // Always typed: the type byte is the value.
    void WriteBoolean(int value, bool writeType) override;
    void WriteString(CDorlString value, bool writeType) override;
    // Always the one type byte.
    void WriteNull(bool writeType) override;
    void WriteVectorHeader(int size) override;
    CVeskGenericData* ReadGdObject() override;
    // With checkType 0 the type byte must have been consumed already.
    CVeskGenericData* ReadObject(int checkType) override;
    int ReadDouble(double& value, int checkType) override;
    int ReadLong(long& value, int checkType) override;
    int ReadUnsignedLong(unsigned long& value, int checkType) override;
    // Always reads the type byte, which is the value; checkType has no effect.
    int ReadBoolean(int& value, int checkType) override;
    int ReadString(CDorlString& value, int checkType) override;
    // The next type byte, widened with its sign; 0 at the end of the data (and for a zero byte).
    SerialiseType ReadType() override;

    // When read, a value may lie at most this many levels below the outermost one: 201 levels
    // in all. The writer has no limit.
    static const int kMaxDepth = 200;

protected:
    CVeskGdSerialiserIO* m_pIO;
    int m_objectDepth;
    int m_depth;

private:
    int CheckType(int expected);
    int ReadToObjectTrailer(int code);
    int ReadData(int code, CVeskGenericData** out);
    int ReadVector(CVeskGenericData** out);
    int ReadArray(CVeskGenericData** out);
    int ReadBytes(void* data, int size);
    void WriteByte(int value);

    // Set once the stream has said that its data ended: loops over a count from the stream stop
    // there rather than going on for as long as the count says.
    int m_bEndOfData;
};

// The older format: a 32-bit type word per value holding the value's DataType, and every write
// typed whatever its writeType says. Objects need a creation name and a creator in the stream,
// "AssocArray" too. A subclass that answers GetDebugOutputLevel above 0 gets a trace of what
// objects write and read.
class VESK_API CVeskGdLegacySerialiserImpl : public CVeskGdSerialiser {
public:
    explicit CVeskGdLegacySerialiserImpl(CVeskGdSerialiserIO* io);

    int WriteGdObject(CVeskGenericData* value) override;
    int WriteObject(CVeskGdObject* object) override;
    void WriteDouble(double value, bool writeType) override;
    // As a double.
    void WriteLong(long value, bool writeType) override;
    // As a double, the value taken as unsigned.
    void WriteUnsignedLong(long value, bool writeType) override;
    void WriteBoolean(int value, bool writeType) override;
    void WriteString(CDorlString value, bool writeType) override;
    // Writes nothing: only a Null value inside WriteGdObject has a form.
    void WriteNull(bool writeType) override;
    void WriteVectorHeader(int size) override;
    CVeskGenericData* ReadGdObject() override;
    CVeskGenericData* ReadObject(int checkType) override;
    int ReadDouble(double& value, int checkType) override;
    // A double truncated to 32 bits.
    int ReadLong(long& value, int checkType) override;
    int ReadUnsignedLong(unsigned long& value, int checkType) override;
    // The 32-bit value as written, not reduced to 0 or 1.
    int ReadBoolean(int& value, int checkType) override;
    int ReadString(CDorlString& value, int checkType) override;
    // 0 without reading: the format gives no way to look at a type before reading it.
    SerialiseType ReadType() override;

    // The format sets no bound on nesting; this reader stops where the current one does, so
    // that a hostile stream cannot run it out of stack.
    static const int kMaxDepth = 200;

protected:
    CVeskGdSerialiserIO* m_pIO;
    int m_objectDepth;

private:
    // The word is kept as read: it need not be a DataType at all in a damaged stream.
    int ReadType(int32_t& type);
    int ReadExpectedType(int32_t expected, int32_t& got);
    int ReadExpectedType(int32_t expected);
    int ReadObjectTrailer();
    void WriteObjectTrailer();
    int ReadToObjectTrailer(int32_t type);
    int ReadData(int32_t type, CVeskGenericData** out);
    int ReadVector(CVeskGenericData** out);
    int ReadBytes(void* data, int size);
    int ReadWord(int32_t& value);
    void WriteWord(int32_t value);
    // Lines of the debug trace: object lines at any level above 0, value lines inside objects.
    bool Tracing();
    bool TracingValues();

    int m_nNesting;
    int m_bEndOfData;
};
