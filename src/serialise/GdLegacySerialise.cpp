// The older stream format: a 32-bit type word before every value, holding its DataType.

#include <dorl/DorlDiag.h>

#include "serialise/SerialiseCommon.h"
#include "vesk/GdVector.h"

using vesk::serialise::Level;

namespace {

// The word that closes an object's data.
const int32_t kObjectTrailer = -1;

} // namespace

CVeskGdLegacySerialiserImpl::CVeskGdLegacySerialiserImpl(CVeskGdSerialiserIO* io)
    : m_pIO(io), m_objectDepth(0), m_nNesting(0), m_bEndOfData(0)
{}

bool CVeskGdLegacySerialiserImpl::Tracing() { return GetDebugOutputLevel() > 0; }

bool CVeskGdLegacySerialiserImpl::TracingValues() { return m_objectDepth != 0 && Tracing(); }

// Writing ----------------------------------------------------------------------------------------

void CVeskGdLegacySerialiserImpl::WriteWord(int32_t value)
{
    unsigned char bytes[4];
    vesk::serialise::PutLE32(bytes, static_cast<uint32_t>(value));
    m_pIO->Write(bytes, 4);
}

int CVeskGdLegacySerialiserImpl::WriteGdObject(CVeskGenericData* value)
{
    return vesk::serialise::WriteValue(this, value, [this](int type) { WriteWord(type); });
}

int CVeskGdLegacySerialiserImpl::WriteObject(CVeskGdObject* object)
{
    if (!object)
        return 0;
    Level level(m_objectDepth);
    IVeskSerialise* serialise = vesk::serialise::SerialiseOf(object);
    if (!serialise) {
        DorlDump("Object is not serialisable. It doesn't support the IVeskSerialise interface.\n");
        return 0;
    }
    CDorlString name = serialise->GetCreationName();
    if (name.IsEmpty()) {
        DorlDump("Object is not serialisable. It has a blank 'creation name'.\n");
        serialise->Release();
        return 0;
    }
    // The readers of this format know data sets by the lower-case name.
    if (name == "DataSet")
        name = "dataset";
    WriteWord(CVeskGenericData::dtObject);
    WriteString(name, true);

    const char* text = name;
    if (Tracing())
        DorlDump("----- Calling Serialize() of object (%s) -----\n", text);
    int serialised = serialise->Serialise(this);
    serialise->Release();
    if (!serialised)
        DorlDump("Object (%s) is not serialisable. Object's Serialise() failed.\n", text);
    if (Tracing())
        DorlDump("----- Finished Serialize() of object (%s) -----\n", text);
    WriteObjectTrailer();
    return serialised ? 1 : 0;
}

void CVeskGdLegacySerialiserImpl::WriteObjectTrailer()
{
    if (TracingValues())
        DorlDump("      Writing object trailer\n");
    WriteWord(kObjectTrailer);
}

void CVeskGdLegacySerialiserImpl::WriteDouble(double value, bool)
{
    if (TracingValues())
        DorlDump("      Writing double (%f)\n", value);
    unsigned char bytes[12];
    vesk::serialise::PutLE32(bytes, CVeskGenericData::dtNumber);
    vesk::serialise::PutDouble(bytes + 4, value);
    m_pIO->Write(bytes, 12);
}

void CVeskGdLegacySerialiserImpl::WriteLong(long value, bool writeType)
{
    WriteDouble(static_cast<double>(value), writeType);
}

void CVeskGdLegacySerialiserImpl::WriteUnsignedLong(long value, bool writeType)
{
    WriteDouble(static_cast<double>(static_cast<uint32_t>(value)), writeType);
}

void CVeskGdLegacySerialiserImpl::WriteBoolean(int value, bool)
{
    if (TracingValues())
        DorlDump("      Writing Boolean (%d)\n", value);
    unsigned char bytes[8];
    vesk::serialise::PutLE32(bytes, CVeskGenericData::dtBoolean);
    vesk::serialise::PutLE32(bytes + 4, static_cast<uint32_t>(value));
    m_pIO->Write(bytes, 8);
}

void CVeskGdLegacySerialiserImpl::WriteString(CDorlString value, bool)
{
    if (TracingValues())
        DorlDump("      Writing string (%s)\n", static_cast<const char*>(value));
    unsigned char header[8];
    int length = value.GetLength();
    vesk::serialise::PutLE32(header, CVeskGenericData::dtString);
    vesk::serialise::PutLE32(header + 4, static_cast<uint32_t>(length));
    m_pIO->Write(header, 8);
    if (length > 0)
        m_pIO->Write(static_cast<const char*>(value), length);
}

void CVeskGdLegacySerialiserImpl::WriteNull(bool) {}

void CVeskGdLegacySerialiserImpl::WriteVectorHeader(int size)
{
    if (TracingValues())
        DorlDump("      Writing vector header (%d)\n", size);
    unsigned char bytes[8];
    vesk::serialise::PutLE32(bytes, CVeskGenericData::dtVector);
    vesk::serialise::PutLE32(bytes + 4, static_cast<uint32_t>(size));
    m_pIO->Write(bytes, 8);
}

// Reading ----------------------------------------------------------------------------------------

int CVeskGdLegacySerialiserImpl::ReadBytes(void* data, int size)
{
    return vesk::serialise::ReadBytes(m_pIO, data, size, m_bEndOfData);
}

int CVeskGdLegacySerialiserImpl::ReadWord(int32_t& value)
{
    unsigned char bytes[4];
    if (!ReadBytes(bytes, 4))
        return 0;
    value = static_cast<int32_t>(vesk::serialise::GetLE32(bytes));
    return 1;
}

SerialiseType CVeskGdLegacySerialiserImpl::ReadType() { return static_cast<SerialiseType>(0); }

int CVeskGdLegacySerialiserImpl::ReadType(int32_t& type)
{
    if (ReadWord(type))
        return 1;
    DorlDump("ReadType: Expecting a GenericData::DataType value. Read end of data.\n");
    return 0;
}

int CVeskGdLegacySerialiserImpl::ReadExpectedType(int32_t expected, int32_t& got)
{
    if (!ReadType(got))
        return 0;
    if (got == expected)
        return 1;
    DorlDump("ReadType: Expecting GenericData::DataType of (%d). Got (%d)\n", expected, got);
    // Inside an object the rest of it is of no use: the stream moves on to its trailer.
    if (m_objectDepth)
        ReadToObjectTrailer(got);
    return 0;
}

int CVeskGdLegacySerialiserImpl::ReadExpectedType(int32_t expected)
{
    int32_t got;
    return ReadExpectedType(expected, got);
}

int CVeskGdLegacySerialiserImpl::ReadObjectTrailer()
{
    if (!ReadExpectedType(kObjectTrailer))
        return 0;
    if (TracingValues())
        DorlDump("      Read object trailer\n");
    return 1;
}

int CVeskGdLegacySerialiserImpl::ReadToObjectTrailer(int32_t type)
{
    if (TracingValues())
        DorlDump("Reading data up to 'object trailer'...\n");
    while (type != kObjectTrailer) {
        if (!ReadData(type, nullptr))
            return 0;
        if (!ReadWord(type)) {
            DorlDump("ReadToObjectTrailer: Read to end of data.\n");
            return 0;
        }
    }
    return 1;
}

CVeskGenericData* CVeskGdLegacySerialiserImpl::ReadGdObject()
{
    int32_t type;
    if (!ReadType(type))
        return nullptr;
    CVeskGenericData* value = nullptr;
    if (!ReadData(type, &value))
        return nullptr;
    return value;
}

int CVeskGdLegacySerialiserImpl::ReadData(int32_t type, CVeskGenericData** out)
{
    if (m_nNesting > kMaxDepth) {
        DorlDump("Serialised objects are nested too deeply\n");
        return 0;
    }
    Level level(m_nNesting);

    CVeskGenericData* value = nullptr;
    switch (type) {
    case CVeskGenericData::dtNull:
        value = CVeskGdNull::Allocate();
        break;
    case CVeskGenericData::dtBoolean: {
        int flag;
        if (!ReadBoolean(flag, 0))
            return 0;
        value = CVeskGdBoolean::Allocate(flag);
        break;
    }
    case CVeskGenericData::dtNumber: {
        double number;
        if (!ReadDouble(number, 0))
            return 0;
        value = CVeskGdDouble::Allocate(number);
        break;
    }
    case CVeskGenericData::dtString: {
        CDorlString text;
        if (!ReadString(text, 0))
            return 0;
        value = CVeskGdString::Allocate(text);
        break;
    }
    case CVeskGenericData::dtVector:
        return ReadVector(out);
    case CVeskGenericData::dtObject:
        // An object that could not be made is no failure of the stream: the read goes on.
        value = ReadObject(0);
        break;
    case CVeskGenericData::dtNone:
        value = CVeskGdNone::Allocate();
        break;
    default:
        return 0;
    }
    return vesk::serialise::Deliver(value, out);
}

int CVeskGdLegacySerialiserImpl::ReadVector(CVeskGenericData** out)
{
    int32_t count;
    if (!ReadWord(count))
        return 0;
    if (!out) {
        for (int32_t i = 0; i < count && !m_bEndOfData; ++i) {
            int32_t type;
            if (ReadType(type))
                ReadData(type, nullptr);
        }
        return 1;
    }
    CVeskGdVector* vector = CVeskGdVector::Allocate(vesk::serialise::InitialVectorSize(count));
    for (int32_t i = 0; i < count; ++i) {
        CVeskGenericData* element = ReadGdObject();
        if (!element) {
            // A bad element costs only itself, but once the data has ended no element can
            // follow: the vector is given up rather than filled out to what its count claims.
            DorlDump("Could not deserialise vector element at position (%d).\n", i + 1);
            if (m_bEndOfData) {
                vector->Release();
                return 0;
            }
            element = CVeskGdNone::Allocate();
        }
        vector->SetElement(i, element);
        element->Release();
    }
    *out = vector;
    return 1;
}

CVeskGenericData* CVeskGdLegacySerialiserImpl::ReadObject(int checkType)
{
    Level level(m_objectDepth);
    if (checkType && !ReadExpectedType(CVeskGenericData::dtObject))
        return nullptr;
    CDorlString name;
    if (!ReadString(name, 1)) {
        DorlDump("Object is not deserialisable. Failed to read 'creation name'.\n");
        return nullptr;
    }
    if (name.IsEmpty()) {
        DorlDump("Object is not deserialisable. It has a blank 'creation name'.\n");
        return nullptr;
    }
    const char* text = name;
    CVeskGenericData* value = vesk::serialise::CreateObject(m_pIO, name);
    if (!value)
        return nullptr;
    IVeskSerialise* serialise = vesk::serialise::SerialiseOf(static_cast<CVeskGdObject*>(value));
    if (!serialise) {
        DorlDump(
            "Object is not deserialisable. It doesn't support the IVeskSerialise interface.\n");
        value->Release();
        return nullptr;
    }

    if (Tracing())
        DorlDump("----- Calling Deserialise() of object (%s) -----\n", text);
    CVeskGenericData* replacement = nullptr;
    bool failed = !serialise->Deserialise(this, &replacement);
    serialise->Release();
    if (failed) {
        DorlDump("Object (%s) is not deserialisable. Object's Deserialise() failed.\n", text);
        // None has no payload: the scan starts at the next word.
        ReadToObjectTrailer(CVeskGenericData::dtNone);
    }
    if (replacement) {
        value->Release();
        value = replacement;
    }
    if (Tracing())
        DorlDump("----- Finished Deserialise() of object (%s) -----\n", text);
    if (!failed && !ReadObjectTrailer())
        failed = true;
    if (failed) {
        value->Release();
        return nullptr;
    }
    return value;
}

int CVeskGdLegacySerialiserImpl::ReadString(CDorlString& value, int checkType)
{
    if (checkType && !ReadExpectedType(CVeskGenericData::dtString))
        return 0;
    int32_t length;
    if (!ReadWord(length)) {
        DorlDump("ReadString: Failed to read data. Expecting to read the length of a string.\n");
        return 0;
    }
    // The format holds the whole length and then the bytes; they are read in steps all the same,
    // so that a damaged length fails on the end of the data rather than on memory.
    auto read = [this](char* data, int size) { return ReadBytes(data, size) != 0; };
    if (length < 0 ||
        !vesk::serialise::ReadStringBytes(value, static_cast<uint32_t>(length), read)) {
        DorlDump("ReadString: Expecting to read a String. Read end of data.\n");
        return 0;
    }
    if (TracingValues())
        DorlDump("      Read string (%s)\n", static_cast<const char*>(value));
    return 1;
}

int CVeskGdLegacySerialiserImpl::ReadDouble(double& value, int checkType)
{
    if (checkType && !ReadExpectedType(CVeskGenericData::dtNumber))
        return 0;
    unsigned char bytes[8];
    if (!ReadBytes(bytes, 8)) {
        DorlDump("ReadDouble: Expecting to read a double. Read end of data.\n");
        return 0;
    }
    value = vesk::serialise::GetDouble(bytes);
    if (TracingValues())
        DorlDump("      Read double (%f)\n", value);
    return 1;
}

int CVeskGdLegacySerialiserImpl::ReadLong(long& value, int checkType)
{
    double number;
    if (!ReadDouble(number, checkType))
        return 0;
    value = static_cast<int32_t>(vesk::serialise::TruncateTo32(number));
    return 1;
}

int CVeskGdLegacySerialiserImpl::ReadUnsignedLong(unsigned long& value, int checkType)
{
    double number;
    if (!ReadDouble(number, checkType))
        return 0;
    value = vesk::serialise::TruncateTo32(number);
    return 1;
}

int CVeskGdLegacySerialiserImpl::ReadBoolean(int& value, int checkType)
{
    if (checkType && !ReadExpectedType(CVeskGenericData::dtBoolean))
        return 0;
    int32_t word;
    if (!ReadWord(word)) {
        DorlDump("ReadBoolean: Expecting to read a Boolean. Read end of data.\n");
        return 0;
    }
    value = word;
    if (TracingValues())
        DorlDump("      Read Boolean (%d)\n", value);
    return 1;
}
