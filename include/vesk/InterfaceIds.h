#pragma once

// The identifiers of the framework's interfaces, and the registry that names identifiers in
// messages.

#include <dorl/DorlString.h>
#include <standin/Types.h>

#include "vesk/VeskExport.h"

VESK_API extern const IID IID_IVeskDLL;
VESK_API extern const IID IID_IVeskComponent;
VESK_API extern const IID IID_IVeskPin;
VESK_API extern const IID IID_IVeskEnumerate;
VESK_API extern const IID IID_IVeskDataStore;
VESK_API extern const IID IID_IVeskItem;
VESK_API extern const IID IID_IVeskTree;
VESK_API extern const IID IID_IVeskNotifier;
VESK_API extern const IID IID_IVeskNotifyTarget;
VESK_API extern const IID IID_IVeskCommand;
VESK_API extern const IID IID_IVeskEventListener;
VESK_API extern const IID IID_IVeskTextSubject;
VESK_API extern const IID IID_IVeskTextObserver;
VESK_API extern const IID IID_IVeskSerialise;
VESK_API extern const IID IID_IVeskDataTransport;
VESK_API extern const IID IID_IVeskCounter;

// The last registration of an identifier wins; a different earlier name is reported.
VESK_API void VeskRegisterInterfaceIdName(const GUID& iid, const CDorlString& name);

// The registered name, or the identifier in its hexadecimal form. Never adds an entry.
VESK_API CDorlString VeskTranslateInterfaceId(const GUID& iid);
