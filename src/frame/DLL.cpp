// Module-level behaviour of the library.

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
