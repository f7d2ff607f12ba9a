#pragma once

// The one thing this module exports: a way to make a thermostat. Callers never see the class;
// they talk to what they get through IVeskCommand alone.

#include <vesk/vesk.h>

#if defined(VESK_THERMOSTAT_BUILD)
#define THERMOSTAT_API __attribute__((visibility("default")))
#else
#define THERMOSTAT_API
#endif

// A new thermostat for the room, with one reference for the caller.
THERMOSTAT_API IVeskCommand* ThermostatCreate(const char* room);
