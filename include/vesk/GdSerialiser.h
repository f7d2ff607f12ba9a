#pragma once

// The interfaces through which values and serialisable objects go to a byte stream and back.
// The stream belongs to the caller, behind a CVeskGdSerialiserIO; a CVeskGdSerialiser writes one
// format on it; an object that can be written offers IVeskSerialise.

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
