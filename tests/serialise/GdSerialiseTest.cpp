#include <functional>
#include <string>
#include <vector>

#include "serialise/SerialiseTestObjects.h"

using namespace vesk_test;

namespace {

class GdSerialise : public StartedTest {};

const auto ReadText = [](const std::string& bytes, IVeskCommand* creator = nullptr) {
    return vesk_test::ReadText<CVeskGdSerialiserImpl>(bytes, creator);
};
const auto WriteHex = [](CVeskGenericData* value, int expectedResult = 1) {
    return vesk_test::WriteHex<CVeskGdSerialiserImpl>(value, expectedResult);
};

TEST_F(GdSerialise, WorkedExamplesAreByteExactAndReadBack)
{
    Ref<CVeskGdVector> vector(MakeVector({CVeskGdBoolean::Allocate(1), CVeskGdDouble::Allocate(2.5),
                                          CVeskGdString::Allocate("abc")}));
    const char* vectorHex = "0b 03 07 03 00 00 00 00 00 00 04 40 06 03 61 62 63";
    EXPECT_EQ(WriteHex(vector.get()), vectorHex);
    EXPECT_EQ(ReadText(Bytes(vectorHex)), R"([ 1=true 2=2.5 3="abc" ])");

    Ref<CVeskGenericData> object(
        MakeArrayValue(CVeskGdNull::Allocate(), {{"a", CVeskGdDouble::Allocate(1)}}));
    const char* arrayHex = "09 0a 41 73 73 6f 63 41 72 72 61 79 06 08 2a 64 65 66 61 75 6c 74 02 "
                           "06 01 61 03 00 00 00 00 00 00 f0 3f 06 04 2a 65 6e 64 0a";
    EXPECT_EQ(WriteHex(object.get()), arrayHex);
    // No creator is needed for an associative array.
    EXPECT_EQ(ReadText(Bytes(arrayHex)), "[ a=1 ]");

    EXPECT_EQ(ReadText(Bytes("0b 00")), "[ 0= ]");
}

TEST_F(GdSerialise, EveryWriteHasItsExactBytes)
{
    using Write = std::function<void(CVeskGdSerialiser&)>;
    const struct {
        Write write;
        const char* hex;
    } cases[] = {
        {[](CVeskGdSerialiser& s) { s.WriteLong(-2, true); }, "04 fe ff ff ff"},
        {[](CVeskGdSerialiser& s) { s.WriteLong(7, false); }, "07 00 00 00"},
        {[](CVeskGdSerialiser& s) { s.WriteUnsignedLong(127, true); }, "05 7f"},
        {[](CVeskGdSerialiser& s) { s.WriteUnsignedLong(128, true); }, "05 80 01"},
        {[](CVeskGdSerialiser& s) { s.WriteUnsignedLong(300, false); }, "ac 02"},
        {[](CVeskGdSerialiser& s) { s.WriteUnsignedLong(-1, true); }, "05 ff ff ff ff 0f"},
        {[](CVeskGdSerialiser& s) { s.WriteBoolean(5, false); }, "07"},
        {[](CVeskGdSerialiser& s) { s.WriteBoolean(0, true); }, "08"},
        {[](CVeskGdSerialiser& s) { s.WriteNull(false); }, "02"},
        {[](CVeskGdSerialiser& s) { s.WriteString("", true); }, "06 00"},
        {[](CVeskGdSerialiser& s) { s.WriteString(CDorlString("a\0b", 3), false); }, "03 61 00 62"},
        {[](CVeskGdSerialiser& s) { s.WriteVectorHeader(0); }, "0b 00"},
        {[](CVeskGdSerialiser& s) { s.WriteDouble(1.0, false); }, "00 00 00 00 00 00 f0 3f"},
        {[](CVeskGdSerialiser& s) { s.WriteGdObject(CVeskGdNone::Allocate()); }, "01"},
        {[](CVeskGdSerialiser& s) { s.WriteGdObject(CVeskGdNull::Allocate()); }, "02"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(WrittenBy<CVeskGdSerialiserImpl>(c.write), c.hex);
}

TEST_F(GdSerialise, ReadsEveryValueForm)
{
    const struct {
        const char* hex;
        const char* text;
    } cases[] = {
        {"04 fe ff ff ff", "-2"},
        {"05 ff ff ff ff 0f", "x41efffffffe00000 (4.29497e+09)"},
        // 4294967295, not -1; groups past 32 bits mean nothing and are read over.
        {"05 ff ff ff ff ff ff 01", "x41efffffffe00000 (4.29497e+09)"},
        {"01", "none"},
        {"02", "null"},
        {"07", "true"},
        {"08", "false"},
        {"06 00", R"("")"},
        // The array form: pairs stored as written, a value equal to the default too.
        {"0c 02 02 01 61 02 01 62 03 00 00 00 00 00 00 f0 3f", "[ a=null b=1 ]"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ReadText(Bytes(c.hex)), c.text) << c.hex;
}

TEST_F(GdSerialise, DamagedStreamsGiveTheReadersMessagesAndNull)
{
    const struct {
        const char* hex;
        const char* messages;
    } cases[] = {
        {"", "ReadType: End of data\n"},
        {"00", ""},
        {"0a", ""},
        {"0d", ""},
        {"03 00 00", "ReadDouble: End of data\n"},
        {"04 01", "ReadLong: End of data\n"},
        {"05 80", "ReadUnsignedLong: Expecting to read a long. Read end of data.\n"},
        {"06 80", "ReadUnsignedLong: Expecting to read a long. Read end of data.\n"
                  "ReadString: Failed to read string length.\n"},
        {"06 05 61 62", "ReadString: Failed to read string.\n"},
        // Lengths and counts that no data backs fail at the end of the data, not on memory.
        {"06 ff ff ff ff 0f 61", "ReadString: Failed to read string.\n"},
        {"06 ff ff ff 7f 61", "ReadString: Failed to read string.\n"},
        {"0b ff ff ff ff 0f 07", "ReadType: End of data\n"},
        {"0b 02 07 0a", ""},
        {"0c 01 02", "ReadUnsignedLong: Expecting to read a long. Read end of data.\n"
                     "ReadString: Failed to read string length.\n"},
        {"09 03 5a 65 64 0a", "Could not create object (Zed). 'objectCreator' property is not "
                              "set.\n"},
    };
    for (const auto& c : cases) {
        Capture capture;
        EXPECT_EQ(ReadText(Bytes(c.hex)), "<null>") << c.hex;
        EXPECT_EQ(capture.AllDumps(), c.messages) << c.hex;
    }
}

TEST_F(GdSerialise, NestingStopsPast201LevelsAndTheSerialiserStaysUsable)
{
    std::string levels201, levels202;
    for (int i = 0; i < 200; ++i)
        levels201 += Bytes("0b 01");
    levels202 = Bytes("0b 01") + levels201 + Bytes("07");
    levels201 += Bytes("07");

    Capture capture;
    CVeskGdMemorySerialiserIO io(levels201.data(), static_cast<int>(levels201.size()));
    CVeskGdSerialiserImpl serialiser(&io);
    Ref<CVeskGenericData> deep(serialiser.ReadGdObject());
    ASSERT_TRUE(deep.get());
    EXPECT_EQ(capture.AllDumps(), "");

    io.Clear();
    io.Write(levels202.data(), static_cast<int>(levels202.size()));
    EXPECT_EQ(serialiser.ReadGdObject(), nullptr);
    EXPECT_EQ(capture.AllDumps(), "Serialised objects are nested too deeply\n");

    // Every level was given back: a new stream reads at full depth again.
    io.Clear();
    io.Write(levels201.data(), static_cast<int>(levels201.size()));
    Ref<CVeskGenericData> again(serialiser.ReadGdObject());
    EXPECT_TRUE(again.get());
    EXPECT_EQ(capture.Asserted(), "");
}

TEST_F(GdSerialise, ObjectsOfOurOwnAreMadeAgainByNameThroughTheCreator)
{
    Ref<CVeskGdObjectCreator> creator(MakeTestCreator());
    Ref<CVeskGenericData> point(CTestPoint::MakeWith("Point", 1.5, -3, 4000000000u, 1, "p"));
    CTestPoint* written = CTestPoint::Of(point.get());
    point->AddRef();
    Ref<CVeskGdVector> vector(
        MakeVector({point.get(), MakeArrayValue(CVeskGdDouble::Allocate(0),
                                                {{"k", CVeskGdString::Allocate("v")}})}));

    CVeskGdMemorySerialiserIO io(creator.get());
    CVeskGdSerialiserImpl serialiser(&io);
    ASSERT_EQ(serialiser.WriteGdObject(vector.get()), 1);
    EXPECT_EQ(Hex(Written(io)).substr(0, 50), "0b 02 09 05 50 6f 69 6e 74 03 00 00 00 00 00 00 f8");

    Ref<CVeskGenericData> back(serialiser.ReadGdObject());
    ASSERT_TRUE(back.get());
    Ref<CVeskGenericData> pointBack(static_cast<CVeskGdVector*>(back.get())->GetElement(0));
    Ref<CVeskGenericData> arrayBack(static_cast<CVeskGdVector*>(back.get())->GetElement(1));
    EXPECT_EQ(CTestPoint::Of(pointBack.get())->Describe(), "1.500000,-3,4000000000,1,p");
    EXPECT_NE(CTestPoint::Of(pointBack.get()), written);
    EXPECT_EQ(AsText(arrayBack.get()), R"([ *default=0 k="v" ])");
    EXPECT_EQ(io.GetRemaining(), 0u);

    // A point named "Swap" is replaced by what its Deserialise hands over.
    CTestPoint::Of(point.get())->m_sName = "Swap";
    io.Clear();
    serialiser.WriteGdObject(point.get());
    Ref<CVeskGenericData> swapped(serialiser.ReadGdObject());
    EXPECT_EQ(Text(swapped.get()), "swapped");
}

TEST_F(GdSerialise, ObjectFailuresAreReportedAndTheStreamMovesToTheTrailer)
{
    // A blank creation name writes the array code and no trailer.
    Ref<CVeskGenericData> blank(CTestPoint::Make(""));
    EXPECT_EQ(WriteHex(blank.get()), "0c 03 00 00 00 00 00 00 00 00 04 00 00 00 00 05 00 08 06 00");

    Ref<CVeskGdObjectCreator> creator(MakeTestCreator());
    Capture capture;

    // A mismatch inside the object's data runs to its trailer; the object's failure then runs
    // on to the next one, so the true after it is lost as well, and the read goes on behind.
    std::string bytes = Bytes("09 05 50 6f 69 6e 74 06 01 78 0a 07 0a 08");
    CVeskGdMemorySerialiserIO io(bytes.data(), static_cast<int>(bytes.size()), creator.get());
    CVeskGdSerialiserImpl serialiser(&io);
    EXPECT_EQ(serialiser.ReadGdObject(), nullptr);
    EXPECT_EQ(capture.AllDumps(),
              "ReadType: Expecting type 3 got 6\n"
              "Object (Point) is not deserialisable. Object's Deserialise() failed.\n");
    EXPECT_EQ(io.GetMismatchCount(), 1);
    Ref<CVeskGenericData> next(serialiser.ReadGdObject());
    EXPECT_EQ(AsText(next.get()), "false");

    const struct {
        const char* hex;
        const char* message;
    } unmade[] = {
        {"09 03 5a 65 64 0a", "ObjectCreator failed to create object (Zed).\n"},
        {"09 06 4f 70 61 71 75 65 0a", "Object doesn't support the IVeskSerialise interface.\n"},
        {"09 05 50 6f 69", "ReadString: Failed to read string.\n"
                           "Object is not deserialisable. Failed to read 'creation name'.\n"},
    };
    for (const auto& c : unmade) {
        capture.Clear();
        EXPECT_EQ(ReadText(Bytes(c.hex), creator.get()), "<null>");
        EXPECT_EQ(capture.AllDumps(), c.message);
    }

    capture.Clear();
    Ref<CVeskGenericData> opaque(CTestOpaque::Make(""));
    EXPECT_EQ(WriteHex(opaque.get(), 0), "");
    EXPECT_EQ(capture.AllDumps(), "Object doesn't support the IVeskSerialise\n");

    // A failed Serialise still closes the object, so that a reader can step over it.
    capture.Clear();
    Ref<CVeskGenericData> failing(CTestPoint::Make("Point"));
    CTestPoint::Of(failing.get())->m_bFailSerialise = 1;
    EXPECT_EQ(WriteHex(failing.get(), 0), "09 05 50 6f 69 6e 74 0a");
    EXPECT_EQ(capture.AllDumps(), "Object (Point) Serialise() failed.\n");

    // An indirect value stops a vector short.
    capture.Clear();
    Ref<CVeskGdVector> vector(MakeVector(
        {CVeskGdBoolean::Allocate(1), CVeskGdIndirect::Allocate(), CVeskGdBoolean::Allocate(0)}));
    EXPECT_EQ(WriteHex(vector.get(), 0), "0b 03 07");
    EXPECT_EQ(capture.AllDumps(), "Could not serialise vector element at position (2).\n");
}

} // namespace
