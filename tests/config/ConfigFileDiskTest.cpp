#include <fstream>
#include <string>

#include <unistd.h>

#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

class ConfigFileDisk : public ScratchDirTest {};

bool Exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

void Put(const std::string& path, const char* text) { std::ofstream(path) << text; }

TEST_F(ConfigFileDisk, UnreadableFilesGiveAnEmptyTreeOnlyWithCreation)
{
    const std::string missing = Path("missing.cfg");
    CVeskConfigFile file;
    Capture capture;
    EXPECT_FALSE(file.Open(missing.c_str(), false, true));
    EXPECT_NE(capture.AllDumps().find("Cannot open input file"), std::string::npos);
    EXPECT_EQ(file.GetValue(), nullptr);

    ASSERT_TRUE(file.Open(missing.c_str(), true, true));
    EXPECT_FALSE(file.IsModified());
    EXPECT_EQ(std::string(file.m_sPath), missing);
    EXPECT_TRUE(file.Save());
    EXPECT_FALSE(Exists(missing)); // an untouched new tree makes no file

    const std::string broken = Path("broken.cfg");
    Put(broken, "[ a=.5 ]\n");
    capture.Clear();
    ASSERT_TRUE(file.Open(broken.c_str(), true, true));
    EXPECT_NE(capture.AllDumps().find("Unexpected character '.'"), std::string::npos);
    Ref<CVeskGenericData> root(file.GetValue());
    EXPECT_EQ(PropertyText(root.get(), "*size"), "0");
    file.Close();
    EXPECT_EQ(FileText(broken), "[ a=.5 ]\n");
}

TEST_F(ConfigFileDisk, SaveWritesChangesOnceAndTheDestructorOnlyWithSaveOnExit)
{
    const std::string path = Path("app.cfg");
    {
        CVeskConfigFile file;
        ASSERT_TRUE(file.Open(path.c_str(), true, false));
        CVeskConfigFileIF cursor(file, true);
        ASSERT_TRUE(cursor.Open("win"));
        cursor.WriteInt("w", 640);
        cursor.WriteString("title", "two words");
        EXPECT_TRUE(file.Save());
        EXPECT_FALSE(file.IsModified());
        cursor.WriteInt("w", 800);
    } // save-on-exit off: 800 is lost
    {
        CVeskConfigFile file;
        ASSERT_TRUE(file.Open(path.c_str(), false, true));
        CVeskConfigFileIF cursor(file, false);
        ASSERT_TRUE(cursor.Open("win"));
        int w = 0;
        EXPECT_TRUE(cursor.ReadInt("w", &w, 0, 0));
        EXPECT_EQ(w, 640);
        cursor.WriteBool("max", 1);
    } // save-on-exit on
    EXPECT_NE(FileText(path).find("max=true"), std::string::npos);

    // A failed write still clears the mark, so the next Save does not try again.
    CVeskConfigFile file;
    Capture capture;
    ASSERT_TRUE(file.Open(Path("no/such/dir.cfg").c_str(), true, false));
    file.SetModified();
    EXPECT_FALSE(file.Save());
    EXPECT_FALSE(file.IsModified());
    EXPECT_TRUE(file.Save());
}

TEST_F(ConfigFileDisk, OpenDropsAnEarlierTreeUnsaved)
{
    const std::string first = Path("first.cfg");
    const std::string second = Path("second.cfg");
    Put(first, "[\n\tk=1\n]\n");
    Put(second, "[\n\tk=2\n]\n");
    CVeskConfigFile file;
    ASSERT_TRUE(file.Open(first.c_str(), false, true));
    file.SetModified();
    ASSERT_TRUE(file.Open(second.c_str(), false, false));
    EXPECT_EQ(FileText(first), "[\n\tk=1\n]\n");
    EXPECT_EQ(std::string(file.m_sPath), second);
}

TEST_F(ConfigFileDisk, GlobalSettingsReachTheDiskOnlyThroughSave)
{
    const std::string path = Path("global.cfg");
    Put(path, "[\n\tview=[\n\t\tzoom=2\n\t]\n]\n");
    CVeskConfigFile& global = g_VeskGlobConf();
    ASSERT_TRUE(global.Open(path.c_str(), false, true));
    EXPECT_EQ(GlobalCfgGetInt("view", "zoom", 1, false), 2);
    EXPECT_TRUE(GlobalCfgSetInt("view", "zoom", 3));
    EXPECT_EQ(FileText(path), "[\n\tview=[\n\t\tzoom=2\n\t]\n]\n");
    EXPECT_TRUE(global.Save());
    EXPECT_EQ(FileText(path), "[\n\tview=[\n\t\tzoom=3\n\t]\n]\n");
    global.Close();
}

} // namespace
