// plattmix-cli rip and toc over a generated disc: the option words and their errors, the lines
// the command prints, and the online options against a local server standing in for MusicBrainz
// and AccurateRip (no request without them).
#include <gtest/gtest.h>

#include <filesystem>

#include "AccurateRipFile.h"
#include "AccurateRipIds.h"
#include "CliRun.h"
#include "Commands.h"
#include "DiscId.h"
#include "DiscWriter.h"
#include "DriveList.h"
#include "Fixtures.h"
#include "MediaProbe.h"
#include "RipCommand.h"
#include "common/LocalHttpServer.h"
#include "common/MusicBrainzReply.h"
#include "common/ScratchFolder.h"
#include "imagedrive/clsImageDrive.h"
#include "modSettings.h"

using namespace plattmix;
using namespace plattmix::cli;
using plattmix::clitest::CliRun;
using plattmix::clitest::Has;
using plattmix::clitest::RunCli;
namespace fs = std::filesystem;

namespace {

class CliRip : public ::testing::Test {
  protected:
    void SetUp() override {
        auto written = discgen::WriteDisc(discgen::AudioThreeTracks(), folder / "disc");
        ASSERT_TRUE(written.ok()) << written.error;
        disc = std::move(*written.value);
        cue = disc.cuePath.string();
        shell::EnsureSettingsFile(settings);
    }

    CliRun Rip(const std::string& out, std::vector<std::string> extra, bool terminal = false) {
        std::vector<std::string> words = {"rip", "--drive", cue, "--out", (folder / out).string()};
        words.insert(words.end(), extra.begin(), extra.end());
        return RunCli(words, terminal);
    }

    const fs::path folder = test::ScratchFolder("cli");
    clitest::ScopedEnv appData{"APPDATA", (folder / "appdata").string()};
    const shell::SettingsPaths settings = shell::ComputeSettingsPaths();
    test::LocalHttpServer server;
    discgen::DiscDescription disc;
    std::string cue;
};

}  // namespace

TEST(CliRipTracks, ListsAreRowPositions) {
    EXPECT_EQ(ParseTrackList("1,3-5", 6), (std::vector<int>{1, 3, 4, 5}));
    EXPECT_EQ(ParseTrackList("2,2,1", 3), (std::vector<int>{1, 2}));
    for (const char* bad : {"", "0", "7", "3-1", "1,", "a", "1-", "-2", "1..3"}) {
        EXPECT_FALSE(ParseTrackList(bad, 6)) << bad;
    }
}

// The naming options, the bar on a terminal, and no server asked without the online options.
TEST_F(CliRip, ChosenTrackUnderTheChosenNameWithABar) {
    shell::WriteIni(settings, "Diskolo", "MusicBrainzServer", server.Url());
    shell::WriteIni(settings, "Diskolo", "AccurateRip", server.Url());
    const CliRun byTrack =
        Rip("", {"--tracks", "3", "--prefix", "Lied", "--number", "track", "--number-first"}, true);
    EXPECT_EQ(byTrack.code, kExitDone) << byTrack.err;
    EXPECT_TRUE(fs::exists(folder / "03Lied.wav"));
    EXPECT_TRUE(Has(byTrack.out, "\r["));
    EXPECT_TRUE(server.Requests().empty());
}

TEST_F(CliRip, BadOptionsAreUsageErrors) {
    for (const std::vector<std::string>& extra :
         std::vector<std::vector<std::string>>{{"--format", "ogg"},
                                               {"--number", "odd"},
                                               {"--tracks", "4"},
                                               {"--release", "2"},    // only with --musicbrainz
                                               {"--offset", "5"}}) {  // only with --secure
        EXPECT_EQ(Rip("x", extra).code, kExitUsage) << extra[0];
    }
    EXPECT_EQ(RunCli({"rip", "--drive", cue}).code, kExitUsage);  // no --out
    EXPECT_FALSE(fs::exists(folder / "x"));

    // Data tracks are imaged, not ripped: named, refused; unnamed, left out. Outside a terminal
    // each track is a line, without a bar.
    const auto mixed = discgen::WriteDisc(discgen::DataTrackFirst(), folder / "mixed");
    ASSERT_TRUE(mixed.ok()) << mixed.error;
    cue = mixed.value->cuePath.string();
    EXPECT_EQ(Rip("neu/ordner", {"--tracks", "1"}).code, kExitUsage);
    const CliRun audioOnly = Rip("neu/ordner", {});
    EXPECT_EQ(audioOnly.code, kExitDone) << audioOnly.err;
    EXPECT_TRUE(fs::exists(folder / "neu/ordner/Track01.wav"));  // the first audio track
    EXPECT_TRUE(Has(audioOnly.out, "Track01.wav -->Fertig\n")) << audioOnly.out;
    EXPECT_TRUE(Has(audioOnly.out, "Track 02: ")) << audioOnly.out;
    EXPECT_FALSE(Has(audioOnly.out, "Track 01:") || Has(audioOnly.out, "\r")) << audioOnly.out;
}

TEST_F(CliRip, MusicBrainzTitlesAndReleases) {
    scsi::imagedrive::clsImageDrive drive;
    const auto handle = drive.AddDrive(cue);
    ASSERT_TRUE(handle.ok()) << handle.Error();
    const std::string id = audiocd::MusicBrainzDiscId(
        *audiocd::DiscIdTocOf(audiocd::ReadTrackList(drive, handle.Value())));
    server.Set(test::MusicBrainzPath(id),
               {200, test::MusicBrainzReply(
                         id, {{"rel-1", "Großes Album", "Kapelle", "1999-02-03", {"Eins", "Zwei"}},
                              {"rel-2", "Neuauflage", "Kapelle", "2005", {"Eins (neu)"}}})});
    shell::WriteIni(settings, "Diskolo", "MusicBrainzServer", server.Url());

    const CliRun run = Rip("mb", {"--tracks", "2", "--format", "flac", "--musicbrainz"});
    ASSERT_EQ(run.code, kExitDone) << run.err;
    EXPECT_TRUE(Has(run.out, "MusicBrainz: Großes Album – Kapelle\n")) << run.out;
    const auto probed = encode::ProbeAudioFile((folder / "mb/Track01.flac").string());
    ASSERT_TRUE(probed);
    EXPECT_EQ(probed->tags.at("title"), "Zwei");

    const CliRun toc = RunCli({"toc", "--drive", cue, "--musicbrainz", "--release", "2"});
    ASSERT_EQ(toc.code, kExitDone) << toc.err;
    EXPECT_TRUE(Has(toc.out, "  1: Großes Album – Kapelle (1999-02-03, rel-1)\n")) << toc.out;
    EXPECT_TRUE(Has(toc.out, "Audio   Eins (neu)\n")) << toc.out;
    EXPECT_EQ(RunCli({"toc", "--drive", cue, "--musicbrainz", "--release", "3"}).code, kExitUsage);
}

// The verdict beside each track with the drive's offset from the settings and --offset over it;
// the log beside the files.
TEST_F(CliRip, SecureRipAgainstTheAccurateRipRecord) {
    const auto response = discgen::AccurateRipResponseOf(disc, 12);
    ASSERT_TRUE(response.ok()) << response.error;
    server.Set("/" + audiocd::AccurateRipRecordPath(response.value->ids),
               {200, discgen::MakeAccurateRipFile({&*response.value, 1})});
    shell::WriteIni(settings, "Diskolo", "AccurateRip", server.Url());
    scsi::imagedrive::clsImageDrive drive;
    const auto handle = drive.AddDrive(cue);
    ASSERT_TRUE(handle.ok()) << handle.Error();
    shell::WriteIni(settings, "Laufwerksversatz",
                    audiocd::DriveIdentification(drive, handle.Value()), "+30");

    const CliRun shifted = Rip("versetzt", {"--format", "flac", "--secure"});
    EXPECT_TRUE(Has(shifted.out, "Track01.flac -->Fertig (AccurateRip: abweichend)"))
        << shifted.out << shifted.err;
    const CliRun exact = Rip("genau", {"--format", "flac", "--secure", "--offset", "0"});
    EXPECT_EQ(exact.code, kExitDone) << exact.out << exact.err;
    EXPECT_TRUE(Has(exact.out, "Track03.flac -->Fertig (AccurateRip: übereinstimmend, 12)"))
        << exact.out;
    EXPECT_TRUE(fs::exists(folder / "genau" / "Rip.log"));
}
