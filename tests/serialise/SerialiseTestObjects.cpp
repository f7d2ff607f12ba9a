#include "serialise/SerialiseTestObjects.h"

namespace vesk_test {

VESK_BEGIN_INTERFACE_MAP(CTestPoint, CVeskCOMObject)
    VESK_INTERFACE(IID_IVeskSerialise, VeskSerialise)
VESK_END_INTERFACE_MAP()

VESK_BEGIN_INTERFACE_MAP(CTestOpaque, CVeskCOMObject)
    VESK_INTERFACE(IID_IVeskCommand, VeskCommand)
VESK_END_INTERFACE_MAP()

CVeskGdObjectCreator* MakeTestCreator()
{
    CVeskGdObjectCreator* creator = new CVeskGdObjectCreator;
    creator->Register("Point", &CTestPoint::Make);
    creator->Register("Opaque", &CTestOpaque::Make);
    // A point that, once read, hands over a string to stand in its place.
    creator->Register("Swap", [](const CDorlString& name) {
        CVeskGenericData* value = CTestPoint::Make(name);
        CTestPoint::Of(value)->m_pReplacement = CVeskGdString::Allocate("swapped");
        return value;
    });
    return creator;
}

} // namespace vesk_test
