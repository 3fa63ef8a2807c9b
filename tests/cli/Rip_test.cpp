// plattmix-cli rip over generated discs: the files, their names, the options' errors.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "CliRun.h"
#include "Commands.h"
#include "DiscWriter.h"
#include "Fixtures.h"
#include "MediaProbe.h"
#include "ProgressBar.h"
#include "RipCommand.h"
#include "common/ScratchFolder.h"

using namespace plattmix;
using namespace plattmix::cli;
namespace fs = std::filesystem;

namespace {

using Ripped = plattmix::clitest::CliRun;

Ripped Rip(std::vector<std::string> words, bool terminal = false) {
    return plattmix::clitest::RunCommandWords("rip", std::move(words), terminal);
}

}  // namespace

TEST(CliRip, TrackListsAreRowPositions) {
    EXPECT_EQ(ParseTrackList("1,3-5", 6), (std::vector<int>{1, 3, 4, 5}));
    EXPECT_EQ(ParseTrackList("2,2,1", 3), (std::vector<int>{1, 2}));
    for (const char* bad : {"", "0", "7", "3-1", "1,", "a", "1-", "-2", "1..3"}) {
        EXPECT_FALSE(ParseTrackList(bad, 6)) << bad;
    }
}

TEST(CliRip, WritesTheChosenTracksUnderTheChosenNames) {
    const auto folder = test::ScratchFolder("cli");
    const auto disc = discgen::WriteDisc(discgen::AudioThreeTracks(), folder / "disc");
    ASSERT_TRUE(disc.ok()) << disc.error;
    const std::string cue = disc.value->cuePath.string();
    const auto& tracks = disc.value->tracks;

    const Ripped running =
        Rip({"--drive", cue, "--tracks", "1,3", "--out", (folder / "neu" / "ordner").string()});
    EXPECT_EQ(running.code, kExitDone) << running.err;
    // Running numbers 01 and 02. A track ends one sector before the next one starts; the last
    // track also loses the two seconds before the lead-out.
    const auto sizeOf = [&](const fs::path& p) { return fs::exists(p) ? fs::file_size(p) : 0; };
    EXPECT_EQ(sizeOf(folder / "neu/ordner/Track01.wav"),
              44u + static_cast<uintmax_t>(tracks[0].lengthSectors - 1) * 2352u);
    EXPECT_EQ(sizeOf(folder / "neu/ordner/Track02.wav"),
              44u + static_cast<uintmax_t>(tracks[2].lengthSectors - 1 - 150) * 2352u);
    EXPECT_NE(running.out.find("Track01.wav -->Fertig"), std::string::npos) << running.out;

    const Ripped byTrack = Rip({"--drive", cue, "--tracks", "3", "--out", folder.string(),
                                "--prefix", "Lied", "--number", "track", "--number-first"});
    EXPECT_EQ(byTrack.code, kExitDone) << byTrack.err;
    EXPECT_TRUE(fs::exists(folder / "03Lied.wav"));
}

TEST(CliRip, ProgressIsABarOnATerminalAndLinesOtherwise) {
    const auto folder = test::ScratchFolder("cli");
    const auto disc = discgen::WriteDisc(discgen::TinyTracks(), folder / "disc");
    ASSERT_TRUE(disc.ok()) << disc.error;
    const Ripped terminal =
        Rip({"--drive", disc.value->cuePath.string(), "--out", folder.string()}, true);
    EXPECT_NE(terminal.out.find("\r["), std::string::npos);
    const Ripped plain = Rip({"--drive", disc.value->cuePath.string(), "--out", folder.string()});
    EXPECT_EQ(plain.out.find('\r'), std::string::npos);
    EXPECT_NE(plain.out.find("Track 01: "), std::string::npos) << plain.out;
}

TEST(CliRip, BadOptionsAreUsageErrors) {
    const auto folder = test::ScratchFolder("cli");
    const auto disc = discgen::WriteDisc(discgen::AudioThreeTracks(), folder / "disc");
    ASSERT_TRUE(disc.ok()) << disc.error;
    const std::string cue = disc.value->cuePath.string();
    EXPECT_EQ(Rip({"--drive", cue}).code, kExitUsage);  // no --out
    EXPECT_EQ(Rip({"--drive", cue, "--out", "x", "--format", "ogg"}).code, kExitUsage);
    EXPECT_EQ(Rip({"--drive", cue, "--out", "x", "--number", "odd"}).code, kExitUsage);
    EXPECT_EQ(Rip({"--drive", cue, "--out", folder.string(), "--tracks", "4"}).code, kExitUsage);
    EXPECT_FALSE(fs::exists("x"));

    // Data tracks are imaged, not ripped: named, refused; unnamed, left out.
    const auto mixed = discgen::WriteDisc(discgen::DataTrackFirst(), folder / "mixed");
    ASSERT_TRUE(mixed.ok()) << mixed.error;
    const std::string mixedCue = mixed.value->cuePath.string();
    EXPECT_EQ(Rip({"--drive", mixedCue, "--out", folder.string(), "--tracks", "1"}).code,
              kExitUsage);
    const Ripped audioOnly = Rip({"--drive", mixedCue, "--out", (folder / "m").string()});
    EXPECT_EQ(audioOnly.code, kExitDone) << audioOnly.err;
    EXPECT_TRUE(fs::exists(folder / "m" / "Track01.wav"));  // the first audio track, running 01
    EXPECT_EQ(audioOnly.out.find("Track 01:"), std::string::npos) << audioOnly.out;
}

TEST(CliRip, OtherFormatsAreEncodedWithTheDiscsTags) {
    const auto folder = test::ScratchFolder("cli");
    const auto disc = discgen::WriteDisc(discgen::AudioThreeTracks(), folder / "disc");
    ASSERT_TRUE(disc.ok()) << disc.error;
    const std::string cue = disc.value->cuePath.string();
    for (const char* format : {"mp3", "flac"}) {
        SCOPED_TRACE(format);
        const Ripped ripped =
            Rip({"--drive", cue, "--tracks", "2", "--out", folder.string(), "--format", format});
        EXPECT_EQ(ripped.code, kExitDone) << ripped.err;
        const auto probed =
            encode::ProbeAudioFile((folder / ("Track01." + std::string(format))).string());
        ASSERT_TRUE(probed);
        EXPECT_EQ(probed->codec, format);
        EXPECT_EQ(probed->tags.at("title"), disc.value->tracks[1].title);
        EXPECT_EQ(probed->tags.at("track"), "2/3");
    }
}
