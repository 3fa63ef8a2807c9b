// Where the settings live, the first start, the file-name rules of ReadIni/WriteIni and the
// recent target folders.
#include <gtest/gtest.h>

#include "ShellFiles.h"
#include "common/JunkBytes.h"
#include "common/ScratchFolder.h"
#include "modSettings.h"

namespace plattmix::shell {
namespace {

using test::ScopedEnv;
using test::WriteBytes;
using Lines = std::vector<std::string>;

class SettingsTest : public ::testing::Test {
  protected:
    SettingsTest() : appData_(test::ScratchFolder("shell").string() + "/AppData") {}

    SettingsPaths StartedPaths() {
        const SettingsPaths paths = ComputeSettingsPaths();
        EXPECT_TRUE(EnsureSettingsFile(paths));
        return paths;
    }

    std::string appData_;
    ScopedEnv env_{"APPDATA", appData_};
};

TEST_F(SettingsTest, FolderComesFromAppDataThenXdgThenHome) {
    // The window tests find Diskolo.ini and Opt.ini under APPDATA.
    EXPECT_EQ(ComputeSettingsPaths().AppDataFolder, appData_ + "/");
    ScopedEnv noAppData("APPDATA", std::nullopt);
    ScopedEnv xdg("XDG_CONFIG_HOME", "/x/config/");
    EXPECT_EQ(ComputeSettingsPaths().SettingsFolder, "/x/config/Trovalis/");

    ScopedEnv noXdg("XDG_CONFIG_HOME", std::nullopt);
    ScopedEnv home("HOME", "/home/hanna");
    EXPECT_EQ(ComputeSettingsPaths().SettingsFile, "/home/hanna/.config/Trovalis/Diskolo.ini");
}

// Reading never writes: a settings file the program cannot make sense of stays as it was.
TEST_F(SettingsTest, ReadingLeavesADamagedSettingsFileAsItIs) {
    const SettingsPaths paths = ComputeSettingsPaths();
    std::filesystem::create_directories(paths.SettingsFolder);
    const std::string junk = test::JunkBytes(64 * 1024);
    for (const std::string& bytes :
         {junk, test::kUtf16Mark + junk,
          test::kUtf16Mark + test::Utf16Le(u"[Diskolo\r\nUnload=1") + "x"}) {
        WriteBytes(paths.SettingsFile, bytes);
        EXPECT_TRUE(EnsureSettingsFile(paths));
        ReadIni(paths, "Diskolo", "Unload");
        Lines entries;
        LoadComboFromSection(paths, entries, "ComboBox1");
        EXPECT_EQ(test::WholeFile(paths.SettingsFile), bytes);
    }
}

TEST_F(SettingsTest, SettingsFileThatCannotBeMadeIsReportedButTheChoiceStays) {
    const SettingsPaths paths = ComputeSettingsPaths();
    EXPECT_EQ(AddRecentFolder(paths, {"/a/"}, "/b"), (Lines{"/a/", "/b/"}));
    WriteBytes(appData_, "a file where the folder should be");
    EXPECT_FALSE(EnsureSettingsFile(paths));
}

TEST_F(SettingsTest, FileNameRulesOfReadIniAndWriteIni) {
    const SettingsPaths paths = StartedPaths();
    EXPECT_EQ(test::WholeFile(paths.SettingsFile), "\xFF\xFE");  // the first start writes the mark
    WriteIni(paths, "S", "k", "settings");
    EXPECT_EQ(ReadIni(paths, "S", "k", "abc"), "settings");  // shorter than 4: Diskolo.ini
    EXPECT_EQ(ReadIni(paths, "S", "k", "Opt.ini", "none"), "none");

    WriteIni(paths, "S", "k", "other", "Other.ini");  // no "/": inside the settings folder
    EXPECT_EQ(ReadIni(paths, "S", "k", "Other.ini"), "other");

    const std::string elsewhere = appData_ + "/elsewhere.ini";
    WriteIni(paths, "S", "k", "as it stands", elsewhere);
    EXPECT_EQ(ReadIni(paths, "S", "k", "elsewhere.ini", "not inside"), "not inside");
    EXPECT_EQ(ReadIniSection(elsewhere, "S"), (Lines{"k=as it stands"}));

    // With the suite folder a missing file falls back to the settings file.
    EXPECT_EQ(ReadIni(paths, "S", "k", "Missing.ini", "", true), "settings");
    WriteBytes(paths.SuiteOptionsFile, "[Pfad1]\nLanguages=English\n");
    EXPECT_EQ(ReadIni(paths, "Pfad1", "Languages", "Opt.ini", "", true), "English");
    WriteIni(paths, "S", "suite", "1", "", true);
    EXPECT_EQ(ReadIni(paths, "S", "suite"), "1");

    WriteIni(paths, "S", "long", std::string(3000, 'w'));
    EXPECT_EQ(ReadIni(paths, "S", "long"), std::string(1023, 'w'));
}

// A list section: a missing file is created as UTF-16 (not for an empty list); an empty list
// leaves the saved one alone; loading appends to what the box holds.
TEST_F(SettingsTest, ListSections) {
    const std::string file = appData_ + "/list.ini";
    std::filesystem::create_directories(appData_);
    WriteIniSection(file, "L", {});
    EXPECT_FALSE(std::filesystem::exists(file));
    WriteIniSection(file, "L", {"/a/", "/b/"});
    EXPECT_EQ(test::WholeFile(file), test::kUtf16Mark + test::Utf16Le(u"[L]\r\n/a/\r\n/b/\r\n"));
    EXPECT_EQ(ReadIniSection(file, "l"), (Lines{"/a/", "/b/"}));

    const SettingsPaths paths = StartedPaths();
    SaveComboToSection(paths, {"/m/1/", "/m/2/"}, "ComboBox1");
    SaveComboToSection(paths, {}, "ComboBox1");
    Lines loaded{"kept"};
    LoadComboFromSection(paths, loaded, "ComboBox1");
    EXPECT_EQ(loaded, (Lines{"kept", "/m/1/", "/m/2/"}));
}

TEST_F(SettingsTest, RecentFoldersKeepTwelveAndIgnoreCase) {
    const SettingsPaths paths = StartedPaths();
    Lines list;
    for (int i = 1; i <= 13; ++i) {
        list = AddRecentFolder(paths, list, "/home/u/Ordner" + std::to_string(i));
    }
    ASSERT_EQ(list.size(), 12u);
    EXPECT_EQ(list.front(), "/home/u/Ordner2/");
    EXPECT_EQ(list.back(), "/home/u/Ordner13/");
    Lines reloaded;
    LoadComboFromSection(paths, reloaded, "ComboBox1");
    EXPECT_EQ(reloaded, list);

    // A folder differing only in case (also beyond ASCII) is not added again.
    list = AddRecentFolder(paths, {}, "/home/u/M\xC3\xBCsik/\xC3\x84rzte");
    list = AddRecentFolder(paths, list, "/HOME/U/M\xC3\x9CSIK/\xC3\xA4RZTE/");
    list = AddRecentFolder(paths, list, "/home/u/M\xC3\xBCsik/\xC3\x84rzte/");
    EXPECT_EQ(list, (Lines{"/home/u/M\xC3\xBCsik/\xC3\x84rzte/"}));
    EXPECT_EQ(ReadIniSection(paths.SettingsFile, "ComboBox1"), list);

    EXPECT_TRUE(ComboContains(list, "/HOME/U/M\xC3\x9CSIK/\xC3\x84RZTE/"));
    EXPECT_FALSE(ComboContains({"/stra\xC3\x9F"
                                "e/"},
                               "/STRASSE/"));  // ß stays ß
}

}  // namespace
}  // namespace plattmix::shell
