#include <dorl/DorlArchive.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace {

std::vector<unsigned char> Contents(const CDorlArchive& ar)
{
    return std::vector<unsigned char>(ar.GetData(), ar.GetData() + ar.GetSize());
}

// The sequence behind data/sample.dar, which was written by this library.
void WriteSample(CDorlArchive& ar)
{
    ar << -123456789 << 0 << 0xDEADBEEFu << static_cast<unsigned char>(0x7F)
       << static_cast<unsigned char>(0xFF) << -1234.5625 << 1e300;
    ar << CDorlString("sample") << CDorlString() << CDorlString("a\0b", 3)
       << CDorlString("\xC3\xA9t\xC3\xA9");
}

} // namespace

TEST(DorlArchive, WritesFixedWidthLittleEndianBytes)
{
    CDorlArchive ar;
    ar << -2 << 0x01020304u << static_cast<unsigned char>(0xAB) << 1.5 << CDorlString("hi");
    const std::vector<unsigned char> expected = {0xFE, 0xFF, 0xFF, 0xFF, // -2
                                                 0x04, 0x03, 0x02, 0x01, // 0x01020304
                                                 0xAB,                   // unsigned char
                                                 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
                                                 0xF8, 0x3F, // 1.5
                                                 0x02, 0x00, 0x00, 0x00, 'h',  'i'};
    EXPECT_EQ(Contents(ar), expected);
    EXPECT_FALSE(ar.HasFailed());
}

TEST(DorlArchive, SampleFileReadsTheSameOnEveryBuild)
{
    CDorlArchive file;
    ASSERT_TRUE(file.OpenFile(DORL_TEST_DATA_DIR "/sample.dar", false));
    CDorlArchive rewritten;
    WriteSample(rewritten);
    EXPECT_EQ(Contents(file), Contents(rewritten));

    // Byte equality above fixes the format; reading it back checks the decoding.
    int negative = 1, zero = 1;
    unsigned int bits = 0;
    unsigned char small = 0, large = 0;
    double fraction = 0, huge = 0;
    CDorlString word, empty("x"), zeroed, accented;
    file >> negative >> zero >> bits >> small >> large >> fraction >> huge;
    file >> word >> empty >> zeroed >> accented;
    EXPECT_EQ(std::tie(negative, zero, bits, small, large, fraction, huge),
              std::make_tuple(-123456789, 0, 0xDEADBEEFu, 0x7F, 0xFF, -1234.5625, 1e300));
    EXPECT_EQ(word, "sample");
    EXPECT_TRUE(empty.IsEmpty());
    EXPECT_EQ(zeroed, CDorlString("a\0b", 3));
    EXPECT_EQ(accented, "\xC3\xA9t\xC3\xA9");
    EXPECT_FALSE(file.HasFailed());
    EXPECT_EQ(file.GetRemaining(), 0u);
}

TEST(DorlArchive, DamagedInputReadsAsZeroOrEmpty)
{
    const unsigned char truncatedInt[] = {0x01, 0x02};
    CDorlArchive shortInt(truncatedInt, sizeof truncatedInt);
    int value = 7;
    unsigned char next = 7;
    shortInt >> value >> next;
    EXPECT_EQ(value, 0);
    EXPECT_EQ(next, 0);
    EXPECT_TRUE(shortInt.HasFailed());

    // Lengths far beyond the data (never allocated), negative, or one short of it.
    using namespace std::string_literals;
    for (const std::string& data :
         {"\377\377\377\177ab\001"s, "\376\377\377\377ab"s, "\003\0\0\0a"s}) {
        CDorlArchive damaged(reinterpret_cast<const unsigned char*>(data.data()), data.size());
        CDorlString text("old");
        damaged >> text;
        EXPECT_TRUE(text.IsEmpty()) << data.size();
        EXPECT_TRUE(damaged.HasFailed());
        EXPECT_EQ(damaged.GetRemaining(), 0u);
    }
    const unsigned char exact[] = {0x02, 0x00, 0x00, 0x00, 'o', 'k'};
    CDorlArchive whole(exact, sizeof exact);
    CDorlString ok;
    whole >> ok;
    EXPECT_EQ(ok, "ok");
    EXPECT_FALSE(whole.HasFailed());

    double real = 3;
    CDorlArchive nothing(nullptr, 0);
    nothing >> real;
    EXPECT_EQ(real, 0.0);
    EXPECT_TRUE(nothing.HasFailed());
}

TEST(DorlArchive, WrongDirectionIsANoOpThatFails)
{
    const unsigned char data[] = {0x05, 0x00, 0x00, 0x00};
    CDorlArchive loading(data, sizeof data);
    loading << 9;
    EXPECT_TRUE(loading.HasFailed());
    int value = 0;
    loading >> value;
    EXPECT_EQ(value, 5);

    CDorlArchive storing;
    storing << 1;
    storing >> value;
    EXPECT_EQ(value, 0);
    EXPECT_TRUE(storing.HasFailed());
    EXPECT_EQ(storing.GetSize(), 4u);
}

TEST(DorlArchive, FileStoresAndLoadsAndReportsFailures)
{
    char path[] = "/tmp/dorl_archive_XXXXXX";
    int descriptor = mkstemp(path);
    ASSERT_GE(descriptor, 0);
    close(descriptor);

    CDorlArchive out;
    ASSERT_TRUE(out.OpenFile(path, true));
    WriteSample(out);
    out.Close();
    EXPECT_FALSE(out.HasFailed());
    out << 1;
    EXPECT_TRUE(out.HasFailed());

    CDorlArchive in;
    ASSERT_TRUE(in.OpenFile(path, false));
    CDorlArchive expected;
    WriteSample(expected);
    EXPECT_EQ(Contents(in), Contents(expected));
    std::remove(path);

    CDorlArchive missing;
    EXPECT_FALSE(missing.OpenFile("/nonexistent-directory/archive", false));
    EXPECT_TRUE(missing.HasFailed());
    EXPECT_FALSE(missing.OpenFile("/nonexistent-directory/archive", true));
}
