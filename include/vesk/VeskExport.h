#pragma once

// The exported surface of libvesk is its boundary: everything else stays hidden.
#define VESK_API __attribute__((visibility("default")))
