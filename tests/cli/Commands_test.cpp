// plattmix-cli's commands, run on generated disc images.
#include "Commands.h"
#include "CliRun.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "DiscWriter.h"
#include "Fixtures.h"
#include "common/JunkBytes.h"
#include "common/ScratchFolder.h"

using namespace plattmix;
using namespace plattmix::cli;

namespace {

using plattmix::clitest::CliRun;
using plattmix::clitest::RunCli;

}  // namespace

TEST(Cli, TocAndDrivesOfAnImage) {
    const auto disc =
        discgen::WriteDisc(discgen::DataTrackFirst(), plattmix::test::ScratchFolder());
    ASSERT_TRUE(disc.ok()) << disc.error;
    const std::string cue = disc.value->cuePath.string();

    const CliRun drives = RunCli({"drives", "--drive", cue});
    EXPECT_EQ(drives.code, kExitDone);
    EXPECT_EQ(drives.out.rfind(cue + ":  ", 0), 0u) << drives.out;

    const CliRun toc = RunCli({"toc", "--drive=" + cue});
    EXPECT_EQ(toc.code, kExitDone) << toc.err;
    std::istringstream lines(toc.out);
    std::string header, first, second;
    std::getline(lines, header);
    std::getline(lines, first);
    std::getline(lines, second);
    EXPECT_EQ(header, "Track  Dauer   Anfang    Ende      Inhalt");
    EXPECT_EQ(first.substr(0, 7), "1      ");
    EXPECT_NE(first.find("00:02:00"), std::string::npos);
    EXPECT_NE(first.find("Daten"), std::string::npos);
    EXPECT_NE(second.find("Audio"), std::string::npos);
}

TEST(Cli, TocOfAnEnhancedDiscEndsTheAudioAtItsSessionsLeadOut) {
    const auto disc = discgen::WriteDisc(discgen::Enhanced(), plattmix::test::ScratchFolder());
    ASSERT_TRUE(disc.ok()) << disc.error;
    const CliRun toc = RunCli({"toc", "--drive", disc.value->cuePath.string()});
    EXPECT_EQ(toc.code, kExitDone) << toc.err;
    // Track 2 runs from LBA 300 to the audio session's lead-out at 525 (00:09:00).
    EXPECT_NE(toc.out.find("\n2      00:03   00:06:00  00:09:00  Audio\n"), std::string::npos)
        << toc.out;
}

TEST(Cli, BadUsageAndBadInput) {
    EXPECT_EQ(RunCli({}).code, kExitUsage);
    EXPECT_EQ(RunCli({"rip-everything"}).code, kExitUsage);
    EXPECT_EQ(RunCli({"toc", "--speed", "4"}).code, kExitUsage);
    EXPECT_EQ(RunCli({"toc", "--drive"}).code, kExitUsage);
    EXPECT_EQ(RunCli({"toc", "extra"}).code, kExitUsage);

    // A broken sheet: the job fails with the sheet's own message naming file and line.
    const auto folder = plattmix::test::ScratchFolder();
    std::ofstream(folder / "kaputt.cue") << "FILE \"a.bin\" BINARY\n  TRACK 01 AUDIO\n  INDEX x\n";
    const CliRun broken = RunCli({"toc", "--drive", (folder / "kaputt.cue").string()});
    EXPECT_EQ(broken.code, kExitFailed);
    EXPECT_NE(broken.err.find("kaputt.cue"), std::string::npos) << broken.err;

    // A node that is not an optical drive.
    const CliRun node = RunCli({"drives", "--drive", "/dev/sr99"});
    EXPECT_EQ(node.code, kExitFailed);
    EXPECT_NE(node.err.find("/dev/sr99"), std::string::npos);
}

TEST(Cli, ImagesOfferedToTheWindowAreKeptInTheSettings) {
    const auto folder = plattmix::test::ScratchFolder();
    ::setenv("APPDATA", (folder / "appdata").c_str(), 1);
    const auto disc = discgen::WriteDisc(discgen::AudioThreeTracks(), folder / "disc");
    ASSERT_TRUE(disc.ok()) << disc.error;
    const std::string cue = disc.value->cuePath.string();

    EXPECT_EQ(RunCli({"image", "add", cue}).code, kExitDone);
    EXPECT_EQ(RunCli({"image", "add", cue}).code, kExitDone);  // not listed twice
    EXPECT_EQ(RunCli({"image", "list"}).out, cue + "\n");

    // An image the drive cannot load is refused with its own message; the list stays.
    std::ofstream(folder / "kaputt.cue") << "TRACK 01 AUDIO\n";
    const CliRun broken = RunCli({"image", "add", (folder / "kaputt.cue").string()});
    EXPECT_EQ(broken.code, kExitFailed);
    EXPECT_NE(broken.err.find("kaputt.cue"), std::string::npos);

    EXPECT_EQ(RunCli({"image", "remove", "/nicht/da.cue"}).code, kExitFailed);
    EXPECT_EQ(RunCli({"image", "remove", cue}).code, kExitDone);
    EXPECT_EQ(RunCli({"image", "list"}).out, "");
    EXPECT_EQ(RunCli({"image", "frobnicate"}).code, kExitUsage);
    ::unsetenv("APPDATA");
}

// A settings file the program cannot make sense of is never rewritten by a command that only
// reads it (nor by a removal that finds nothing to remove).
TEST(Cli, DamagedSettingsAreLeftAsTheyAre) {
    using namespace std::string_literals;
    namespace fs = std::filesystem;
    const auto folder = plattmix::test::ScratchFolder();
    ::setenv("APPDATA", (folder / "appdata").c_str(), 1);
    const auto settings = folder / "appdata" / "Trovalis" / "Diskolo.ini";
    fs::create_directories(settings.parent_path());
    const std::string junk = test::JunkBytes(64 * 1024);
    const std::string damaged[] = {
        junk,
        "\xFF\xFE[\0A\0b\0b\0i\0l\0d\0e\0r\0\r\0\n\0/\0x\0"s + "\x41",  // odd length, no "]"
        "[Abbilder\n/a.cue\n" + std::string(1 << 20, 'x') + "\n",       // a megabyte line
    };
    for (const std::string& bytes : damaged) {
        std::ofstream(settings, std::ios::binary | std::ios::trunc) << bytes;
        for (const std::vector<std::string>& words : {std::vector<std::string>{"image", "list"},
                                                      {"image", "remove", "/nicht/da.cue"},
                                                      {"drives"}}) {
            SCOPED_TRACE(words[0] + " " + words[1 % words.size()]);
            RunCli(words);
            std::ifstream in(settings, std::ios::binary);
            EXPECT_TRUE(std::string(std::istreambuf_iterator<char>(in), {}) == bytes);
        }
    }
    ::unsetenv("APPDATA");
}
