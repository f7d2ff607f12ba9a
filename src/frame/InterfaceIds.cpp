#include "vesk/InterfaceIds.h"

#include <cstdio>
#include <cstring>
#include <map>

#include <dorl/DorlDiag.h>
#include <standin/Unknown.h>

#include "frame/InterfaceNames.h"

// One series: the identifiers differ only in the last two digits of the first field.
#define VESK_IID(last)                                                                             \
    {                                                                                              \
        0x067F5700 | (last), 0x8416, 0x11D0, { 0xBD, 0xFD, 0x00, 0x20, 0xAF, 0x6F, 0xA1, 0x61 }    \
    }

const IID IID_IVeskDLL = VESK_IID(0x21);
const IID IID_IVeskComponent = VESK_IID(0x23);
const IID IID_IVeskPin = VESK_IID(0x24);
const IID IID_IVeskEnumerate = VESK_IID(0x25);
const IID IID_IVeskDataStore = VESK_IID(0x26);
const IID IID_IVeskItem = VESK_IID(0x27);
const IID IID_IVeskTree = VESK_IID(0x28);
const IID IID_IVeskNotifier = VESK_IID(0x2B);
const IID IID_IVeskNotifyTarget = VESK_IID(0x2C);
const IID IID_IVeskCommand = VESK_IID(0x2E);
const IID IID_IVeskEventListener = VESK_IID(0x34);
const IID IID_IVeskTextSubject = VESK_IID(0x35);
const IID IID_IVeskTextObserver = VESK_IID(0x36);
const IID IID_IVeskSerialise = VESK_IID(0x38);
const IID IID_IVeskDataTransport = VESK_IID(0x39);
const IID IID_IVeskCounter = VESK_IID(0x3C);

namespace {

// Identifiers order as their 16 raw bytes.
struct RawLess {
    bool operator()(const GUID& a, const GUID& b) const
    {
        return std::memcmp(&a, &b, sizeof(GUID)) < 0;
    }
};

typedef std::map<GUID, CDorlString, RawLess> NameMap;

NameMap& Names()
{
    static NameMap s_names;
    return s_names;
}

} // namespace

void VeskRegisterInterfaceIdName(const GUID& iid, const CDorlString& name)
{
    CDorlString& entry = Names()[iid];
    if (!entry.IsEmpty() && entry != name)
        DorlDump("WARNING: %s and %s have duplicate interface ids\n",
                 static_cast<const char*>(entry), static_cast<const char*>(name));
    entry = name;
}

CDorlString VeskTranslateInterfaceId(const GUID& iid)
{
    const NameMap& names = Names();
    NameMap::const_iterator found = names.find(iid);
    if (found != names.end())
        return found->second;

    static char s_text[40];
    std::snprintf(s_text, sizeof s_text, "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x",
                  static_cast<unsigned>(iid.Data1), iid.Data2, iid.Data3, iid.Data4[0],
                  iid.Data4[1], iid.Data4[2], iid.Data4[3], iid.Data4[4], iid.Data4[5],
                  iid.Data4[6], iid.Data4[7]);
    return CDorlString(s_text);
}

void vesk::RegisterStandardInterfaceNames()
{
    VeskRegisterInterfaceIdName(IID_IUnknown, "IUnknown");
    VeskRegisterInterfaceIdName(IID_IVeskCommand, "IVeskCommand");
    VeskRegisterInterfaceIdName(IID_IVeskPin, "IVeskPin");
    VeskRegisterInterfaceIdName(IID_IVeskEnumerate, "IVeskEnumerate");
    VeskRegisterInterfaceIdName(IID_IVeskDataStore, "IVeskDataStore");
    VeskRegisterInterfaceIdName(IID_IVeskItem, "IVeskItem");
    VeskRegisterInterfaceIdName(IID_IVeskNotifier, "IVeskNotifier");
    VeskRegisterInterfaceIdName(IID_IVeskNotifyTarget, "IVeskNotifyTarget");
    VeskRegisterInterfaceIdName(IID_IVeskTree, "IVeskTree");
    VeskRegisterInterfaceIdName(IID_IVeskEventListener, "IVeskEventListener");
    VeskRegisterInterfaceIdName(IID_IVeskTextSubject, "IVeskTextSubject");
    VeskRegisterInterfaceIdName(IID_IVeskTextObserver, "IVeskTextObserver");
    VeskRegisterInterfaceIdName(IID_IVeskDataTransport, "IVeskDataTransport");
    VeskRegisterInterfaceIdName(IID_IVeskCounter, "IVeskCounter");
}
