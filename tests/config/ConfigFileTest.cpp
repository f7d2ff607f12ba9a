#include <cstring>
#include <initializer_list>
#include <string>

#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

class ConfigFile : public StartedTest {};

CVeskGenericData* NewSection() { return MakeArrayValue(CVeskGdNull::Allocate()); }

// A tree in memory that nothing ever writes to disk, not even the destructor.
class MemoryFile : public CVeskConfigFile {
public:
    MemoryFile()
    {
        SaveOnExit(false);
        Ref<CVeskGenericData> root(NewSection());
        SetValue(root.get());
        m_bModified = false;
    }
};

// What the tree holds under the keys, by plain property reads; "<null>" when nothing.
std::string At(CVeskConfigFile& file, std::initializer_list<const char*> keys)
{
    CVeskGenericData* value = file.GetValue();
    for (const char* key : keys) {
        CVeskGenericData* child = value ? value->GetProperty(key, 0) : nullptr;
        if (value)
            value->Release();
        value = child;
    }
    if (!value)
        return "<null>";
    std::string text = value->GetType() == CVeskGenericData::dtObject ? "Section" : Printed(value);
    value->Release();
    return text;
}

TEST_F(ConfigFile, PathsSplitAtEverySeparatorAndCreateNullDefaultSections)
{
    MemoryFile file;
    CVeskConfigFileIF cursor(file, true);
    ASSERT_TRUE(cursor.Open("a/b.c\\d"));
    EXPECT_TRUE(file.IsModified());
    EXPECT_TRUE(cursor.WriteString("k", "deep"));
    EXPECT_EQ(At(file, {"a", "b", "c", "d", "k"}), "deep");
    EXPECT_EQ(At(file, {"a", "b", "*default"}), "Null");

    // Existing sections are walked, not replaced; empty elements vanish.
    CVeskConfigFileIF again(file, false);
    ASSERT_TRUE(again.Open("/a//b.c.\\d."));
    CDorlString text;
    EXPECT_TRUE(again.ReadString("k", text, 0, ""));
    EXPECT_EQ(std::string(text), "deep");
    EXPECT_TRUE(again.Open(""));
    EXPECT_TRUE(again.WriteInt("top", 3));
    again.Ascend();
    EXPECT_EQ(At(file, {"top"}), "3");
    EXPECT_FALSE(again.Open(std::string(1024, 'x').c_str()));
}

TEST_F(ConfigFile, WithoutCreationOnlyTheLastElementMayBeMissing)
{
    MemoryFile file;
    CVeskConfigFileIF cursor(file, false);
    ASSERT_TRUE(cursor.Open("a"));
    int value = 1;
    EXPECT_FALSE(cursor.ReadInt("x", &value, 1, 42));
    EXPECT_EQ(value, 42);
    EXPECT_FALSE(cursor.Open("a.b"));
    EXPECT_FALSE(file.IsModified());
    EXPECT_EQ(At(file, {"a"}), "Null");

    CVeskConfigFile closed;
    CVeskConfigFileIF none(closed, true);
    EXPECT_FALSE(none.Open(""));
    EXPECT_FALSE(none.Descend("a"));
    EXPECT_FALSE(none.ReadInt("x", &value, 1, 7));
    EXPECT_FALSE(none.WriteInt("x", 7));
    EXPECT_EQ(value, 42);
}

TEST_F(ConfigFile, AscendStopsAtTheOpenedLevelAndCloseReportsUnpairedLevels)
{
    MemoryFile file;
    CVeskConfigFileIF cursor(file, true);
    Capture capture;
    ASSERT_TRUE(cursor.Open("s"));
    EXPECT_FALSE(cursor.Ascend());
    EXPECT_EQ(capture.AllDumps(), "CVeskConfigFileIF: Trying to ascend too far!\n");

    ASSERT_TRUE(cursor.Descend("t"));
    EXPECT_TRUE(cursor.WriteInt("below", 2));
    EXPECT_TRUE(cursor.Ascend());
    EXPECT_TRUE(cursor.WriteInt("back", 3));
    EXPECT_EQ(At(file, {"s", "t", "below"}), "2");
    EXPECT_EQ(At(file, {"s", "back"}), "3");

    capture.Clear();
    ASSERT_TRUE(cursor.Descend("t"));
    cursor.Close();
    EXPECT_EQ(capture.AllDumps(), "CVeskConfigFileIF: Level not restored at close!\n");
    EXPECT_FALSE(cursor.WriteInt("gone", 4));
}

TEST_F(ConfigFile, ReadsTakeOnlyTheirTypeAndTheModeDecidesTheRest)
{
    MemoryFile file;
    CVeskConfigFileIF cursor(file, false);
    ASSERT_TRUE(cursor.Open(""));
    cursor.WriteString("s", "text");
    cursor.WriteDouble("n", -5.75);
    cursor.WriteDouble("big", 4294967301.0);

    int i = 0;
    unsigned long dw = 0;
    CDorlString s;
    EXPECT_TRUE(cursor.ReadInt("n", &i, 0, 0));
    EXPECT_EQ(i, -5);
    EXPECT_TRUE(cursor.ReadDWORD("n", &dw, 0, 0));
    EXPECT_EQ(dw, 0xFFFFFFFBul);
    EXPECT_TRUE(cursor.ReadDWORD("big", &dw, 0, 0));
    EXPECT_EQ(dw, 5ul);

    file.m_bModified = false;
    i = 11;
    EXPECT_FALSE(cursor.ReadInt("s", &i, 0, 9));
    EXPECT_FALSE(cursor.ReadInt("s", &i, 3, 9));
    EXPECT_EQ(i, 11);
    EXPECT_FALSE(cursor.ReadString("n", s, 1, "fallback"));
    EXPECT_EQ(std::string(s), "fallback");
    EXPECT_FALSE(cursor.ReadBool("s", &i, 1, 0));
    EXPECT_EQ(i, 0);
    EXPECT_EQ(At(file, {"s"}), "text");
    EXPECT_FALSE(file.IsModified());

    // Mode 2 writes the default over an entry of another type, yet still reports a miss.
    EXPECT_FALSE(cursor.ReadInt("s", &i, 2, 9));
    EXPECT_EQ(i, 9);
    EXPECT_EQ(At(file, {"s"}), "9");
    EXPECT_TRUE(file.IsModified());
    EXPECT_FALSE(cursor.ReadString("new", s, 2, "made"));
    EXPECT_EQ(At(file, {"new"}), "made");
}

TEST_F(ConfigFile, WritesOfWhatTheTypedReadAlreadyFindsChangeNothing)
{
    MemoryFile file;
    CVeskConfigFileIF cursor(file, false);
    ASSERT_TRUE(cursor.Open(""));
    cursor.WriteDouble("n", 5.5);
    cursor.WriteString("s", "same");
    cursor.WriteBool("b", 0);
    file.m_bModified = false;

    EXPECT_TRUE(cursor.WriteInt("n", 5));
    EXPECT_TRUE(cursor.WriteDouble("n", 5.5));
    EXPECT_TRUE(cursor.WriteString("s", "same"));
    EXPECT_TRUE(cursor.WriteBool("b", 0));
    EXPECT_FALSE(file.IsModified());
    EXPECT_EQ(At(file, {"n"}), "5.5");

    EXPECT_TRUE(cursor.WriteBinary("s", const_cast<char*>("same"), 4));
    EXPECT_TRUE(file.IsModified());

    EXPECT_TRUE(cursor.WriteDWORD("dw", 3000000000ul));
    Ref<CVeskGenericData> root(file.GetValue());
    Ref<CVeskGenericData> stored(root->GetProperty("dw", 0));
    EXPECT_EQ(static_cast<CVeskGdDouble*>(stored.get())->m_dValue, 3000000000.0);
    EXPECT_TRUE(cursor.WriteInt("n", 6));
    EXPECT_EQ(At(file, {"n"}), "6");
}

TEST_F(ConfigFile, BinaryEntriesNeedTheExactSize)
{
    MemoryFile file;
    CVeskConfigFileIF cursor(file, false);
    ASSERT_TRUE(cursor.Open(""));
    const char raw[4] = {'a', 0, '\n', '\xff'};
    EXPECT_TRUE(cursor.WriteBinary("bin", const_cast<char*>(raw), 4));

    char out[4] = {};
    EXPECT_TRUE(cursor.ReadBinary("bin", out, 4, 0, nullptr, 0));
    EXPECT_EQ(std::memcmp(out, raw, 4), 0);

    char fallback[3] = {'x', 'y', 'z'};
    char small[3] = {};
    EXPECT_FALSE(cursor.ReadBinary("bin", small, 3, 1, fallback, 3));
    EXPECT_EQ(std::memcmp(small, fallback, 3), 0);
    EXPECT_FALSE(cursor.ReadBinary("other", small, 3, 2, fallback, 2));
    EXPECT_EQ(At(file, {"other"}), "xy");
}

TEST_F(ConfigFile, SaveWithoutTreeOrChangesWritesNothing)
{
    CVeskConfigFile file;
    file.SetModified();
    EXPECT_TRUE(file.Save());
    EXPECT_FALSE(file.IsModified());
    Ref<CVeskGenericData> root(NewSection());
    file.SetValue(root.get());
    file.m_bModified = false;
    EXPECT_TRUE(file.Save()); // unchanged: the writer is never asked
}

TEST_F(ConfigFile, GlobalShortcutsCreateSectionsAndEntriesOnlyWhenAsked)
{
    CVeskConfigFile& global = g_VeskGlobConf();
    EXPECT_EQ(&global, &g_VeskGlobConf());
    global.Close();
    const char* fallback = "fallback";
    EXPECT_EQ(GlobalCfgGetString("app", "name", fallback, true), fallback);
    EXPECT_EQ(GlobalCfgGetInt("app", "n", 4, true), 4);
    EXPECT_FALSE(GlobalCfgSetInt("app", "n", 5));

    Ref<CVeskGenericData> root(NewSection());
    global.SetValue(root.get());
    global.m_bModified = false;
    EXPECT_EQ(GlobalCfgGetInt("app.win", "w", 640, false), 640);
    EXPECT_TRUE(global.IsModified());
    EXPECT_EQ(At(global, {"app", "win"}), "Section");
    EXPECT_EQ(At(global, {"app", "win", "w"}), "Null");
    EXPECT_EQ(GlobalCfgGetDWORD("app.win", "h", 480ul, true), 480ul);
    EXPECT_EQ(At(global, {"app", "win", "h"}), "480");

    EXPECT_TRUE(GlobalCfgSetString("app", "name", "Editor"));
    EXPECT_TRUE(GlobalCfgSetBool("app", "on", 1));
    EXPECT_TRUE(GlobalCfgSetDouble("app", "ratio", 1.25));
    EXPECT_TRUE(GlobalCfgSetDWORD("app", "mask", 0xF0000000ul));
    EXPECT_TRUE(GlobalCfgSetInt("app", "count", -3));
    EXPECT_STREQ(GlobalCfgGetString("app", "name", fallback, false), "Editor");
    EXPECT_EQ(GlobalCfgGetString("app", "count", fallback, false), fallback);
    EXPECT_EQ(GlobalCfgGetBool("app", "on", 0, false), 1);
    EXPECT_EQ(GlobalCfgGetDouble("app", "ratio", 0, false), 1.25);
    EXPECT_EQ(GlobalCfgGetDWORD("app", "mask", 0, false), 0xF0000000ul);
    EXPECT_EQ(GlobalCfgGetInt("app", "count", 0, false), -3);
    global.Close();
}

} // namespace
