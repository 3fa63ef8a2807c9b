// Ripping to a compressed format through the whole job with the real encoder: the files written
// while the drive reads are byte for byte those of a track read whole into memory and then
// converted; a read error or a stop while encoders still run leaves the rows and files right.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "ConvertAudioStream.h"
#include "DiscWriter.h"
#include "Fixtures.h"
#include "OutputFormats.h"
#include "RipEncoder.h"
#include "RipJob.h"
#include "RipTrack.h"
#include "SecureRipJob.h"
#include "WavHeader.h"
#include "common/ScratchFolder.h"
#include "common/SmallDisk.h"
#include "imagedrive/clsImageDrive.h"
#include "modMMC.h"

using namespace plattmix;
namespace fs = std::filesystem;

namespace {

using RowEvent = std::pair<size_t, std::string>;
constexpr int kMp2 = 2;

std::vector<char> Bytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// A disc in the image drive, every row checked, the job's row texts and warnings as they came,
// each noted with the thread that reported it.
struct StreamRig {
    fs::path folder;
    int trackCount = 0;
    scsi::imagedrive::clsImageDrive drive;
    audiocd::RipJobParams params;
    std::vector<RowEvent> events;
    std::vector<std::string> warnings;
    bool otherThread = false;
    audiocd::JobHooks hooks;
    audiocd::EncodeFn encode;  // the real encoder unless a test sets one

    void Load(const discgen::DiscSpec& spec, int formatIndex, const std::string& name) {
        folder = test::FreshFolder("ripstream", name);
        const auto written = discgen::WriteDisc(spec, folder / "disc");
        ASSERT_TRUE(written.ok()) << written.error;
        const auto handle = drive.AddDrive(written.value->cuePath.string());
        ASSERT_TRUE(handle.ok()) << handle.Error();
        trackCount = static_cast<int>(spec.tracks.size());
        fs::create_directories(folder / "job");
        params.handle = handle.Value();
        params.targetFolder = (folder / "job").string() + "/";
        params.namePrefix = "Track";
        params.formatIndex = formatIndex;
        for (int number = 1; number <= trackCount; ++number)
            params.rows.push_back({number, true});
        hooks.warn = [this](const std::string& text) { warnings.push_back(text); };
    }
    audiocd::RipJobResult Run() {
        const auto caller = std::this_thread::get_id();
        const auto rowText = [this, caller](size_t row, const std::string& text) {
            otherThread = otherThread || std::this_thread::get_id() != caller;
            events.emplace_back(row, text);
        };
        return audiocd::RunRipJob(drive, params, hooks, rowText,
                                  encode ? encode : encode::MakeRipEncoder(params, std::nullopt));
    }
    // The results in the order they came, without the "Schreibe...".
    std::vector<RowEvent> Results() const {
        std::vector<RowEvent> results;
        std::copy_if(events.begin(), events.end(), std::back_inserter(results),
                     [](const RowEvent& e) { return e.second != audiocd::kTextWriting; });
        return results;
    }
    std::vector<std::string> Files() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder / "job"))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }
    // The track read whole into memory and converted: what the job's file must hold.
    std::vector<char> Reference(int number) {
        const auto image =
            audiocd::RipTrackToMemory(drive, params.handle, static_cast<int16_t>(number), {});
        if (!image)
            return {};
        encode::AudioTags tags;
        tags.track = number;
        tags.trackCount = trackCount;
        const fs::path base = folder / ("Reference" + std::to_string(number));
        if (!encode::ConvertAudioStream(*image, "audio/wav", base.string(), params.formatIndex,
                                        tags, {}))
            return {};
        return Bytes(base.string() + std::string(encode::FormatAt(params.formatIndex).extension));
    }
    std::vector<char> Written(const std::string& name) const {
        return Bytes(folder / "job" / name);
    }
};

// Three tracks, each longer than the encoder's queue holds.
discgen::DiscSpec ThreeLongTracks() {
    discgen::DiscSpec spec = discgen::AudioThreeTracks();
    for (auto& track : spec.tracks)
        track.sectors = 3000;
    return spec;
}

class RipStream : public ::testing::TestWithParam<int> {};

}  // namespace

TEST_P(RipStream, FilesEqualThoseOfTheWholeImage) {
    StreamRig rig;
    discgen::DiscSpec spec = discgen::AudioThreeTracks();
    spec.tracks.push_back(discgen::ExactBlockMultiple().tracks.front());
    rig.Load(spec, GetParam(), std::to_string(GetParam()));
    ASSERT_FALSE(rig.Run().aborted);
    EXPECT_FALSE(rig.otherThread);
    const std::string extension(encode::FormatAt(GetParam()).extension);
    for (int number = 1; number <= rig.trackCount; ++number) {
        SCOPED_TRACE(number);
        const auto expected = rig.Reference(number);
        ASSERT_FALSE(expected.empty());
        EXPECT_TRUE(rig.Written("Track" + audiocd::NumberText(number) + extension) == expected);
    }
}

INSTANTIATE_TEST_SUITE_P(EveryFormat, RipStream, ::testing::Values(0, 1, 2, 3, 4, 5));

TEST(RipStreamJob, ReadErrorDropsOnlyThatTracksFileAndResultsComeInTrackOrder) {
    StreamRig rig;
    rig.Load(ThreeLongTracks(), kMp2, "readerror");
    rig.drive.AddReadError(rig.params.handle, 4500, 1);  // inside the second track
    EXPECT_FALSE(rig.Run().aborted);
    EXPECT_FALSE(rig.otherThread);
    EXPECT_EQ(rig.warnings, std::vector<std::string>{"Lesefehler in Range 4485 - 4512."});
    const std::vector<RowEvent> results = {{0, "Track01.mp2 -->Fertig"},
                                           {2, "Track03.mp2 -->Fertig"}};
    EXPECT_EQ(rig.Results(), results);
    EXPECT_EQ(rig.Files(), (std::vector<std::string>{"Track01.mp2", "Track03.mp2"}));
    EXPECT_TRUE(rig.Written("Track03.mp2") == rig.Reference(3));
}

// A disk that fills up while the first track is encoded: that row fails and its partial file
// is removed; the job goes on with the next track (whose file fails the same way).
TEST(RipStreamJob, FullDiskFailsTheRowAndLeavesNoPartialFile) {
    StreamRig rig;
    rig.Load(ThreeLongTracks(), kMp2, "fulldisk");
    rig.params.rows.resize(2);
    EXPECT_TRUE(test::WithFileSizeLimit(64 * 1024, [&rig] {
        const bool ended = !rig.Run().aborted;
        const std::vector<RowEvent> results = {{0, audiocd::kTextTrackFailed},
                                               {1, audiocd::kTextTrackFailed}};
        return ended && rig.Results() == results && rig.Files().empty();
    }));
}

// The real encoder, noting when the first track's stream is complete.
struct FirstTrackWatch final : audiocd::TrackEncode {
    std::unique_ptr<audiocd::TrackEncode> inner;
    bool& read;
    FirstTrackWatch(std::unique_ptr<audiocd::TrackEncode> encoder, bool& flag)
        : inner(std::move(encoder)), read(flag) {}
    audiocd::ByteQueue::PushResult Push(std::span<const uint8_t> bytes,
                                        std::chrono::milliseconds wait) override {
        return inner->Push(bytes, wait);
    }
    size_t Room() override { return inner->Room(); }
    bool WaitForRoom(size_t bytes, std::chrono::milliseconds wait) override {
        return inner->WaitForRoom(bytes, wait);
    }
    void Finish() override {
        read = true;
        inner->Finish();
    }
    void Cancel() override { inner->Cancel(); }
    bool WaitFor(std::chrono::milliseconds wait) override { return inner->WaitFor(wait); }
    std::string Result() override { return inner->Result(); }
};

// The drive reads faster than the encoder, so tracks are read side by side: the stop, once the
// first track is read, lets every track already read finish and drops those being read.
TEST(RipStreamJob, StopAfterATrackWasReadLetsItsEncoderFinish) {
    StreamRig rig;
    rig.Load(ThreeLongTracks(), kMp2, "stop");
    bool firstRead = false;
    bool stop = false;
    rig.hooks.yield = [&] { stop = stop || firstRead; };
    rig.hooks.aborted = [&stop] { return stop; };
    const auto real = encode::MakeRipEncoder(rig.params, std::nullopt);
    rig.encode = [&](const std::string& base, const std::string& name,
                     size_t row) -> std::unique_ptr<audiocd::TrackEncode> {
        auto encoder = real(base, name, row);
        if (row != 0)
            return encoder;
        return std::make_unique<FirstTrackWatch>(std::move(encoder), firstRead);
    };
    const auto result = rig.Run();
    EXPECT_TRUE(result.aborted);
    // Each row that started ends as written or dropped, in track order, the one being read when
    // the stop came dropped; every file written is whole.
    const auto results = rig.Results();
    ASSERT_GE(results.size(), 2u);
    EXPECT_EQ(results.front(), (RowEvent{0, "Track01.mp2 -->Fertig"}));
    EXPECT_EQ(results.back().second, "Abbruch");
    std::vector<std::string> written;
    for (size_t i = 0; i < results.size(); ++i) {
        EXPECT_EQ(results[i].first, i);
        if (results[i].second != "Abbruch")
            written.push_back("Track" + audiocd::NumberText(static_cast<int>(i) + 1) + ".mp2");
    }
    EXPECT_EQ(rig.Files(), written);
    for (size_t i = 0; i < written.size(); ++i)
        EXPECT_TRUE(rig.Written(written[i]) == rig.Reference(static_cast<int>(i) + 1));
}

// The secure mode encodes a track only once it is read and proven, from a hidden WAV file beside
// its own that is gone afterwards; the file is that of the whole track, every sector.
TEST(SecureRipEncode, EncodesTheProvenTrackAndLeavesNoSpool) {
    StreamRig rig;
    rig.Load(discgen::AudioThreeTracks(), kMp2, "secure");
    audiocd::SecureRipParams params;
    params.rip = rig.params;
    params.extension = ".mp2";
    std::vector<RowEvent> rows;
    const auto result = audiocd::RunSecureRipJob(
        rig.drive, params, {},
        [&rows](size_t row, const std::string& text) { rows.emplace_back(row, text); },
        encode::MakeRipEncoder(params.rip, std::nullopt));
    EXPECT_TRUE(result.allProven);  // no record asked for: two passes that agree
    EXPECT_EQ(rows.back(), (RowEvent{2, "Track03.mp2 -->Fertig (AccurateRip: unbekannt)"}));
    EXPECT_EQ(rig.Files(), (std::vector<std::string>{"Rip.cue", "Rip.log", "Track01.mp2",
                                                     "Track02.mp2", "Track03.mp2"}));

    // Track 2 as a plain drive reads all its sectors, behind the standard header, converted.
    std::vector<uint8_t> audio(3 * 75 * 2352);
    std::string handle = rig.params.handle;
    ASSERT_EQ(modMMC::ReadCD(rig.drive, handle, 4 * 75, 3 * 75, audio, 0xF8), 0);
    const auto header = audiocd::StandardWavHeader(static_cast<int64_t>(audio.size()));
    std::vector<uint8_t> image(header->size() + audio.size());
    std::copy(header->begin(), header->end(), image.begin());
    std::copy(audio.begin(), audio.end(),
              image.begin() + static_cast<std::ptrdiff_t>(header->size()));
    encode::AudioTags tags;
    tags.track = 2;
    tags.trackCount = 3;
    const fs::path base = rig.folder / "Whole2";
    ASSERT_TRUE(encode::ConvertAudioStream(image, "audio/wav", base.string(), kMp2, tags, {}));
    EXPECT_TRUE(rig.Written("Track02.mp2") == Bytes(base.string() + ".mp2"));
}
