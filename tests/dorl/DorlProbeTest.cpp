#include <dorl/DorlProbe.h>

#include <gtest/gtest.h>

TEST(DorlProbe, VariablesAreFoundByPathAndNameWhileTheyLive)
{
    const char* path = "\\Resources\\GenericData";
    EXPECT_EQ(DorlFindProbe(path, "Count"), nullptr);
    {
        CDorlProbedLong count(path, "Count", 5, nullptr);
        static_cast<long&>(count) += 3;
        CDorlProberVariable* found = DorlFindProbe(path, "Count");
        ASSERT_EQ(found, &count);
        EXPECT_EQ(found->GetValue(), 8);
        EXPECT_EQ(DorlFindProbe(path, "count"), nullptr);
        EXPECT_EQ(DorlFindProbe("\\Resources", "Count"), nullptr);

        {
            CDorlProbedLong shadow(path, "Count", 1, nullptr);
            EXPECT_EQ(DorlFindProbe(path, "Count"), &shadow);
        }
        EXPECT_EQ(DorlFindProbe(path, "Count"), &count);
    }
    EXPECT_EQ(DorlFindProbe(path, "Count"), nullptr);
}
