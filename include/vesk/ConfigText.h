#pragma once

// The configuration text format: the human-readable form of one value. The readers and the
// writer of the format.

#include "vesk/GenericData.h"
#include "vesk/VeskExport.h"

// The value of the text in the file, a new reference; null on any failure, after a message.
VESK_API CVeskGenericData* VeskReadConfigFile(const char* path);
// The value of the text, a new reference; null on any failure, after a message.
VESK_API CVeskGenericData* VeskReadConfigString(const CDorlString& text);
// Writes the value's text to the file. False only when the file cannot be written.
VESK_API bool VeskWriteConfigFile(const char* path, CVeskGenericData* value);
