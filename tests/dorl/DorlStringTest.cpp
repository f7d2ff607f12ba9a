#include <dorl/DorlString.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

std::string Bytes(const CDorlString& text) { return std::string(text, text.GetLength()); }

const char* Address(const CDorlString& text) { return text; }

} // namespace

TEST(DorlString, EmptyStringsShareOneStaticBlockAndTheObjectIsOnePointer)
{
    static_assert(sizeof(CDorlString) == sizeof(void*));
    CDorlString byDefault;
    CDorlString fromNull(static_cast<const char*>(nullptr));
    CDorlString fromEmpty("");
    CDorlString fromZeroLength("abc", 0);
    CDorlString emptied("abc");
    emptied.Empty();

    for (const CDorlString* text : {&byDefault, &fromNull, &fromEmpty, &fromZeroLength, &emptied}) {
        EXPECT_EQ(Address(*text), Address(DorlPchNil));
        EXPECT_TRUE(text->IsEmpty());
        EXPECT_EQ(text->GetLength(), 0);
    }
}

TEST(DorlString, CopiesShareTheBlockUntilOneSideChanges)
{
    CDorlString original("hello");
    CDorlString copy(original);
    CDorlString assigned;
    assigned = original;
    EXPECT_EQ(Address(copy), Address(original));
    EXPECT_EQ(Address(assigned), Address(original));

    assigned += "!";
    EXPECT_NE(Address(assigned), Address(original));
    EXPECT_EQ(Bytes(assigned), "hello!");
    EXPECT_EQ(Bytes(original), "hello");
    EXPECT_EQ(Address(copy), Address(original));

    copy.GetBuffer(0)[0] = 'j';
    copy.ReleaseBuffer();
    EXPECT_EQ(Bytes(copy), "jello");
    EXPECT_EQ(Bytes(original), "hello");

    const char* block = original;
    CDorlString moved(static_cast<CDorlString&&>(original));
    EXPECT_EQ(Address(moved), block);
    EXPECT_TRUE(original.IsEmpty());
}

TEST(DorlString, RawBufferIsPrivateAndKeepsZerosOnlyWithAnExplicitLength)
{
    CDorlString text;
    std::memcpy(text.GetBufferSetLength(5), "ab\0cd", 5);
    text.ReleaseBuffer(5);
    EXPECT_EQ(Bytes(text), std::string("ab\0cd", 5));

    text.GetBuffer(0);
    text.ReleaseBuffer();
    EXPECT_EQ(Bytes(text), "ab");

    // Until released, the buffer is private even to a copy taken meanwhile.
    CDorlString kept("keep");
    char* buffer = kept.GetBuffer(100);
    CDorlString snapshot(kept);
    EXPECT_NE(Address(snapshot), buffer);
    std::strcpy(buffer, "kept!");
    kept.ReleaseBuffer(2);
    EXPECT_EQ(Bytes(kept), "ke");
    EXPECT_EQ(Address(kept)[2], 0);
    EXPECT_EQ(Bytes(snapshot), "keep");
    EXPECT_EQ(Address(CDorlString(kept)), Address(kept));
}

TEST(DorlString, OrderingIsByUnsignedBytesIncludingEmbeddedZeros)
{
    CDorlString aZeroB("a\0b", 3);
    CDorlString aZeroC("a\0c", 3);
    EXPECT_EQ(aZeroB[2], 'b');
    EXPECT_EQ(aZeroB[3], 0);

    EXPECT_TRUE(aZeroB < aZeroC);
    EXPECT_NE(aZeroB, aZeroC);
    EXPECT_LT(aZeroB.Compare(aZeroC), 0);
    EXPECT_TRUE(CDorlString("a") < aZeroB);

    // The C-text forms stop at the first zero.
    EXPECT_EQ(aZeroB.Compare("a"), 0);
    EXPECT_TRUE(aZeroB == "a");
    EXPECT_TRUE("a" == aZeroC);
    EXPECT_TRUE(aZeroB != "ab");

    EXPECT_GT(CDorlString("\x80").Compare("a"), 0);
    EXPECT_TRUE(CDorlString("a") < CDorlString("\x80"));

    EXPECT_EQ(CDorlString("HeLLo").CompareNoCase("hello"), 0);
    EXPECT_LT(CDorlString("apple").CompareNoCase("BANANA"), 0);
    EXPECT_GT(CDorlString("A\0b", 3).CompareNoCase(CDorlString("a\0A", 3)), 0);
    EXPECT_NE(CDorlString("\xC0").CompareNoCase("\xE0"), 0);
}

TEST(DorlString, AppendingAndFormattingSurviveAliasingAndGrowth)
{
    CDorlString text("ab");
    text += text;
    text += 'c';
    text += static_cast<const char*>(text) + 3;
    EXPECT_EQ(Bytes(text), "ababcbc");

    EXPECT_EQ(Bytes("<" + text + ">"), "<ababcbc>");
    EXPECT_EQ(Bytes(text + 'x'), "ababcbcx");
    EXPECT_EQ(Bytes(CDorlString("a\0", 2) + CDorlString("b", 1)), std::string("a\0b", 3));

    std::string expected;
    CDorlString grown;
    for (int i = 0; i < 1000; ++i) {
        grown += static_cast<char>('a' + i % 26);
        expected += static_cast<char>('a' + i % 26);
    }
    EXPECT_EQ(Bytes(grown), expected);

    CDorlString formatted;
    formatted.Format("%d-%s", 42, "x");
    EXPECT_EQ(Bytes(formatted), "42-x");
    formatted.Format("%s%s", static_cast<const char*>(formatted),
                     static_cast<const char*>(formatted));
    EXPECT_EQ(Bytes(formatted), "42-x42-x");
    CDorlString wide;
    wide.Format("%s|%s", expected.c_str(), expected.c_str());
    EXPECT_EQ(Bytes(wide), expected + "|" + expected);
}

TEST(DorlString, WideTextIsStoredAsUtf8)
{
    CDorlString text(L"h\u00e9\u20ac\U0001F600");
    EXPECT_EQ(Bytes(text), "h\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
    wchar_t invalid[] = {L'a', static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0x110000), 0};
    EXPECT_EQ(Bytes(CDorlString(invalid)), "a\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_TRUE(CDorlString(static_cast<const wchar_t*>(nullptr)).IsEmpty());
}

TEST(DorlString, ConvertToWideYieldsUtf16LittleEndianWithTwoByteTerminator)
{
    CDorlString wide = CDorlString("A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80").ConvertToWide();
    const std::string expected("A\0\xE9\0\xAC\x20\x3D\xD8\x00\xDE", 10);
    EXPECT_EQ(Bytes(wide), expected);
    EXPECT_EQ(Address(wide)[10], 0);
    EXPECT_EQ(Address(wide)[11], 0);

    // Bytes that do not start a well-formed sequence stand for themselves: a cut-off
    // sequence, an overlong form and an encoded surrogate.
    CDorlString damaged("\xC3", 1);
    EXPECT_EQ(Bytes(damaged.ConvertToWide()), std::string("\xC3\0", 2));
    EXPECT_EQ(Bytes(CDorlString("\xC0\xAF").ConvertToWide()), std::string("\xC0\0\xAF\0", 4));
    EXPECT_EQ(Bytes(CDorlString("\xED\xA0\x80").ConvertToWide()),
              std::string("\xED\0\xA0\0\x80\0", 6));
    EXPECT_EQ(Bytes(CDorlString("a\0b", 3).ConvertToWide()), std::string("a\0\0\0b\0", 6));
    EXPECT_EQ(CDorlString().ConvertToWide().GetLength(), 0);
}

TEST(DorlString, SharedBlocksSurviveCopiesOnManyThreads)
{
    CDorlString shared("shared between threads");
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&shared] {
            for (int i = 0; i < 20000; ++i) {
                CDorlString copy(shared);
                CDorlString again = copy;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    CDorlString last(shared);
    last += "!";
    EXPECT_EQ(Bytes(shared), "shared between threads");
}

TEST(DorlBinStringRaw, DecodesHexPairsAndStopsAtTheFirstBadDigit)
{
    unsigned char out[4] = {};
    EXPECT_EQ(CDorlBinStringRaw::FromString("00aBFf7e", 4, out), 1);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(out), 4), std::string("\0\xAB\xFF\x7E", 4));

    unsigned char partial[3] = {9, 9, 9};
    EXPECT_EQ(CDorlBinStringRaw::FromString("12g456", 3, partial), 0);
    EXPECT_EQ(partial[0], 0x12);
    EXPECT_EQ(partial[1], 9);
    EXPECT_EQ(CDorlBinStringRaw::FromString("1", 1, partial), 0);
}
