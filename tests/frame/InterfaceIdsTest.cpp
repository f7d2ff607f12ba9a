#include <string>

#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

const GUID kFresh = {0x12345678, 0x9abc, 0xdef0, {0x01, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd, 0xef}};
const GUID kOther = {0x00000001, 0x0002, 0x0003, {0x04, 0x05, 0x06, 0x07, 0x08, 0x09, 0x0a, 0x0b}};

} // namespace

TEST(InterfaceIds, IdentifiersFormOneSeries)
{
    // Before start-up every identifier translates to its hexadecimal form.
    EXPECT_STREQ(VeskTranslateInterfaceId(IID_IVeskCounter),
                 "067f573c-8416-11d0-bdfd-0020af6fa161");
    EXPECT_STREQ(VeskTranslateInterfaceId(IID_IUnknown), "00000000-0000-0000-c000-000000000046");
    EXPECT_EQ(IID_IVeskCommand.Data1, 0x067F572Eu);
}

TEST(InterfaceIds, StartupRegistersTheFrameworkNames)
{
    DorlRunInitialisers();
    struct {
        const IID* iid;
        const char* name;
    } registered[] = {
        {&IID_IUnknown, "IUnknown"},
        {&IID_IVeskCommand, "IVeskCommand"},
        {&IID_IVeskPin, "IVeskPin"},
        {&IID_IVeskEnumerate, "IVeskEnumerate"},
        {&IID_IVeskDataStore, "IVeskDataStore"},
        {&IID_IVeskItem, "IVeskItem"},
        {&IID_IVeskNotifier, "IVeskNotifier"},
        {&IID_IVeskNotifyTarget, "IVeskNotifyTarget"},
        {&IID_IVeskTree, "IVeskTree"},
        {&IID_IVeskEventListener, "IVeskEventListener"},
        {&IID_IVeskTextSubject, "IVeskTextSubject"},
        {&IID_IVeskTextObserver, "IVeskTextObserver"},
        {&IID_IVeskDataTransport, "IVeskDataTransport"},
        {&IID_IVeskCounter, "IVeskCounter"},
    };
    for (const auto& entry : registered)
        EXPECT_STREQ(VeskTranslateInterfaceId(*entry.iid), entry.name);
    // Three of the framework's own stay unnamed.
    EXPECT_STREQ(VeskTranslateInterfaceId(IID_IVeskDLL), "067f5721-8416-11d0-bdfd-0020af6fa161");
    EXPECT_STREQ(VeskTranslateInterfaceId(IID_IVeskComponent),
                 "067f5723-8416-11d0-bdfd-0020af6fa161");
    EXPECT_STREQ(VeskTranslateInterfaceId(IID_IVeskSerialise),
                 "067f5738-8416-11d0-bdfd-0020af6fa161");
}

TEST(InterfaceIds, TheLastRegistrationWinsWithAWarning)
{
    Capture capture;
    // Translating an unknown identifier adds no entry: registering it afterwards warns of nothing.
    EXPECT_STREQ(VeskTranslateInterfaceId(kFresh), "12345678-9abc-def0-0123-456789abcdef");
    EXPECT_STREQ(VeskTranslateInterfaceId(kFresh), "12345678-9abc-def0-0123-456789abcdef");
    VeskRegisterInterfaceIdName(kFresh, "IFirst");
    VeskRegisterInterfaceIdName(kFresh, "IFirst");
    EXPECT_TRUE(capture.dumps.empty());

    VeskRegisterInterfaceIdName(kFresh, "ISecond");
    EXPECT_EQ(capture.AllDumps(), "WARNING: IFirst and ISecond have duplicate interface ids\n");
    EXPECT_STREQ(VeskTranslateInterfaceId(kFresh), "ISecond");

    // An empty name empties the entry: the translation is then empty, not hexadecimal.
    capture.Clear();
    VeskRegisterInterfaceIdName(kFresh, "");
    EXPECT_EQ(capture.AllDumps(), "WARNING: ISecond and  have duplicate interface ids\n");
    CDorlString emptied = VeskTranslateInterfaceId(kFresh);
    EXPECT_TRUE(emptied.IsEmpty());
    capture.Clear();
    VeskRegisterInterfaceIdName(kFresh, "IThird");
    EXPECT_TRUE(capture.dumps.empty());

    // Entries are independent of one another.
    VeskRegisterInterfaceIdName(kOther, "IOther");
    EXPECT_STREQ(VeskTranslateInterfaceId(kFresh), "IThird");
    EXPECT_STREQ(VeskTranslateInterfaceId(kOther), "IOther");
}
