// The parts of the serialiser interfaces that every format and every stream share.

#include "vesk/GdSerialiser.h"

CVeskGdSerialiserIO::~CVeskGdSerialiserIO() = default;

// A stream that never meets an object has no use for a creator.
IVeskCommand* CVeskGdSerialiserIO::GetObjectCreator() { return nullptr; }

// The serialiser reports the mismatch itself; a stream overrides this only to learn of it.
void CVeskGdSerialiserIO::OnTypeMismatch() {}

CVeskGdSerialiser::~CVeskGdSerialiser() = default;

int CVeskGdSerialiser::GetDebugOutputLevel() { return 0; }
