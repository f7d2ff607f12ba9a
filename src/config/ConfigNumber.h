#pragma once

// Number text of the configuration format: always the classic C rules, whatever locale the
// process has chosen, so that a file reads the same everywhere.

namespace vesk_config {

// strtod under the classic locale.
double ParseDouble(const char* text, char** end);

} // namespace vesk_config
