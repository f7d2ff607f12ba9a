#pragma once

// Everything in libdorl is hidden unless marked: the exported surface is the contract.
#define DORL_API __attribute__((visibility("default")))
