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
    for (size_t i = 0; i < 8; ++i)
        for (size_t j = i + 1; j < 8; ++j)
            EXPECT_NE(types[i], types[j]);
    Ref<CVeskGenericData> text(CVeskGdString::Allocate("x"));
    EXPECT_TRUE(VeskIsGdString(text.get()));
    EXPECT_FALSE(VeskIsGdDouble(text.get()));
    EXPECT_TRUE(VeskIsGdBoolean(CVeskGdBoolean::Allocate(0)));
    EXPECT_TRUE(VeskIsGdNull(CVeskGdNull::Allocate()));
    EXPECT_TRUE(VeskIsGdNone(CVeskGdNone::Allocate()));
    EXPECT_FALSE(VeskIsGdNone(CVeskGdNull::Allocate()));
    Ref<CVeskGenericData> indirect(CVeskGdIndirect::Allocate());
    Ref<CVeskGenericData> object(CVeskGdObject::Allocate(nullptr, 1));
    EXPECT_TRUE(VeskIsGdIndirect(indirect.get()));
    EXPECT_TRUE(VeskIsGdObject(object.get()));
    EXPECT_FALSE(VeskIsGdObject(indirect.get()));
    Ref<CVeskGenericData> vector(CVeskGenericData::GenericAllocate(CVeskGenericData::dtVector));
    EXPECT_TRUE(VeskIsGdVector(vector.get()));
    EXPECT_FALSE(VeskIsGdVector(indirect.get()));

    // The start-up routine also names the framework's interfaces.
    EXPECT_STREQ(VeskTranslateInterfaceId(IID_IVeskCommand), "IVeskCommand");
}
