#include "vesk/DLL.h"

namespace {

// What a handle points to. The list must not change while a cursor stands in it, so the
// position stays valid for the cursor's life.
struct EnumerateCursor {
    DORLPOSITION position;
};

EnumerateCursor* CursorOf(unsigned long handle)
{
    return reinterpret_cast<EnumerateCursor*>(handle);
}

} // namespace

static_assert(sizeof(unsigned long) >= sizeof(EnumerateCursor*),
              "a cursor's address is its handle");

VESK_BEGIN_INTERFACE_MAP(CVeskEnumerate, CVeskCOMObject)
    VESK_INTERFACE(IID_IVeskEnumerate, VeskEnumerate)
VESK_END_INTERFACE_MAP()

CVeskEnumerate::CVeskEnumerate() { EnableAggregation(); }

// Only Shutdown gives up the references of the list; here they are merely forgotten.
CVeskEnumerate::~CVeskEnumerate() { RemoveAll(); }

unsigned long CVeskEnumerate::OnOpen()
{
    return reinterpret_cast<unsigned long>(new EnumerateCursor{GetHeadPosition()});
}

IUnknown* CVeskEnumerate::OnNext(unsigned long handle)
{
    EnumerateCursor* cursor = CursorOf(handle);
    if (!cursor || !cursor->position)
        return nullptr;
    return GetNext(cursor->position);
}

void CVeskEnumerate::OnClose(unsigned long handle) { delete CursorOf(handle); }

unsigned long CVeskEnumerate::XVeskEnumerateObj::Open() { return Owner()->OnOpen(); }

IUnknown* CVeskEnumerate::XVeskEnumerateObj::Next(unsigned long handle)
{
    return Owner()->OnNext(handle);
}

void CVeskEnumerate::XVeskEnumerateObj::Close(unsigned long handle) { Owner()->OnClose(handle); }
