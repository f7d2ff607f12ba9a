// Feeds arbitrary bytes to the configuration text reader: whatever the text, the reader must
// answer with a value or with a message and null, within bounded stack and memory.

#include <cstddef>
#include <cstdint>

#include <vesk/vesk.h>

namespace {

void Discard(const char*) {}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    DorlRunInitialisers();
    DorlSetDumpHandler(&Discard);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size > 0x7fffffff)
        return 0;
    CDorlString text(reinterpret_cast<const char*>(data), static_cast<int>(size));
    if (CVeskGenericData* value = VeskReadConfigString(text))
        value->Release();
    return 0;
}
