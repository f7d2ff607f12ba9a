// Module-level behaviour of the library, and the base of module objects.

#include "vesk/DLL.h"

#include <dorl/DorlDiag.h>

// A call that reaches an operation that a class of this library leaves pure (only possible while
// such an object is being built or torn down) is reported and answered with 0, so the caller
// sees a null pointer or a zero and goes on. The definition is hidden: it serves this library's
// own class tables and leaves every other module's handling alone.
extern "C" long __cxa_pure_virtual()
{
    DorlDisplayAssert("Pure Virtual Function Call", "DLL", 0);
    return 0;
}

VESK_BEGIN_INTERFACE_MAP(CVeskDLL, CVeskEnumerate)
    VESK_INTERFACE(IID_IVeskDLL, VeskDLL)
VESK_END_INTERFACE_MAP()

CVeskDLL::CVeskDLL() : m_pStartupUnknown(nullptr) {}

CVeskDLL::~CVeskDLL() = default;

int CVeskDLL::OnStartup(IUnknown* pUnknown)
{
    m_pStartupUnknown = pUnknown;
    return 1;
}

int CVeskDLL::OnShutdown()
{
    // One entry at a time from the head, so that an entry that a release adds is released too.
    while (!IsEmpty()) {
        if (IUnknown* entry = GetHead())
            entry->Release();
        RemoveHead();
    }
    return 1;
}

unsigned long CVeskDLL::OnGetVersion() { return 1; }

const CDorlString& CVeskDLL::OnGetName()
{
    static const CDorlString s_sEmpty;
    return s_sEmpty;
}

int CVeskDLL::XVeskDLLObj::Startup(IUnknown* pUnknown) { return Owner()->OnStartup(pUnknown); }

int CVeskDLL::XVeskDLLObj::Shutdown() { return Owner()->OnShutdown(); }

unsigned long CVeskDLL::XVeskDLLObj::GetVersion() { return Owner()->OnGetVersion(); }

const CDorlString& CVeskDLL::XVeskDLLObj::GetName() { return Owner()->OnGetName(); }
