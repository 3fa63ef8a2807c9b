// plattmix-cli's commands, run on generated disc images.
#include "Commands.h"
#include "CliRun.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "DiscWriter.h"
#include "Fixtures.h"
#include "common/JunkBytes.h"
#include "common/ScratchFolder.h"

using namespace plattmix;
using namespace plattmix::cli;
using plattmix::clitest::CliRun;
using plattmix::clitest::RunCli;

// The enhanced disc's audio ends at its session's lead-out, not at the data session's start.
TEST(Cli, DrivesAndTocOfAnImage) {
    const auto disc = discgen::WriteDisc(discgen::Enhanced(), plattmix::test::ScratchFolder());
    ASSERT_TRUE(disc.ok()) << disc.error;
    const std::string cue = disc.value->cuePath.string();
    const CliRun drives = RunCli({"drives", "--drive", cue});
    EXPECT_EQ(drives.code, kExitDone);
    EXPECT_EQ(drives.out.rfind(cue + ":  ", 0), 0u) << drives.out;

    const CliRun toc = RunCli({"toc", "--drive=" + cue});
    EXPECT_EQ(toc.code, kExitDone) << toc.err;
    EXPECT_EQ(toc.out.rfind("Track  Dauer   Anfang    Ende      Inhalt\n", 0), 0u) << toc.out;
    // Track 2 runs from LBA 300 to the audio session's lead-out at 525 (00:09:00).
    EXPECT_NE(toc.out.find("\n2      00:03   00:06:00  00:09:00  Audio\n"), std::string::npos)
        << toc.out;
}

TEST(Cli, BadUsageAndBadInput) {
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
             {}, {"rip-everything"}, {"toc", "--speed", "4"}, {"toc", "--drive"}, {"toc", "x"}})
        EXPECT_EQ(RunCli(words).code, kExitUsage) << words.size();

    // A broken sheet: the job fails with the sheet's own message naming file and line.
    const auto folder = plattmix::test::ScratchFolder();
    std::ofstream(folder / "kaputt.cue") << "FILE \"a.bin\" BINARY\n  TRACK 01 AUDIO\n  INDEX x\n";
    const CliRun broken = RunCli({"toc", "--drive", (folder / "kaputt.cue").string()});
    EXPECT_EQ(broken.code, kExitFailed);
    EXPECT_NE(broken.err.find("kaputt.cue"), std::string::npos) << broken.err;

    EXPECT_EQ(RunCli({"drives", "--drive", "/dev/sr99"}).code, kExitFailed);  // no drive there
}

TEST(Cli, ImagesOfferedToTheWindowAreKeptInTheSettings) {
    const auto folder = plattmix::test::ScratchFolder();
    const plattmix::clitest::ScopedEnv appData("APPDATA", (folder / "appdata").string());
    const auto disc = discgen::WriteDisc(discgen::AudioThreeTracks(), folder / "disc");
    ASSERT_TRUE(disc.ok()) << disc.error;
    const std::string cue = disc.value->cuePath.string();

    EXPECT_EQ(RunCli({"image", "add", cue}).code, kExitDone);
    EXPECT_EQ(RunCli({"image", "add", cue}).code, kExitDone);  // not listed twice
    // An image the drive cannot load is refused; the list stays.
    std::ofstream(folder / "kaputt.cue") << "TRACK 01 AUDIO\n";
    EXPECT_EQ(RunCli({"image", "add", (folder / "kaputt.cue").string()}).code, kExitFailed);
    EXPECT_EQ(RunCli({"image", "list"}).out, cue + "\n");

    EXPECT_EQ(RunCli({"image", "remove", "/nicht/da.cue"}).code, kExitFailed);
    EXPECT_EQ(RunCli({"image", "remove", cue}).code, kExitDone);
    EXPECT_EQ(RunCli({"image", "list"}).out, "");
    EXPECT_EQ(RunCli({"image", "frobnicate"}).code, kExitUsage);
}

// A settings file the program cannot make sense of is never rewritten by a command that only
// reads it (nor by a removal that finds nothing to remove).
TEST(Cli, DamagedSettingsAreLeftAsTheyAre) {
    namespace fs = std::filesystem;
    const auto folder = plattmix::test::ScratchFolder();
    const plattmix::clitest::ScopedEnv appData("APPDATA", (folder / "appdata").string());
    const auto settings = folder / "appdata" / "Trovalis" / "Diskolo.ini";
    fs::create_directories(settings.parent_path());
    // Kinds of damage the settings reader meets are its own tests; here one kind is enough.
    const std::string bytes = test::JunkBytes(64 * 1024);
    std::ofstream(settings, std::ios::binary) << bytes;
    for (const std::vector<std::string>& words : {std::vector<std::string>{"image", "list"},
                                                  {"image", "remove", "/nicht/da.cue"},
                                                  {"drives"}}) {
        SCOPED_TRACE(words[0] + " " + words[1 % words.size()]);
        RunCli(words);
        EXPECT_TRUE(test::WholeFile(settings) == bytes);
    }
}
