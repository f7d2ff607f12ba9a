// Feeds arbitrary bytes to a stream reader: the current format, or the legacy one when built
// with VESK_FUZZ_LEGACY. Whatever the bytes, the reader must answer with values or with messages
// and null, within bounded stack, memory and time. Every value read is also written and read
// again: once a value has been through the format, writing it must give the same bytes each time.

#include <cstddef>
#include <cstdint>
#include <string>

#include <vesk/vesk.h>

namespace {

#ifdef VESK_FUZZ_LEGACY
typedef CVeskGdLegacySerialiserImpl Serialiser;
#else
typedef CVeskGdSerialiserImpl Serialiser;
#endif

CVeskGdObjectCreator* g_pCreator = nullptr;

void Discard(const char*) {}

// The bytes of the value, or false when the writer refused it (an array can hold keys whose
// values have no serialised form).
bool Write(CVeskGenericData* value, std::string* bytes)
{
    CVeskGdMemorySerialiserIO io(g_pCreator);
    Serialiser serialiser(&io);
    if (!serialiser.WriteGdObject(value))
        return false;
    bytes->assign(reinterpret_cast<const char*>(io.GetData()), io.GetSize());
    return true;
}

CVeskGenericData* Read(const std::string& bytes)
{
    CVeskGdMemorySerialiserIO io(bytes.data(), static_cast<int>(bytes.size()), g_pCreator);
    Serialiser serialiser(&io);
    return serialiser.ReadGdObject();
}

// The first pass may normalise (reserved keys dropped, the sparse rule applied, Booleans
// reduced); from the second on, the bytes must not change.
void CheckStable(CVeskGenericData* value)
{
    std::string first, second, third;
    if (!Write(value, &first))
        return;
    CVeskGenericData* once = Read(first);
    if (!once)
        return;
    bool written = Write(once, &second);
    once->Release();
    if (!written)
        return;
    CVeskGenericData* twice = Read(second);
    if (!twice)
        return;
    written = Write(twice, &third);
    twice->Release();
    if (!written || second != third)
        __builtin_trap();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    DorlRunInitialisers();
    DorlSetDumpHandler(&Discard);
    g_pCreator = new CVeskGdObjectCreator;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size > 0x7fffffff)
        return 0;
    CVeskGdMemorySerialiserIO io(data, static_cast<int>(size), g_pCreator);
    Serialiser serialiser(&io);
    // A stream may hold several values one after another.
    while (CVeskGenericData* value = serialiser.ReadGdObject()) {
        CheckStable(value);
        value->Release();
    }
    return 0;
}
