// plattmix-cli tray and play over generated discs and nodes that are no drives: the door's
// messages and the bytes played (the real audio output is the cdaudio device's test).
#include <gtest/gtest.h>

#include <sstream>

#include "CliRun.h"
#include "Commands.h"
#include "DiscWriter.h"
#include "Fixtures.h"
#include "TrayCommand.h"
#include "audiocd/CdAudioTestSink.h"
#include "common/ScratchFolder.h"

using namespace plattmix;
using namespace plattmix::cli;

namespace {

using Bytes = std::vector<uint8_t>;
using plattmix::clitest::CliRun;

CliRun Tray(std::vector<std::string> words) {
    words.insert(words.begin(), "tray");
    return plattmix::clitest::RunCli(words);
}

CliRun Play(std::vector<std::string> words, const audiocd::AudioSinkFactory& sinks) {
    words.insert(words.begin(), "play");
    const ParseResult parsed = ParseCommandLine(words);
    EXPECT_TRUE(parsed.args) << parsed.error;
    std::ostringstream out, err;
    const int code = RunPlayCommand(parsed.args.value_or(CliArgs{}), out, err, false, sinks);
    return {code, out.str(), err.str()};
}

// A generated disc's sheet and the bytes of its single audio file.
struct Disc {
    std::string cue;
    Bytes audio;
};
Disc Write(const discgen::DiscSpec& spec) {
    const auto written = discgen::WriteDisc(spec, test::ScratchFolder("cli"));
    EXPECT_TRUE(written.ok()) << written.error;
    if (!written.ok())
        return {};
    const std::string audio = test::WholeFile(written.value->files.back().path);
    return {written.value->cuePath.string(), Bytes(audio.begin(), audio.end())};
}

Bytes Sectors(const Bytes& audio, int32_t from, int32_t to) {
    return Bytes(audio.begin() + from * 2352, audio.begin() + to * 2352);
}

}  // namespace

// The state and the door on real drives, and the text of a door that cannot open, are the drive
// test bed's; here the words and the text of a door that cannot close.
TEST(CliTray, UsageAndADoorThatCannotClose) {
    const CliRun close = Tray({"--drive", "/dev/plattmix-sr9", "close"});
    EXPECT_EQ(close.code, kExitFailed);
    EXPECT_NE(close.err.find("Konnte Laufwerk nicht schließen! Bitte manuell versuchen!"),
              std::string::npos);
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
             {}, {"--drive", "x.cue", "auf"}, {"--drive", "x.cue", "open", "close"}})
        EXPECT_EQ(Tray(words).code, kExitUsage) << words.size();
}

TEST(CliPlay, PlaysTheTracksBytesForTheSecondsAsked) {
    const Disc disc = Write(discgen::AudioThreeTracks());  // tracks at 0, 300, 525; end 900
    auto record = std::make_shared<test::SinkRecord>();
    const CliRun two =
        Play({"--drive", disc.cue, "--track", "2", "--seconds", "2"}, test::TestSinks(record));
    EXPECT_EQ(two.code, kExitDone) << two.err;
    EXPECT_EQ(two.out, "Track 2: 00:02 gespielt.\n");
    EXPECT_TRUE(record->Bytes() == Sectors(disc.audio, 300, 450));

    // Longer than the track: it ends with the track.
    record = std::make_shared<test::SinkRecord>();
    const CliRun whole =
        Play({"--drive", disc.cue, "--track", "3", "--seconds", "60"}, test::TestSinks(record));
    EXPECT_EQ(whole.code, kExitDone) << whole.err;
    EXPECT_EQ(whole.out, "Track 3: 00:05 gespielt.\n");
    EXPECT_TRUE(record->Bytes() == Sectors(disc.audio, 525, 900));
}

TEST(CliPlay, RefusesWhatItCannotPlay) {
    const Disc disc = Write(discgen::DataTrackFirst());
    auto record = std::make_shared<test::SinkRecord>();
    const auto sinks = test::TestSinks(record);
    const CliRun data = Play({"--drive", disc.cue, "--track", "1", "--seconds", "2"}, sinks);
    EXPECT_EQ(data.code, kExitFailed);
    EXPECT_EQ(data.err, "Track 1 ist ein Datentrack.\n");
    for (const auto& words : std::vector<std::vector<std::string>>{
             {"--drive", disc.cue, "--track", "2"},
             {"--drive", disc.cue, "--track", "4", "--seconds", "2"},
             {"--drive", disc.cue, "--track", "2", "--seconds", "zwei"}}) {
        EXPECT_EQ(Play(words, sinks).code, kExitUsage) << words[3];
    }
    EXPECT_EQ(record->Opens(), 0);
}
