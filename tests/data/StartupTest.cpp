// The library's start-up routine, seen from a process that has not run it yet: this program
// runs nothing else before it.

#include "support/VeskTest.h"

using namespace vesk_test;

TEST(GenericDataStartup, ProxyTypesAreZeroUntilTheStartupRoutineRuns)
{
    Ref<CVeskGenericData> number(CVeskGdDouble::Allocate(1.0));
    EXPECT_EQ(VeskGdDoubleProxyType, 0);
    EXPECT_FALSE(VeskIsGdDouble(number.get()));

    DorlRunInitialisers();
    EXPECT_NE(VeskGdDoubleProxyType, 0);
    EXPECT_TRUE(VeskIsGdDouble(number.get()));
    EXPECT_EQ(VeskGetGdProxyType(number.get()), VeskGdDoubleProxyType);

    // Each class has its own word, and a value matches only its own class.
    long types[] = {VeskGdDoubleProxyType,   VeskGdStringProxyType, VeskGdBooleanProxyType,
                    VeskGdNullProxyType,     VeskGdNoneProxyType,   VeskGdObjectProxyType,
                    VeskGdIndirectProxyType, VeskGdVectorProxyType};
    bool (*is[])(CVeskGenericData*) = {VeskIsGdDouble,   VeskIsGdString, VeskIsGdBoolean,
                                       VeskIsGdNull,     VeskIsGdNone,   VeskIsGdObject,
                                       VeskIsGdIndirect, VeskIsGdVector};
    CVeskGenericData* values[] = {CVeskGdDouble::Allocate(2.0),
                                  CVeskGdString::Allocate("x"),
                                  CVeskGdBoolean::Allocate(0),
                                  CVeskGdNull::Allocate(),
                                  CVeskGdNone::Allocate(),
                                  CVeskGdObject::Allocate(nullptr, 1),
                                  CVeskGdIndirect::Allocate(),
                                  CVeskGenericData::GenericAllocate(CVeskGenericData::dtVector)};
    for (size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(VeskGetGdProxyType(values[i]), types[i]) << i;
        for (size_t j = 0; j < 8; ++j)
            EXPECT_EQ(is[j](values[i]), i == j) << i << " as " << j;
    }
    for (CVeskGenericData* value : values)
        value->Release();

    // The start-up routine also names the framework's interfaces.
    EXPECT_STREQ(VeskTranslateInterfaceId(IID_IVeskCommand), "IVeskCommand");
}
