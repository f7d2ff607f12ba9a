#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

CDorlString Bytes(const std::string& text)
{
    return CDorlString(text.data(), static_cast<int>(text.size()));
}

CVeskGenericData* ReadText(const std::string& text) { return VeskReadConfigString(Bytes(text)); }

// A short rendering of a value read: the whole tree in one line, so that a test states it at a
// glance. Strings show their raw bytes, numbers every digit.
std::string Show(CVeskGenericData* value)
{
    if (!value)
        return "<none read>";
    switch (value->GetType()) {
    case CVeskGenericData::dtNull:
        return "null";
    case CVeskGenericData::dtNone:
        return "none";
    case CVeskGenericData::dtBoolean:
        return static_cast<CVeskGdBoolean*>(value)->m_bValue ? "true" : "false";
    case CVeskGenericData::dtNumber: {
        char text[40];
        snprintf(text, sizeof text, "%.17g", static_cast<CVeskGdDouble*>(value)->m_dValue);
        return text;
    }
    case CVeskGenericData::dtString:
        return "'" + Text(value) + "'";
    case CVeskGenericData::dtVector: {
        CVeskGdVector* vector = static_cast<CVeskGdVector*>(value);
        std::string shown = "(";
        for (int i = 0; i < vector->GetSize(); ++i) {
            Ref<CVeskGenericData> element(vector->GetElement(i));
            shown += (i ? " " : "") + Show(element.get());
        }
        return shown + ")";
    }
    case CVeskGenericData::dtObject: {
        std::string shown = "{";
        Ref<CVeskGenericData> fallback(value->GetProperty("*default", 0));
        if (fallback->GetType() != CVeskGenericData::dtNull)
            shown += "*default:" + Show(fallback.get()) + " ";
        CVeskPropertyEnum* names = value->GetPropertyEnumerator();
        CDorlString name, description, type;
        CVeskPropertyEnum::ReadOnlyStatus status;
        while (names->Next(&name, &description, &type, &status)) {
            Ref<CVeskGenericData> entry(value->GetProperty(name, 0));
            shown += std::string(name, name.GetLength()) + ":" + Show(entry.get()) + " ";
        }
        names->Delete();
        if (shown.back() == ' ')
            shown.pop_back();
        return shown + "}";
    }
    default:
        return "?";
    }
}

std::string ShowRead(const std::string& text)
{
    Ref<CVeskGenericData> value(ReadText(text));
    return Show(value.get());
}

// What reading the text reports; a value read is a failure of the test.
std::string Complaint(const std::string& text)
{
    Capture capture;
    Ref<CVeskGenericData> value(ReadText(text));
    EXPECT_EQ(value.get(), nullptr) << text.substr(0, 60);
    return capture.AllDumps();
}

class ConfigText : public ScratchDirTest {
protected:
    void SetUp() override
    {
        ScratchDirTest::SetUp();
        m_sPath = Path("settings.cfg");
    }

    std::vector<std::string> Entries()
    {
        std::vector<std::string> names;
        DIR* dir = opendir(m_sDir.c_str());
        while (dirent* entry = readdir(dir))
            if (entry->d_name[0] != '.')
                names.push_back(entry->d_name);
        closedir(dir);
        return names;
    }

    std::string Written(CVeskGenericData* value)
    {
        EXPECT_TRUE(VeskWriteConfigFile(m_sPath.c_str(), value));
        return FileText(m_sPath);
    }

    std::string m_sPath;
};

// An object value with the null default; takes over the entries' references.
CVeskGenericData*
MakeObject(std::initializer_list<std::pair<const char*, CVeskGenericData*>> entries)
{
    return MakeArrayValue(CVeskGdNull::Allocate(), entries);
}

CVeskGdDouble* N(double value) { return CVeskGdDouble::Allocate(value); }

// The bits of each number of a vector read back; nothing when no vector was read.
std::vector<uint64_t> NumberBits(CVeskGenericData* value)
{
    std::vector<uint64_t> bits;
    CVeskGdVector* vector = static_cast<CVeskGdVector*>(value);
    for (int i = 0;
         value && value->GetType() == CVeskGenericData::dtVector && i < vector->GetSize(); ++i) {
        Ref<CVeskGenericData> number(vector->GetElement(i));
        bits.push_back(
            std::bit_cast<uint64_t>(static_cast<CVeskGdDouble*>(number.get())->m_dValue));
    }
    return bits;
}

const char* const kSample = "[\n"
                            "\t\"3rd\"=none\n"
                            "\talpha=1\n"
                            "\t\"beta gamma\"=\"two\\nlines\"\n"
                            "\tdelta=[\n"
                            "\t\t1=true\n"
                            "\t\t4=2.5\n"
                            "\t]\n"
                            "\tempty=[\n"
                            "\t\t0=\n"
                            "\t]\n"
                            "\tpi=x400921fb54442d11 (3.14159)\n"
                            "\tsub=[\n"
                            "\t\tx=-1.5\n"
                            "\t\ty=false\n"
                            "\t]\n"
                            "]\n";

TEST_F(ConfigText, TheSampleValueWritesAsShownAndReadsBack)
{
    Ref<CVeskGenericData> sample(MakeObject({
        {"3rd", CVeskGdNone::Allocate()},
        {"alpha", N(1)},
        {"beta gamma", CVeskGdString::Allocate("two\nlines")},
        {"delta", MakeVector({CVeskGdBoolean::Allocate(1), CVeskGdNull::Allocate(),
                              CVeskGdNull::Allocate(), N(2.5)})},
        {"empty", MakeVector({})},
        {"pi", N(3.14159265358979)},
        {"sub", MakeObject({{"x", N(-1.5)}, {"y", CVeskGdBoolean::Allocate(0)}})},
    }));
    EXPECT_EQ(Written(sample.get()), kSample);

    Ref<CVeskGenericData> back(VeskReadConfigFile(m_sPath.c_str()));
    EXPECT_EQ(Show(back.get()), "{3rd:none alpha:1 beta gamma:'two\nlines' delta:(true null null "
                                "2.5) empty:() pi:3.14159265358979 sub:{x:-1.5 y:false}}");
    EXPECT_EQ(Entries(), std::vector<std::string>{"settings.cfg"});
}

TEST_F(ConfigText, GrammarCornersReadAsTheFormatSays)
{
    EXPECT_EQ(ShowRead("# a comment line\n[\n  \"first key\"=[ 1=10 2=20 ]\n"
                       "  second=\"text\"   # a comment behind a value\n"
                       "  third=x4008000000000000 (three)\n]\n"),
              "{first key:(10 20) second:'text' third:3}");
    EXPECT_EQ(ShowRead("5\n"), "5");
    EXPECT_EQ(ShowRead("\"s\""), "'s'");
    EXPECT_EQ(ShowRead("true"), "true");
    EXPECT_EQ(ShowRead("null trailing junk ]]]"), "null");
    EXPECT_EQ(ShowRead("1.5 ]"), "1.5");
    EXPECT_EQ(ShowRead("5 #x\n"), "5");
    EXPECT_EQ(ShowRead("-2.5e3\n"), "-2500");
    EXPECT_EQ(ShowRead("xC000000000000000 "), "-2");
    EXPECT_EQ(ShowRead("[ ]"), "{}");
    EXPECT_EQ(ShowRead("[ 0= ]"), "()");
    EXPECT_EQ(ShowRead("[3=true]"), "(null null true)");
    EXPECT_EQ(ShowRead("[2=1 00=7 1=2 2=3 ]"), "(2 3)");
    EXPECT_EQ(ShowRead("[0=5=1 ]"), "(null null null null 1)");
    EXPECT_EQ(ShowRead("[a=trueb=1 ]"), "{a:true b:1}");
    EXPECT_EQ(ShowRead("[key =1 x\t junk=2 \"q\\\"\"=3 ]"), "{key :1 q\":3 x:2}");
    EXPECT_EQ(ShowRead("[1 =1 ]"), "{1 :1}");
    EXPECT_EQ(ShowRead("[key=null other=none]"), "{other:none}");
    EXPECT_EQ(ShowRead("[*default=4 *other=5 a=4 b=6 ]"), "{*default:4 b:6}");
    EXPECT_EQ(ShowRead("[1=5\n# (not yet)\n  (a comment\n across lines) 2=6 ]"), "(5 6)");
    EXPECT_EQ(ShowRead("\"a\\x4a\\x4b\\t\\\\\\\"\\r\\f\\n\nb\""), "'aJK\t\\\"\r\f\n\nb'");
    EXPECT_EQ(ShowRead(std::string("\"\xff\0\xfe\"", 5)), std::string("'\xff\0\xfe'", 5));
}

TEST_F(ConfigText, EachFailureIsToldOnceWithItsLineAndSource)
{
    const char* const end = "Unexpected end of string";
    const char* const number = "Invalid number";
    const std::tuple<const char*, std::string, int> cases[] = {
        {"", end, 1},
        {"# only\n# comments\n", end, 3},
        {"5", end, 1},
        {"\"open\nstring", end, 2},
        {"[a=1 b=\"x\\", end, 1},
        {"[a=1.5] ", number, 1},
        {"\n5#x\n", number, 3},
        {"- ", number, 1},
        {".5", "Unexpected character '.'", 1},
        {"+1", "Unexpected character '+'", 1},
        {"X4008000000000000 ", "Unexpected character 'X'", 1},
        {"nix", "Unexpected character 'i'", 1},
        {"nul1", "Unexpected character '1', looking for string \"null\"", 1},
        {"True", "Unexpected character 'T'", 1},
        {"[a=fals]", "Unexpected character ']', looking for string \"false\"", 1},
        {"\"\\q\"", "Unexpected character 'q'", 1},
        {"x400 ", "Invalid hexadecimally encoded number", 1},
        {"[1=1\n a=2\n]", "Mixed numeric and non-numeric labels in string", 3},
        {"[a=[b=1 c=?]]", "Unexpected character '?'", 1},
        {"[1000001=1 ]", "Numeric label 1000001 too large", 1},
        {"[99999999999999999999=1 ]", "Numeric label 99999999999999999999 too large", 1}};
    for (const auto& [text, message, line] : cases)
        EXPECT_EQ(Complaint(text), message + " at line " + std::to_string(line) + " in string\n");
}

TEST_F(ConfigText, LimitsCutSilentlyAndHostileInputIsRefused)
{
    std::string longString(70000, 's');
    Ref<CVeskGenericData> string(ReadText("\"" + longString + "\""));
    EXPECT_EQ(Text(string.get()), longString.substr(0, 65536));

    std::string longLabel(300, 'k');
    Ref<CVeskGenericData> object(ReadText("[" + longLabel + "=1 ]"));
    EXPECT_EQ(Show(object.get()), "{" + longLabel.substr(0, 255) + ":1}");

    // Only the first 99 bytes of a token count: these are 99 nines and then garbage.
    Ref<CVeskGenericData> number(ReadText(std::string(99, '9') + "junk "));
    EXPECT_EQ(static_cast<CVeskGdDouble*>(number.get())->m_dValue, 1e99);

    Ref<CVeskGenericData> vector(ReadText("[1000000=1 ]"));
    EXPECT_EQ(static_cast<CVeskGdVector*>(vector.get())->GetSize(), 1000000);

    // Hostile input gives a message and no value.
    EXPECT_EQ(Complaint(std::string(1000000, '[')),
              "Unexpected end of string at line 1 in string\n");
    EXPECT_EQ(Complaint("\"" + std::string(200000, 'u')),
              "Unexpected end of string at line 1 in string\n");
    EXPECT_EQ(Complaint(std::string(1000000, '1')),
              "Unexpected end of string at line 1 in string\n");

    // As deep as the reader goes, and a level more.
    std::string nested;
    for (int i = 1; i < VeskConfigReader::kMaxDepth; ++i)
        nested += "[a=";
    const size_t depth = VeskConfigReader::kMaxDepth;
    Ref<CVeskGenericData> deepest(ReadText(nested + "[]" + std::string(depth - 1, ']')));
    EXPECT_NE(deepest.get(), nullptr);
    EXPECT_EQ(Complaint(nested + "[a=[]" + std::string(depth, ']')),
              "Collections nested too deeply at line 1 in string\n");
}

TEST_F(ConfigText, NumbersTakeTheShortestExactForm)
{
    const std::pair<double, const char*> forms[] = {
        {1, "1\n"},
        {2.5, "2.5\n"},
        {-0.0, "0\n"},
        {-2147483648.0, "-2147483648\n"},
        {3e9, "3e+09\n"},
        {10000000000.0, "1e+10\n"},
        {1234567.5, "x4132d68780000000 (1.23457e+06)\n"},
        {1.0 / 3, "x3fd5555555555555 (0.333333)\n"},
        {INFINITY, "x7ff0000000000000 (inf)\n"},
        {-INFINITY, "xfff0000000000000 (-inf)\n"},
    };
    for (const auto& [value, text] : forms) {
        Ref<CVeskGenericData> number(N(value));
        EXPECT_EQ(Written(number.get()), text) << value;
    }

    // Every double but negative zero comes back with its bits, NaN payloads included.
    std::mt19937_64 random(7);
    std::vector<uint64_t> patterns = {0x7ff8000000000001ull, 0xfff0000000000001ull, 1, 0};
    for (int i = 0; i < 300; ++i)
        patterns.push_back(random());
    for (int i = 0; i < 100; ++i)
        patterns.push_back(std::bit_cast<uint64_t>(static_cast<double>(random() % 2000000) / 8));
    CVeskGdVector* all = CVeskGdVector::Allocate(0);
    for (uint64_t bits : patterns) {
        // Set as bytes: a double passed by value on the i386 build loses signalling NaNs.
        Ref<CVeskGdDouble> number(N(0));
        std::memcpy(&number->m_dValue, &bits, sizeof bits);
        all->SetElement(all->GetSize(), number.get());
    }
    Ref<CVeskGenericData> written(all);
    Written(all);
    Ref<CVeskGenericData> back(VeskReadConfigFile(m_sPath.c_str()));
    EXPECT_EQ(NumberBits(back.get()), patterns);
}

// Short decimals take a quicker course than other numbers; they must read to the same bits.
TEST_F(ConfigText, DecimalsReadAsTheGeneralParserReadsThem)
{
    std::mt19937_64 random(11);
    std::vector<std::string> tokens = {
        "0.1",  "-0.0", "0.30000000000000004", "999999999999999",  "9007199254740993",
        "-.25", "1.",   "0.000000000000001",   "123456789.012345", "-98765.4321"};
    for (int i = 0; i < 2000; ++i) {
        std::string digits = std::to_string(random() % 1000000000000000ull);
        size_t point = 1 + random() % digits.size();
        tokens.push_back((i % 2 ? "-" : "") + digits.substr(0, point) + "." + digits.substr(point));
    }
    std::string text = "[\n";
    std::vector<uint64_t> expected;
    for (size_t i = 0; i < tokens.size(); ++i) {
        text += std::to_string(i + 1) + "=" + tokens[i] + "\n";
        expected.push_back(std::bit_cast<uint64_t>(std::strtod(tokens[i].c_str(), nullptr)));
    }
    Ref<CVeskGenericData> back(ReadText(text + "]\n"));
    EXPECT_EQ(NumberBits(back.get()), expected);
}

TEST_F(ConfigText, TextIsQuotedOnlyWhereABareFormWouldReadWrong)
{
    std::string binary("\x01\x80\xff\0z", 5);
    std::string longName(3000, 'n');
    Ref<CVeskGenericData> object(MakeObject({
        {"plain", N(1)},
        {"", N(2)},
        {"a b", N(3)},
        {"a=b", N(4)},
        {"#c", N(5)},
        {"9lives", N(6)},
        {"k9", N(7)},
        {"q\"\\", N(8)},
        {longName.c_str(), CVeskGdString::Allocate(Bytes(binary))},
    }));
    std::string expected = "[\n\t\"\"=2\n\t\"#c\"=5\n\t\"9lives\"=6\n\t\"a b\"=3\n\t\"a=b\"=4\n"
                           "\tk9=7\n\t\"" +
                           longName +
                           "\"=\"\\x01\\x80\\xff\\x00z\"\n\tplain=1\n\t\"q\\\"\\\\\"=8\n]\n";
    EXPECT_EQ(Written(object.get()), expected);

    Ref<CVeskGenericData> back(VeskReadConfigFile(m_sPath.c_str()));
    Ref<CVeskGenericData> value(back->GetProperty(Bytes(longName.substr(0, 255)), 0));
    EXPECT_EQ(Text(value.get()), binary);
    Ref<CVeskGenericData> numeric(back->GetProperty("9lives", 0));
    EXPECT_EQ(Show(numeric.get()), "6");

    // A long string flushes on the way and still comes back whole.
    std::string text;
    for (int i = 0; i < 3000; ++i)
        text += static_cast<char>(i % 256);
    Ref<CVeskGenericData> string(CVeskGdString::Allocate(Bytes(text)));
    Written(string.get());
    Ref<CVeskGenericData> stringBack(VeskReadConfigFile(m_sPath.c_str()));
    EXPECT_EQ(Text(stringBack.get()), text);
}

TEST_F(ConfigText, FilesAreReplacedWholeAndKeepTheirMode)
{
    Ref<CVeskGenericData> five(N(5));

    mode_t previous = umask(027);
    ASSERT_TRUE(VeskWriteConfigFile(m_sPath.c_str(), five.get()));
    umask(previous);
    struct stat info;
    ASSERT_EQ(stat(m_sPath.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0640u);

    chmod(m_sPath.c_str(), 0604);
    Ref<CVeskGenericData> six(N(6));
    EXPECT_EQ(Written(six.get()), "6\n");
    ASSERT_EQ(stat(m_sPath.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0604u);

    // Written through a link, the link stays and its file changes.
    std::string link = m_sDir + "/link.cfg";
    ASSERT_EQ(symlink("settings.cfg", link.c_str()), 0);
    EXPECT_TRUE(VeskWriteConfigFile(link.c_str(), five.get()));
    EXPECT_EQ(FileText(m_sPath), "5\n");
    ASSERT_EQ(lstat(link.c_str(), &info), 0);
    EXPECT_TRUE(S_ISLNK(info.st_mode));
    unlink(link.c_str());

    // Collections deeper than a reader takes fail the write half-way: the old text stays, the
    // temporary goes.
    CVeskGdVector* deep = CVeskGdVector::Allocate(0);
    for (int i = 0; i < VeskConfigReader::kMaxDepth; ++i)
        deep = MakeVector({deep});
    Ref<CVeskGenericData> tooDeep(deep);
    Capture capture;
    EXPECT_TRUE(VeskWriteConfigFile(m_sPath.c_str(), tooDeep.get()));
    EXPECT_EQ(capture.AllDumps(),
              "Could not write " + m_sPath + ": collections nested too deeply\n");
    EXPECT_EQ(FileText(m_sPath), "5\n");
    EXPECT_EQ(Entries(), std::vector<std::string>{"settings.cfg"});

    // Where no temporary can be made, nothing is written.
    capture.Clear();
    std::string nowhere = m_sDir + "/missing/settings.cfg";
    EXPECT_FALSE(VeskWriteConfigFile(nowhere.c_str(), five.get()));
    EXPECT_EQ(capture.AllDumps(), "Could not write " + nowhere + ": No such file or directory\n");
}

TEST_F(ConfigText, TheFileReaderNamesItsFile)
{
    std::string missing = m_sDir + "/missing.cfg";
    {
        Capture capture;
        EXPECT_EQ(VeskReadConfigFile(missing.c_str()), nullptr);
        EXPECT_EQ(capture.AllDumps(), "Cannot open input file at line 1 in " + missing + "\n");
    }
    // Past the first buffer's worth, the line count and the end message are the file's.
    std::ofstream(m_sPath, std::ios::binary) << ("[\n" + std::string(3000, ' ') + "\na=1\nb=");
    Capture capture;
    EXPECT_EQ(VeskReadConfigFile(m_sPath.c_str()), nullptr);
    EXPECT_EQ(capture.AllDumps(), "Unexpected end of file at line 4 in " + m_sPath + "\n");
}

} // namespace
