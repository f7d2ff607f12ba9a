#include <string>

#include "serialise/SerialiseTestObjects.h"

using namespace vesk_test;

namespace {

class GdSerialiserIO : public ScratchDirTest {};

// A component that keeps its name and a level on a stream.
class CGauge : public CVeskComponent {
public:
    CGauge() : CVeskComponent("gauge") {}
    int OnSerialise(CVeskGdSerialiser* serialiser) override
    {
        serialiser->WriteString(m_sName, true);
        serialiser->WriteDouble(m_dLevel, true);
        return 1;
    }
    int OnDeserialise(CVeskGdSerialiser* serialiser, CVeskGenericData**) override
    {
        return serialiser->ReadString(m_sName, 1) && serialiser->ReadDouble(m_dLevel, 1);
    }
    CDorlString OnGetCreationName() override { return "Gauge"; }

    static CVeskGenericData* Make(const CDorlString&)
    {
        CGauge* gauge = new CGauge;
        CVeskGenericData* value = CVeskGdObject::Allocate(gauge);
        gauge->Release();
        return value;
    }

    double m_dLevel = 0;
};

TEST_F(GdSerialiserIO, MemoryReadsWholeRequestsOnlyAndHoldsItsCreator)
{
    CVeskGdObjectCreator* creator = MakeTestCreator();
    {
        CVeskGdMemorySerialiserIO io("abc", 3, creator);
        EXPECT_EQ(creator->AddRef(), 3u);
        creator->Release();
        EXPECT_EQ(io.GetObjectCreator(), creator);

        char buffer[4] = {};
        EXPECT_EQ(io.Read(buffer, 2), 1);
        EXPECT_EQ(std::string(buffer), "ab");
        // A request past the end gives nothing, and the stream stays at its end.
        EXPECT_EQ(io.Read(buffer, 2), 0);
        EXPECT_EQ(io.Read(buffer, 1), 0);
        io.Rewind();
        EXPECT_EQ(io.Read(buffer, 3), 1);
        // Replacing the creator gives its reference back; setting it again takes one.
        io.SetObjectCreator(nullptr);
        io.SetObjectCreator(creator);
    }
    EXPECT_EQ(creator->Release(), 0u);
}

TEST_F(GdSerialiserIO, ComponentsGoThroughBothFormatsAndAnswerByNameAfterwards)
{
    Ref<CVeskGdObjectCreator> creator(new CVeskGdObjectCreator);
    creator->Register("Gauge", &CGauge::Make);
    CGauge* gauge = new CGauge;
    gauge->m_sName = "tank";
    gauge->m_dLevel = 0.75;
    Ref<CVeskGenericData> value(CVeskGdObject::Allocate(gauge));
    gauge->Release();

    for (int legacy = 0; legacy < 2; ++legacy) {
        CVeskGdMemorySerialiserIO io(creator.get());
        CVeskGdSerialiserImpl current(&io);
        CVeskGdLegacySerialiserImpl old(&io);
        CVeskGdSerialiser& serialiser = legacy ? static_cast<CVeskGdSerialiser&>(old) : current;
        ASSERT_EQ(serialiser.WriteGdObject(value.get()), 1);
        Ref<CVeskGenericData> back(serialiser.ReadGdObject());
        ASSERT_TRUE(back.get());
        EXPECT_EQ(PropertyText(back.get(), "name"), "tank");
        IVeskSerialise* serialise = nullptr;
        static_cast<CVeskGdObject*>(back.get())
            ->GetInterface(IID_IVeskSerialise, reinterpret_cast<void**>(&serialise), DorlPchNil);
        ASSERT_TRUE(serialise);
        CGauge* read = static_cast<CGauge*>(
            static_cast<CVeskComponent::XVeskSerialiseObj*>(serialise)->Owner());
        serialise->Release();
        EXPECT_NE(read, gauge);
        EXPECT_EQ(read->m_dLevel, 0.75);
    }
}

TEST_F(GdSerialiserIO, CreatorMakesRegisteredNamesAndNothingElse)
{
    Ref<CVeskGdObjectCreator> creator(MakeTestCreator());
    creator->Register("Opaque", nullptr);
    for (const char* name : {"AssocArray", "Point", "Opaque", "point"}) {
        CVeskCommandContext context;
        context.AddParam(DorlPchNil, CDorlString(name));
        EXPECT_EQ(creator->CallMethod(&context), 1);
        Ref<CVeskGenericData> made(context.GetReturnValue());
        bool known = std::string(name) == "AssocArray" || std::string(name) == "Point";
        EXPECT_EQ(made.get() != nullptr, known) << name;
    }
}

TEST_F(GdSerialiserIO, FilesCarryAStreamAndReportWhatFails)
{
    const std::string path = Path("stream");
    Ref<CVeskGdVector> vector(
        MakeVector({CVeskGdString::Allocate("abc"), CVeskGdNull::Allocate()}));
    {
        CVeskGdFileSerialiserIO file(path.c_str(), CVeskGdFileSerialiserIO::modeWrite);
        CVeskGdSerialiserImpl serialiser(&file);
        ASSERT_EQ(serialiser.WriteGdObject(vector.get()), 1);
        EXPECT_EQ(file.Close(), 1);
    }
    {
        CVeskGdFileSerialiserIO file(path.c_str(), CVeskGdFileSerialiserIO::modeRead);
        CVeskGdSerialiserImpl serialiser(&file);
        Ref<CVeskGenericData> back(serialiser.ReadGdObject());
        EXPECT_EQ(AsText(back.get()), R"([ 1="abc" 2=null ])");
        char extra;
        EXPECT_EQ(file.Read(&extra, 1), 0);
    }

    Capture capture;
    CVeskGdFileSerialiserIO missing("/nonexistent/stream", CVeskGdFileSerialiserIO::modeRead);
    EXPECT_EQ(missing.IsOpen(), 0);
    char byte;
    EXPECT_EQ(missing.Read(&byte, 1), 0);
    CVeskGdFileSerialiserIO full("/dev/full", CVeskGdFileSerialiserIO::modeWrite);
    ASSERT_EQ(full.IsOpen(), 1);
    full.Write("x", 1);
    EXPECT_EQ(full.Close(), 0);
    EXPECT_EQ(capture.AllDumps(),
              "Could not open (/nonexistent/stream) for reading: No such file or directory\n"
              "Could not write to (/dev/full): No space left on device\n");
}

} // namespace
