#include "serialise/SerialiseTestObjects.h"
