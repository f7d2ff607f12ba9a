#pragma once

// The platform stand-in: what the object framework needs of COM and Win32.

#include "standin/Dispatch.h"
#include "standin/Library.h"
#include "standin/Sync.h"
#include "standin/Types.h"
#include "standin/Unknown.h"
