// plattmix-cli rip and toc with --musicbrainz against a local server standing in for
// MusicBrainz: the server's titles in the files' tags and beside the rows, the CD-Text and one
// line when there is no server, no request at all without the option.
#include <gtest/gtest.h>

#include <cstdlib>

#include "CliRun.h"
#include "DiscId.h"
#include "DiscWriter.h"
#include "Fixtures.h"
#include "MediaProbe.h"
#include "common/LocalHttpServer.h"
#include "common/MusicBrainzReply.h"
#include "common/ScratchFolder.h"
#include "imagedrive/clsImageDrive.h"
#include "modSettings.h"

using namespace plattmix;
using plattmix::clitest::RunCommandWords;
namespace fs = std::filesystem;

namespace {

class CliMusicBrainz : public ::testing::Test {
  protected:
    void SetUp() override {
        ::setenv("APPDATA", (folder_ / "appdata").c_str(), 1);
        const auto disc = discgen::WriteDisc(discgen::AudioThreeTracks(), folder_ / "disc");
        ASSERT_TRUE(disc.ok()) << disc.error;
        cue_ = disc.value->cuePath.string();
        scsi::imagedrive::clsImageDrive drive;
        const auto handle = drive.AddDrive(cue_);
        ASSERT_TRUE(handle.ok()) << handle.Error();
        discId_ = audiocd::MusicBrainzDiscId(
            *audiocd::DiscIdTocOf(audiocd::ReadTrackList(drive, handle.Value())));
        UseServer(server_.Url());
    }
    void TearDown() override { ::unsetenv("APPDATA"); }

    static void UseServer(const std::string& url) {
        const auto paths = shell::ComputeSettingsPaths();
        shell::EnsureSettingsFile(paths);
        shell::WriteIni(paths, "Diskolo", "MusicBrainzServer", url);
    }
    void Knows(const std::vector<test::FakeRelease>& releases) {
        server_.Set(test::MusicBrainzPath(discId_),
                    {200, test::MusicBrainzReply(discId_, releases)});
    }
    clitest::CliRun Rip(std::vector<std::string> extra) {
        std::vector<std::string> words = {
            "--drive",  cue_,   "--out",    (folder_ / "out").string(),
            "--format", "flac", "--tracks", "1,2"};
        words.insert(words.end(), extra.begin(), extra.end());
        return RunCommandWords("rip", words);
    }
    std::map<std::string, std::string> TagsOf(const std::string& name) {
        const auto probed = encode::ProbeAudioFile((folder_ / "out" / name).string());
        return probed ? probed->tags : std::map<std::string, std::string>{};
    }

    const fs::path folder_ = test::ScratchFolder("cli");
    test::LocalHttpServer server_;
    std::string cue_;
    std::string discId_;
};

const test::FakeRelease kAlbum{"rel-1", "Großes Album", "Kapelle", "1999-02-03", {"Eins", "Zwei"}};

}  // namespace

TEST_F(CliMusicBrainz, TheServersTitlesGoIntoTheTags) {
    Knows({kAlbum});
    const auto run = Rip({"--musicbrainz"});
    ASSERT_EQ(run.code, cli::kExitDone) << run.err;
    EXPECT_NE(run.out.find("MusicBrainz: Großes Album – Kapelle\n"), std::string::npos) << run.out;
    auto tags = TagsOf("Track02.flac");
    EXPECT_EQ(tags["title"], "Zwei");
    EXPECT_EQ(tags["artist"], "Kapelle feat. Gast");
    EXPECT_EQ(tags["album"], "Großes Album");
    EXPECT_EQ(tags["album_artist"], "Kapelle");
    EXPECT_EQ(tags["date"], "1999-02-03");
    EXPECT_EQ(tags["track"], "2/3");
    EXPECT_EQ(tags["disc"], "1/1");
    EXPECT_EQ(tags["musicbrainz_albumid"], "rel-1");
    EXPECT_EQ(tags["musicbrainz_trackid"], "rec-rel-1-2");
    ASSERT_EQ(server_.Requests().size(), 1u);
}

TEST_F(CliMusicBrainz, ReleaseChoosesAmongSeveralAndTocShowsTheTitles) {
    Knows({kAlbum, {"rel-2", "Neuauflage", "Kapelle", "2005", {"Eins (remastered)"}}});
    const auto toc = RunCommandWords("toc", {"--drive", cue_, "--musicbrainz", "--release", "2"});
    ASSERT_EQ(toc.code, cli::kExitDone) << toc.err;
    EXPECT_NE(toc.out.find("MusicBrainz: Neuauflage – Kapelle\n"), std::string::npos) << toc.out;
    EXPECT_NE(toc.out.find("  1: Großes Album – Kapelle (1999-02-03, rel-1)\n"), std::string::npos);
    EXPECT_NE(toc.out.find("Audio   Eins (remastered)\n"), std::string::npos) << toc.out;

    EXPECT_EQ(RunCommandWords("toc", {"--drive", cue_, "--musicbrainz", "--release", "3"}).code,
              cli::kExitUsage);
    EXPECT_EQ(Rip({"--release", "2"}).code, cli::kExitUsage);  // only with --musicbrainz
}

TEST_F(CliMusicBrainz, WithoutAServerTheCdTextStaysAndOneLineSaysSo) {
    {
        test::LocalHttpServer gone;
        UseServer(gone.Url());
    }
    const auto run = Rip({"--musicbrainz"});
    ASSERT_EQ(run.code, cli::kExitDone) << run.err;
    EXPECT_NE(run.out.find("Titelsuche bei MusicBrainz fehlgeschlagen: "), std::string::npos)
        << run.out;
    EXPECT_EQ(TagsOf("Track01.flac")["title"], "Spur 01");
}

TEST_F(CliMusicBrainz, OffByDefaultAsksNobody) {
    Knows({kAlbum});
    const auto run = Rip({});
    ASSERT_EQ(run.code, cli::kExitDone) << run.err;
    EXPECT_EQ(TagsOf("Track01.flac")["title"], "Spur 01");
    EXPECT_EQ(RunCommandWords("toc", {"--drive", cue_}).out.find("Spur"), std::string::npos);
    EXPECT_TRUE(server_.Requests().empty());
}
