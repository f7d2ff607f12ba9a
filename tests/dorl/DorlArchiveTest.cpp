#include <dorl/DorlArchive.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
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

    int negative = 1, zero = 1;
    unsigned int bits = 0;
    unsigned char small = 0, large = 0;
    double fraction = 0, huge = 0;
    CDorlString word, empty("x"), zeroed, accented;
    file >> negative >> zero >> bits >> small >> large >> fraction >> huge;
    file >> word >> empty >> zeroed >> accented;
    EXPECT_EQ(negative, -123456789);
    EXPECT_EQ(zero, 0);
    EXPECT_EQ(bits, 0xDEADBEEFu);
    EXPECT_EQ(small, 0x7F);
    EXPECT_EQ(large, 0xFF);
    EXPECT_EQ(fraction, -1234.5625);
    EXPECT_EQ(huge, 1e300);
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

    // A length far beyond the data must not be allocated.
    const unsigned char hostile[] = {0xFF, 0xFF, 0xFF, 0x7F, 'a', 'b', 0x01};
    CDorlArchive huge(hostile, sizeof hostile);
    CDorlString text("old");
    huge >> text;
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_TRUE(huge.HasFailed());
    EXPECT_EQ(huge.GetRemaining(), 0u);

    const unsigned char negativeLength[] = {0xFE, 0xFF, 0xFF, 0xFF, 'a', 'b'};
    CDorlArchive negative(negativeLength, sizeof negativeLength);
    negative >> text;
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_TRUE(negative.HasFailed());

    const unsigned char exact[] = {0x02, 0x00, 0x00, 0x00, 'o', 'k', 0x03, 0x00, 0x00, 0x00, 'a'};
    CDorlArchive cut(exact, sizeof exact);
    CDorlString first, second("x");
    cut >> first;
    EXPECT_FALSE(cut.HasFailed());
    cut >> second;
    EXPECT_EQ(first, "ok");
    EXPECT_TRUE(second.IsEmpty());
    EXPECT_TRUE(cut.HasFailed());

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
    EXPECT_EQ(loading.GetSize(), sizeof data);
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
