#pragma once

// The whole exported surface of Vesk; an outside client includes this and nothing else.

#include <dorl/dorl.h>
#include <standin/standin.h>

#include "vesk/COMObject.h"
#include "vesk/Command.h"
#include "vesk/CommandContext.h"
#include "vesk/Component.h"
#include "vesk/ConfigFile.h"
#include "vesk/ConfigText.h"
#include "vesk/DLL.h"
#include "vesk/DataSet.h"
#include "vesk/DataStore.h"
#include "vesk/DelayRelease.h"
#include "vesk/FunctionObj.h"
#include "vesk/GdContainer.h"
#include "vesk/GdIndirect.h"
#include "vesk/GdObject.h"
#include "vesk/GdSerialiser.h"
#include "vesk/GdSerialiserIO.h"
#include "vesk/GdVector.h"
#include "vesk/GenericData.h"
#include "vesk/InterfaceIds.h"
#include "vesk/LoadLibrary.h"
#include "vesk/PropertyAccessor.h"
#include "vesk/PropertyMap.h"
#include "vesk/TextEvents.h"
#include "vesk/VeskExport.h"
