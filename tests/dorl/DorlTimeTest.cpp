#include <dorl/DorlTime.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <string>

namespace {

std::string Text(const CDorlString& text) { return std::string(text, text.GetLength()); }

std::string Parts(const CDorlTimeSpan& span)
{
    return std::to_string(span.GetDays()) + " " + std::to_string(span.GetHours()) + " " +
           std::to_string(span.GetMinutes()) + " " + std::to_string(span.GetSeconds());
}

} // namespace

TEST(DorlTime, FormatsLocalAndUniversalTime)
{
    setenv("TZ", "EST5", 1);
    tzset();
    CDorlTime newYear(31536000); // 1971-01-01 00:00:00 UTC
    EXPECT_EQ(Text(newYear.FormatGmt("%Y-%m-%d %H:%M:%S")), "1971-01-01 00:00:00");
    EXPECT_EQ(Text(newYear.Format("%Y-%m-%d %H:%M")), "1970-12-31 19:00");

    std::string longFormat, expected;
    for (int i = 0; i < 100; ++i) {
        longFormat += "%Y";
        expected += "1971";
    }
    EXPECT_EQ(Text(newYear.FormatGmt(longFormat.c_str())), expected);
    EXPECT_EQ(Text(newYear.FormatGmt("")), "");
    EXPECT_EQ(Text(newYear.FormatGmt(nullptr)), "");

    CDorlTime farAway(std::numeric_limits<int64_t>::max());
    EXPECT_EQ(Text(farAway.Format("%Y")), "");
    EXPECT_EQ(Text(farAway.FormatGmt("%Y")), "");
}

TEST(DorlTimeSpan, SplitsAndFormatsSignedSpans)
{
    CDorlTimeSpan span(93784); // 1 day 02:03:04
    EXPECT_EQ(Parts(span), "1 2 3 4");
    EXPECT_EQ(Text(span.Format("%D days %H:%M:%S, 100%% %Q")), "1 days 02:03:04, 100% %Q");

    CDorlTimeSpan negative(-93784);
    EXPECT_EQ(Parts(negative), "-1 -2 -3 -4");
    EXPECT_EQ(Text(negative.Format("%D:%H:%M:%S")), "-1:02:03:04");

    CDorlTimeSpan extreme(std::numeric_limits<int64_t>::min());
    EXPECT_EQ(Text(extreme.Format("%D %H:%M:%S")), "-106751991167300 15:30:08");
    EXPECT_EQ(Text(CDorlTimeSpan(59).Format("%M:%S%")), "00:59%");
}
