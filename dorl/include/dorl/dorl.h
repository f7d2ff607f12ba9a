#pragma once

#include "DorlArchive.h"
#include "DorlDiag.h"
#include "DorlExport.h"
#include "DorlList.h"
#include "DorlPool.h"
#include "DorlProbe.h"
#include "DorlString.h"
#include "DorlThread.h"
#include "DorlTime.h"
#include "DorlTimer.h"
