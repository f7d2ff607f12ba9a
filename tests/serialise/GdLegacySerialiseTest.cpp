#include <functional>
#include <string>

#include "serialise/SerialiseTestObjects.h"

using namespace vesk_test;

namespace {

class GdLegacySerialise : public StartedTest {};

// A serialiser whose trace is on.
class CTracingSerialiser : public CVeskGdLegacySerialiserImpl {
public:
    using CVeskGdLegacySerialiserImpl::CVeskGdLegacySerialiserImpl;
    int GetDebugOutputLevel() override { return 1; }
};

const auto ReadText = [](const std::string& bytes, IVeskCommand* creator = nullptr) {
    return vesk_test::ReadText<CVeskGdLegacySerialiserImpl>(bytes, creator);
};
const auto WriteHex = [](CVeskGenericData* value, int expectedResult = 1) {
    return vesk_test::WriteHex<CVeskGdLegacySerialiserImpl>(value, expectedResult);
};

TEST_F(GdLegacySerialise, WorkedExampleIsByteExactAndReadsBack)
{
    Ref<CVeskGdVector> vector(MakeVector({CVeskGdBoolean::Allocate(1), CVeskGdDouble::Allocate(2.5),
                                          CVeskGdString::Allocate("abc")}));
    const char* hex = "05 00 00 00 03 00 00 00 02 00 00 00 01 00 00 00 03 00 00 00 00 00 00 00 "
                      "00 00 04 40 04 00 00 00 03 00 00 00 61 62 63";
    EXPECT_EQ(WriteHex(vector.get()), hex);
    EXPECT_EQ(ReadText(Bytes(hex)), R"([ 1=true 2=2.5 3="abc" ])");
}

TEST_F(GdLegacySerialise, WritesAlwaysCarryTheirTypeWord)
{
    using Write = std::function<void(CVeskGdSerialiser&)>;
    const struct {
        Write write;
        const char* hex;
    } cases[] = {
        {[](CVeskGdSerialiser& s) { s.WriteNull(true); }, ""},
        {[](CVeskGdSerialiser& s) { s.WriteLong(5, false); },
         "03 00 00 00 00 00 00 00 00 00 14 40"},
        {[](CVeskGdSerialiser& s) { s.WriteUnsignedLong(-1, true); },
         "03 00 00 00 00 00 e0 ff ff ff ef 41"},
        {[](CVeskGdSerialiser& s) { s.WriteBoolean(2, false); }, "02 00 00 00 02 00 00 00"},
        {[](CVeskGdSerialiser& s) { s.WriteString("ab", false); }, "04 00 00 00 02 00 00 00 61 62"},
        {[](CVeskGdSerialiser& s) { s.WriteVectorHeader(0); }, "05 00 00 00 00 00 00 00"},
        {[](CVeskGdSerialiser& s) { s.WriteGdObject(CVeskGdNull::Allocate()); }, "01 00 00 00"},
        {[](CVeskGdSerialiser& s) { s.WriteGdObject(CVeskGdNone::Allocate()); }, "07 00 00 00"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(WrittenBy<CVeskGdLegacySerialiserImpl>(c.write), c.hex);
}

TEST_F(GdLegacySerialise, TypedReadsCheckTheWordAndKeepWhatWasWritten)
{
    CVeskGdMemorySerialiserIO io;
    CVeskGdLegacySerialiserImpl serialiser(&io);
    serialiser.WriteLong(5, false);
    serialiser.WriteBoolean(2, false);
    serialiser.WriteUnsignedLong(static_cast<long>(4000000000u), false);

    // The public ReadType cannot look ahead in this format and leaves the stream alone.
    EXPECT_EQ(serialiser.ReadType(), 0);
    EXPECT_EQ(io.GetPosition(), 0u);
    long number = 0;
    int flag = 0;
    unsigned long unsignedNumber = 0;
    EXPECT_EQ(serialiser.ReadLong(number, 1), 1);
    EXPECT_EQ(serialiser.ReadBoolean(flag, 1), 1);
    EXPECT_EQ(serialiser.ReadUnsignedLong(unsignedNumber, 1), 1);
    EXPECT_EQ(number, 5);
    EXPECT_EQ(flag, 2);
    EXPECT_EQ(unsignedNumber, 4000000000UL);

    Capture capture;
    io.Clear();
    serialiser.WriteBoolean(1, true);
    double notRead = 0;
    EXPECT_EQ(serialiser.ReadDouble(notRead, 1), 0);
    EXPECT_EQ(capture.AllDumps(), "ReadType: Expecting GenericData::DataType of (3). Got (2)\n");
}

TEST_F(GdLegacySerialise, DamagedStreamsGiveTheReadersMessages)
{
    const struct {
        const char* hex;
        const char* text;
        const char* messages;
    } cases[] = {
        {"", "<null>", "ReadType: Expecting a GenericData::DataType value. Read end of data.\n"},
        {"63 00 00 00", "<null>", ""},
        {"03 00 00 00 00", "<null>", "ReadDouble: Expecting to read a double. Read end of data.\n"},
        {"02 00 00 00 01", "<null>",
         "ReadBoolean: Expecting to read a Boolean. Read end of data.\n"},
        {"04 00 00 00 01", "<null>",
         "ReadString: Failed to read data. Expecting to read the length of a string.\n"},
        {"04 00 00 00 05 00 00 00 61", "<null>",
         "ReadString: Expecting to read a String. Read end of data.\n"},
        {"04 00 00 00 ff ff ff 7f 61", "<null>",
         "ReadString: Expecting to read a String. Read end of data.\n"},
        // A bad element costs only itself...
        {"05 00 00 00 03 00 00 00 02 00 00 00 01 00 00 00 63 00 00 00 "
         "04 00 00 00 01 00 00 00 61",
         R"([ 1=true 2=none 3="a" ])", "Could not deserialise vector element at position (2).\n"},
        // ...but once the data has ended, a count that no data backs gives the vector up.
        {"05 00 00 00 ff ff ff 7f 02 00 00 00 01 00 00 00", "<null>",
         "ReadType: Expecting a GenericData::DataType value. Read end of data.\n"
         "Could not deserialise vector element at position (2).\n"},
        {"06 00 00 00 04 00 00 00 00 00 00 00", "<null>",
         "Object is not deserialisable. It has a blank 'creation name'.\n"},
        {"06 00 00 00 04 00 00 00 0a 00 00 00 41 73 73 6f 63 41 72 72 61 79", "<null>",
         "Could not create object (AssocArray). 'objectCreator' property is not set.\n"},
    };
    for (const auto& c : cases) {
        Capture capture;
        EXPECT_EQ(ReadText(Bytes(c.hex)), c.text) << c.hex;
        EXPECT_EQ(capture.AllDumps(), c.messages) << c.hex;
    }
}

TEST_F(GdLegacySerialise, NestingStopsPast201LevelsWithANoneInnermost)
{
    std::string vectors;
    for (int i = 0; i < 200; ++i)
        vectors += Bytes("05 00 00 00 01 00 00 00");
    std::string deepest = vectors + Bytes("02 00 00 00 01 00 00 00");
    std::string tooDeep = Bytes("05 00 00 00 01 00 00 00") + deepest;

    Capture capture;
    CVeskGdMemorySerialiserIO io(deepest.data(), static_cast<int>(deepest.size()));
    CVeskGdLegacySerialiserImpl serialiser(&io);
    Ref<CVeskGenericData> value(serialiser.ReadGdObject());
    EXPECT_TRUE(value.get());
    EXPECT_EQ(capture.AllDumps(), "");

    // The vectors survive their bad element, as in this format they do.
    io.Clear();
    io.Write(tooDeep.data(), static_cast<int>(tooDeep.size()));
    Ref<CVeskGenericData> cut(serialiser.ReadGdObject());
    EXPECT_TRUE(cut.get());
    EXPECT_EQ(capture.AllDumps(), "Serialised objects are nested too deeply\n"
                                  "Could not deserialise vector element at position (1).\n");
}

TEST_F(GdLegacySerialise, ObjectsNeedANameAndACreatorEvenForArrays)
{
    Ref<CVeskGdObjectCreator> creator(MakeTestCreator());
    Ref<CVeskGdVector> vector(
        MakeVector({CTestPoint::MakeWith("Point", -0.25, -7, 4000000000u, 1, "p"),
                    MakeArrayValue(CVeskGdNull::Allocate(), {{"a", CVeskGdDouble::Allocate(1)}})}));

    CVeskGdMemorySerialiserIO io(creator.get());
    CVeskGdLegacySerialiserImpl serialiser(&io);
    ASSERT_EQ(serialiser.WriteGdObject(vector.get()), 1);
    Ref<CVeskGenericData> back(serialiser.ReadGdObject());
    ASSERT_TRUE(back.get());
    Ref<CVeskGenericData> pointBack(static_cast<CVeskGdVector*>(back.get())->GetElement(0));
    Ref<CVeskGenericData> arrayBack(static_cast<CVeskGdVector*>(back.get())->GetElement(1));
    EXPECT_EQ(CTestPoint::Of(pointBack.get())->Describe(), "-0.250000,-7,4000000000,1,p");
    EXPECT_EQ(AsText(arrayBack.get()), "[ a=1 ]");

    Capture capture;
    Ref<CVeskGenericData> blank(CTestPoint::Make(""));
    EXPECT_EQ(WriteHex(blank.get(), 0), "");
    // "DataSet" goes out lower-cased; the creator must know it by that name.
    Ref<CVeskGenericData> dataSet(CTestPoint::Make("DataSet"));
    EXPECT_EQ(WriteHex(dataSet.get()).substr(0, 56),
              "06 00 00 00 04 00 00 00 07 00 00 00 64 61 74 61 73 65 74");
    Ref<CVeskGenericData> failing(CTestPoint::Make("Point"));
    CTestPoint::Of(failing.get())->m_bFailSerialise = 1;
    EXPECT_EQ(WriteHex(failing.get(), 0),
              "06 00 00 00 04 00 00 00 05 00 00 00 50 6f 69 6e 74 ff ff ff ff");
    Ref<CVeskGenericData> opaque(CTestOpaque::Make(""));
    EXPECT_EQ(WriteHex(opaque.get(), 0), "");
    EXPECT_EQ(capture.AllDumps(),
              "Object is not serialisable. It has a blank 'creation name'.\n"
              "Object (Point) is not serialisable. Object's Serialise() failed.\n"
              "Object is not serialisable. It doesn't support the IVeskSerialise interface.\n");
}

TEST_F(GdLegacySerialise, AFailedObjectIsScannedToItsTrailerAndTheNextOne)
{
    Ref<CVeskGdObjectCreator> creator(MakeTestCreator());
    Capture capture;
    const char* hex = "06 00 00 00 04 00 00 00 05 00 00 00 50 6f 69 6e 74 "
                      "04 00 00 00 01 00 00 00 78 ff ff ff ff "
                      "02 00 00 00 01 00 00 00 ff ff ff ff 07 00 00 00";
    std::string bytes = Bytes(hex);
    CVeskGdMemorySerialiserIO io(bytes.data(), static_cast<int>(bytes.size()), creator.get());
    CVeskGdLegacySerialiserImpl serialiser(&io);
    EXPECT_EQ(serialiser.ReadGdObject(), nullptr);
    EXPECT_EQ(capture.AllDumps(),
              "ReadType: Expecting GenericData::DataType of (3). Got (4)\n"
              "Object (Point) is not deserialisable. Object's Deserialise() failed.\n");
    Ref<CVeskGenericData> next(serialiser.ReadGdObject());
    EXPECT_EQ(AsText(next.get()), "none");

    const struct {
        const char* name;
        const char* message;
    } unmade[] = {
        {"07 00 00 00 5a 65 64 7a 61 70 70", "ObjectCreator failed to create object (Zedzapp).\n"},
        {"06 00 00 00 4f 70 61 71 75 65", "Object is not deserialisable. It doesn't support the "
                                          "IVeskSerialise interface.\n"},
    };
    for (const auto& c : unmade) {
        capture.Clear();
        std::string object = Bytes("06 00 00 00 04 00 00 00") + Bytes(c.name);
        EXPECT_EQ(ReadText(object, creator.get()), "<null>");
        EXPECT_EQ(capture.AllDumps(), c.message);
    }
}

TEST_F(GdLegacySerialise, TheTraceFollowsObjectsAtADebugLevelAboveZero)
{
    Ref<CVeskGdObjectCreator> creator(MakeTestCreator());
    Ref<CVeskGenericData> point(CTestPoint::MakeWith("Point", 1.5, 0, 0, 1, "p"));
    CVeskGdMemorySerialiserIO io(creator.get());
    CTracingSerialiser serialiser(&io);

    Capture capture;
    serialiser.WriteBoolean(1, true); // outside objects, values are not traced
    serialiser.WriteGdObject(point.get());
    // Both directions trace the same steps in their own words.
    auto trace = [](const std::string& verb, const std::string& call) {
        std::string text = "      " + verb + " string (Point)\n----- Calling " + call +
                           "() of object (Point) -----\n";
        for (const char* step : {"double (1.500000)", "double (0.000000)", "double (0.000000)",
                                 "Boolean (1)", "string (p)"})
            text += "      " + verb + " " + step + "\n";
        return text + "----- Finished " + call + "() of object (Point) -----\n      " + verb +
               " object trailer\n";
    };
    EXPECT_EQ(capture.AllDumps(), trace("Writing", "Serialize"));
    capture.Clear();
    int flag;
    serialiser.ReadBoolean(flag, 1);
    Ref<CVeskGenericData> back(serialiser.ReadGdObject());
    EXPECT_EQ(capture.AllDumps(), trace("Read", "Deserialise"));
}

} // namespace
