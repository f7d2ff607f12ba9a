// The parts of the serialiser interfaces that every format and every stream share, and the
// current, compact format.

#include <climits>

#include <dorl/DorlDiag.h>

#include "serialise/SerialiseCommon.h"
#include "vesk/CommandContext.h"
#include "vesk/GdContainer.h"
#include "vesk/GdVector.h"
#include "vesk/InterfaceIds.h"

using vesk::serialise::Level;

CVeskGdSerialiserIO::~CVeskGdSerialiserIO() = default;

// A stream that never meets an object has no use for a creator.
IVeskCommand* CVeskGdSerialiserIO::GetObjectCreator() { return nullptr; }

// The serialiser reports the mismatch itself; a stream overrides this only to learn of it.
void CVeskGdSerialiserIO::OnTypeMismatch() {}

CVeskGdSerialiser::~CVeskGdSerialiser() = default;

int CVeskGdSerialiser::GetDebugOutputLevel() { return 0; }

namespace vesk::serialise {

IVeskSerialise* SerialiseOf(CVeskGdObject* object)
{
    void* serialise = nullptr;
    if (FAILED(object->GetInterface(IID_IVeskSerialise, &serialise, DorlPchNil)) || !serialise)
        return nullptr;
    return static_cast<IVeskSerialise*>(serialise);
}

CVeskGenericData* CreateObject(CVeskGdSerialiserIO* io, const CDorlString& name)
{
    IVeskCommand* creator = io->GetObjectCreator();
    if (!creator) {
        DorlDump("Could not create object (%s). 'objectCreator' property is not set.\n",
                 static_cast<const char*>(name));
        return nullptr;
    }
    CVeskCommandContext context;
    context.AddParamNoRef(DorlPchNil, CVeskGdString::Allocate(name));
    creator->CallMethod(&context);
    CVeskGenericData* value = context.GetReturnValue();
    // A context's return value starts as None: a creator that made nothing leaves that.
    if (!value || value->GetType() != CVeskGenericData::dtObject) {
        DorlDump("ObjectCreator failed to create object (%s).\n", static_cast<const char*>(name));
        if (value)
            value->Release();
        return nullptr;
    }
    return value;
}

} // namespace vesk::serialise

namespace {

#define VESK_SERIALISE_ASSERT(expr)                                                                \
    do {                                                                                           \
        if (!(expr))                                                                               \
            DorlDisplayAssert(#expr, "GdSerialise", __LINE__);                                     \
    } while (0)

// A count of the current format: seven bits a byte, least significant first, the top bit set on
// every byte but the last. Five bytes at most for 32 bits.
int EncodeCount(unsigned char* out, uint32_t value)
{
    int size = 0;
    while (value >= 0x80) {
        out[size++] = static_cast<unsigned char>(value | 0x80);
        value >>= 7;
    }
    out[size++] = static_cast<unsigned char>(value);
    return size;
}

CVeskGenericData* NewAssocArrayValue(CVeskGenericData* defaultValue)
{
    VeskAssocArray* array = new VeskAssocArray(defaultValue);
    CVeskGenericData* value = CVeskGdObject::Allocate(array);
    array->Release();
    return value;
}

} // namespace

CVeskGdSerialiserImpl::CVeskGdSerialiserImpl(CVeskGdSerialiserIO* io)
    : m_pIO(io), m_objectDepth(0), m_depth(0), m_bEndOfData(0)
{}

// Writing ----------------------------------------------------------------------------------------

void CVeskGdSerialiserImpl::WriteByte(int value)
{
    unsigned char byte = static_cast<unsigned char>(value);
    m_pIO->Write(&byte, 1);
}

int CVeskGdSerialiserImpl::WriteGdObject(CVeskGenericData* value)
{
    return vesk::serialise::WriteValue(this, value, [this](int type) {
        WriteByte(type == CVeskGenericData::dtNull ? SerialiseNull : SerialiseNone);
    });
}

int CVeskGdSerialiserImpl::WriteObject(CVeskGdObject* object)
{
    if (!object)
        return 0;
    Level level(m_objectDepth);
    IVeskSerialise* serialise = vesk::serialise::SerialiseOf(object);
    if (!serialise) {
        DorlDump("Object doesn't support the IVeskSerialise\n");
        return 0;
    }
    CDorlString name = serialise->GetCreationName();
    int serialised;
    if (name.IsEmpty()) {
        // The array form: what the object writes must be what ReadArray reads.
        WriteByte(SerialiseArray);
        serialised = serialise->Serialise(this);
    } else {
        WriteByte(SerialiseObject);
        WriteString(name, false);
        serialised = serialise->Serialise(this);
        if (!serialised)
            DorlDump("Object (%s) Serialise() failed.\n", static_cast<const char*>(name));
        WriteByte(SerialiseObjectTrailer);
    }
    serialise->Release();
    return serialised ? 1 : 0;
}

void CVeskGdSerialiserImpl::WriteDouble(double value, bool writeType)
{
    unsigned char bytes[9];
    bytes[0] = SerialiseDouble;
    vesk::serialise::PutDouble(bytes + 1, value);
    if (writeType)
        m_pIO->Write(bytes, 9);
    else
        m_pIO->Write(bytes + 1, 8);
}

void CVeskGdSerialiserImpl::WriteLong(long value, bool writeType)
{
    unsigned char bytes[5];
    bytes[0] = SerialiseLong;
    vesk::serialise::PutLE32(bytes + 1, static_cast<uint32_t>(value));
    if (writeType)
        m_pIO->Write(bytes, 5);
    else
        m_pIO->Write(bytes + 1, 4);
}

void CVeskGdSerialiserImpl::WriteUnsignedLong(long value, bool writeType)
{
    unsigned char bytes[6];
    bytes[0] = SerialiseUnsignedLong;
    int size = EncodeCount(bytes + 1, static_cast<uint32_t>(value));
    if (writeType)
        m_pIO->Write(bytes, size + 1);
    else
        m_pIO->Write(bytes + 1, size);
}

void CVeskGdSerialiserImpl::WriteBoolean(int value, bool)
{
    WriteByte(value ? SerialiseTrue : SerialiseFalse);
}

void CVeskGdSerialiserImpl::WriteString(CDorlString value, bool writeType)
{
    unsigned char header[6];
    header[0] = SerialiseString;
    int length = value.GetLength();
    int size = EncodeCount(header + 1, static_cast<uint32_t>(length));
    if (writeType)
        m_pIO->Write(header, size + 1);
    else
        m_pIO->Write(header + 1, size);
    if (length > 0)
        m_pIO->Write(static_cast<const char*>(value), length);
}

void CVeskGdSerialiserImpl::WriteNull(bool) { WriteByte(SerialiseNull); }

void CVeskGdSerialiserImpl::WriteVectorHeader(int size)
{
    unsigned char bytes[6];
    bytes[0] = SerialiseVector;
    m_pIO->Write(bytes, 1 + EncodeCount(bytes + 1, static_cast<uint32_t>(size)));
}

// Reading ----------------------------------------------------------------------------------------

int CVeskGdSerialiserImpl::ReadBytes(void* data, int size)
{
    return vesk::serialise::ReadBytes(m_pIO, data, size, m_bEndOfData);
}

SerialiseType CVeskGdSerialiserImpl::ReadType()
{
    signed char code;
    if (!ReadBytes(&code, 1)) {
        DorlDump("ReadType: End of data\n");
        return static_cast<SerialiseType>(0);
    }
    return static_cast<SerialiseType>(code);
}

int CVeskGdSerialiserImpl::CheckType(int expected)
{
    int code = ReadType();
    if (!code)
        return 0;
    if (code == expected)
        return 1;
    m_pIO->OnTypeMismatch();
    DorlDump("ReadType: Expecting type %d got %d\n", expected, code);
    // Inside an object the rest of it is of no use: the stream moves on to its trailer, so that
    // whatever holds the object can go on behind it.
    if (m_objectDepth)
        ReadToObjectTrailer(code);
    return 0;
}

int CVeskGdSerialiserImpl::ReadToObjectTrailer(int code)
{
    while (code != SerialiseObjectTrailer) {
        if (!ReadData(code, nullptr))
            return 0;
        code = ReadType();
        if (!code) {
            DorlDump("ReadToObjectTrailer: End of data\n");
            return 0;
        }
    }
    return 1;
}

CVeskGenericData* CVeskGdSerialiserImpl::ReadGdObject()
{
    int code = ReadType();
    if (!code)
        return nullptr;
    CVeskGenericData* value = nullptr;
    if (!ReadData(code, &value))
        return nullptr;
    return value;
}

int CVeskGdSerialiserImpl::ReadData(int code, CVeskGenericData** out)
{
    VESK_SERIALISE_ASSERT(m_depth >= 0);
    if (m_depth > kMaxDepth) {
        DorlDump("Serialised objects are nested too deeply\n");
        return 0;
    }
    Level level(m_depth);

    CVeskGenericData* value = nullptr;
    switch (code) {
    case SerialiseNone:
        value = CVeskGdNone::Allocate();
        break;
    case SerialiseNull:
        value = CVeskGdNull::Allocate();
        break;
    case SerialiseTrue:
    case SerialiseFalse:
        value = CVeskGdBoolean::Allocate(code == SerialiseTrue);
        break;
    case SerialiseDouble: {
        double number;
        if (!ReadDouble(number, 0))
            return 0;
        value = CVeskGdDouble::Allocate(number);
        break;
    }
    case SerialiseLong: {
        long number;
        if (!ReadLong(number, 0))
            return 0;
        value = CVeskGdDouble::Allocate(static_cast<double>(number));
        break;
    }
    case SerialiseUnsignedLong: {
        unsigned long number;
        if (!ReadUnsignedLong(number, 0))
            return 0;
        value = CVeskGdDouble::Allocate(static_cast<double>(static_cast<uint32_t>(number)));
        break;
    }
    case SerialiseString: {
        CDorlString text;
        if (!ReadString(text, 0))
            return 0;
        value = CVeskGdString::Allocate(text);
        break;
    }
    case SerialiseObject:
        // An object that could not be made is no failure of the stream: the read goes on.
        value = ReadObject(0);
        break;
    case SerialiseVector:
        return ReadVector(out);
    case SerialiseArray:
        return ReadArray(out);
    default:
        return 0;
    }
    return vesk::serialise::Deliver(value, out);
}

int CVeskGdSerialiserImpl::ReadVector(CVeskGenericData** out)
{
    unsigned long count;
    if (!ReadUnsignedLong(count, 0))
        return 0;
    if (!out) {
        // Skipping: every element is read whatever becomes of it, until the data ends.
        for (unsigned long i = 0; i < count && !m_bEndOfData; ++i)
            ReadData(ReadType(), nullptr);
        return 1;
    }
    CVeskGdVector* vector =
        CVeskGdVector::Allocate(vesk::serialise::InitialVectorSize(static_cast<int64_t>(count)));
    for (unsigned long i = 0; i < count; ++i) {
        CVeskGenericData* element = i < INT_MAX ? ReadGdObject() : nullptr;
        if (!element) {
            vector->Release();
            return 0;
        }
        vector->SetElement(static_cast<int>(i), element);
        element->Release();
    }
    *out = vector;
    return 1;
}

int CVeskGdSerialiserImpl::ReadArray(CVeskGenericData** out)
{
    unsigned long count;
    if (!ReadUnsignedLong(count, 0))
        return 0;
    CVeskGenericData* defaultValue = ReadGdObject();
    if (!defaultValue)
        return 0;
    VeskAssocArray* array = new VeskAssocArray(defaultValue);
    defaultValue->Release();
    for (unsigned long i = 0; i < count; ++i) {
        CDorlString key;
        CVeskGenericData* value = ReadString(key, 0) ? ReadGdObject() : nullptr;
        if (!value) {
            array->Release();
            return 0;
        }
        // Stored as written: the rule that the default deletes an entry is not applied here.
        array->AddPropertyNoRef(key, value);
    }
    CVeskGenericData* value = CVeskGdObject::Allocate(array);
    array->Release();
    return vesk::serialise::Deliver(value, out);
}

CVeskGenericData* CVeskGdSerialiserImpl::ReadObject(int checkType)
{
    Level level(m_objectDepth);
    if (checkType && !CheckType(SerialiseObject))
        return nullptr;
    CDorlString name;
    if (!ReadString(name, 0)) {
        DorlDump("Object is not deserialisable. Failed to read 'creation name'.\n");
        return nullptr;
    }

    CVeskGenericData* value;
    if (name == "AssocArray") {
        CVeskGenericData* none = CVeskGdNone::Allocate();
        value = NewAssocArrayValue(none);
        none->Release();
    } else {
        value = vesk::serialise::CreateObject(m_pIO, name);
        if (!value)
            return nullptr;
    }

    IVeskSerialise* serialise = vesk::serialise::SerialiseOf(static_cast<CVeskGdObject*>(value));
    if (!serialise) {
        DorlDump("Object doesn't support the IVeskSerialise interface.\n");
        value->Release();
        return nullptr;
    }
    CVeskGenericData* replacement = nullptr;
    int deserialised = serialise->Deserialise(this, &replacement);
    serialise->Release();
    if (!deserialised) {
        DorlDump("Object (%s) is not deserialisable. Object's Deserialise() failed.\n",
                 static_cast<const char*>(name));
        // None has no payload: the scan starts at the next byte.
        ReadToObjectTrailer(SerialiseNone);
        if (replacement)
            replacement->Release();
        value->Release();
        return nullptr;
    }
    if (replacement) {
        value->Release();
        value = replacement;
    }
    if (!CheckType(SerialiseObjectTrailer)) {
        value->Release();
        return nullptr;
    }
    return value;
}

int CVeskGdSerialiserImpl::ReadDouble(double& value, int checkType)
{
    if (checkType && !CheckType(SerialiseDouble))
        return 0;
    unsigned char bytes[8];
    if (!ReadBytes(bytes, 8)) {
        DorlDump("ReadDouble: End of data\n");
        return 0;
    }
    value = vesk::serialise::GetDouble(bytes);
    return 1;
}

int CVeskGdSerialiserImpl::ReadLong(long& value, int checkType)
{
    if (checkType && !CheckType(SerialiseLong))
        return 0;
    unsigned char bytes[4];
    if (!ReadBytes(bytes, 4)) {
        DorlDump("ReadLong: End of data\n");
        return 0;
    }
    value = static_cast<int32_t>(vesk::serialise::GetLE32(bytes));
    return 1;
}

int CVeskGdSerialiserImpl::ReadUnsignedLong(unsigned long& value, int checkType)
{
    if (checkType && !CheckType(SerialiseUnsignedLong))
        return 0;
    uint32_t number = 0;
    int shift = 0;
    for (;;) {
        unsigned char byte;
        if (!ReadBytes(&byte, 1)) {
            DorlDump("ReadUnsignedLong: Expecting to read a long. Read end of data.\n");
            return 0;
        }
        // Groups past the 32nd bit have no meaning; they are read and dropped.
        if (shift < 32) {
            number |= static_cast<uint32_t>(byte & 0x7F) << shift;
            shift += 7;
        }
        if (!(byte & 0x80))
            break;
    }
    value = number;
    return 1;
}

int CVeskGdSerialiserImpl::ReadBoolean(int& value, int)
{
    int code = ReadType();
    if (!code)
        return 0;
    if (code == SerialiseTrue || code == SerialiseFalse) {
        value = code == SerialiseTrue;
        return 1;
    }
    DorlDump("ReadBoolean: Invalid type got %d\n", code);
    if (m_objectDepth)
        ReadToObjectTrailer(code);
    return 0;
}

int CVeskGdSerialiserImpl::ReadString(CDorlString& value, int checkType)
{
    if (checkType && !CheckType(SerialiseString))
        return 0;
    unsigned long length;
    if (!ReadUnsignedLong(length, 0)) {
        DorlDump("ReadString: Failed to read string length.\n");
        return 0;
    }
    if (length == 0) {
        value.Empty();
        return 1;
    }
    auto read = [this](char* data, int size) { return ReadBytes(data, size) != 0; };
    if (length > vesk::serialise::kLongestString ||
        !vesk::serialise::ReadStringBytes(value, static_cast<uint32_t>(length), read)) {
        DorlDump("ReadString: Failed to read string.\n");
        return 0;
    }
    return 1;
}
