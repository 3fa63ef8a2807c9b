// Ripping to a compressed format through the whole job with the real encoder: the files written
// while the drive reads are byte for byte those of a track read whole into memory and then
// converted; a read error or a stop while encoders still run leaves the rows and files right.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "ConvertAudioStream.h"
#include "Fixtures.h"
#include "OutputFormats.h"
#include "RipEncoder.h"
#include "RipTrack.h"
#include "SecureRipJob.h"
#include "audiocd/RipRig.h"
#include "common/SmallDisk.h"

using namespace plattmix;
namespace fs = std::filesystem;

namespace {

using RowEvent = test::RipRig::RowEvent;
constexpr int kMp2 = 2;

// The image converted as the format at formatIndex, with the track's number: the bytes of the
// file it makes.
std::vector<uint8_t> Converted(const std::vector<uint8_t>& image, const fs::path& base,
                               int formatIndex, int number, int trackCount) {
    encode::AudioTags tags;
    tags.track = number;
    tags.trackCount = trackCount;
    if (!encode::ConvertAudioStream(image, "audio/wav", base.string(), formatIndex, tags, {}))
        return {};
    return test::FileBytes(base.string() + std::string(encode::FormatAt(formatIndex).extension));
}

// A rip job to a compressed format, with the real encoder unless a test sets one.
struct StreamRig : test::RipRig {
    audiocd::EncodeFn encode;

    StreamRig(const discgen::DiscSpec& spec, int formatIndex, const std::string& sub = "rig")
        : RipRig(spec, sub) {
        params.formatIndex = formatIndex;
    }
    audiocd::RipJobResult Run() {
        return audiocd::RunRipJob(drive, params, hooks, RowText(),
                                  encode ? encode : encode::MakeRipEncoder(params, std::nullopt));
    }
    // The results in the order they came, without the "Schreibe...".
    std::vector<RowEvent> Results() const {
        std::vector<RowEvent> results;
        std::copy_if(events.begin(), events.end(), std::back_inserter(results),
                     [](const RowEvent& e) { return e.second != audiocd::kTextWriting; });
        return results;
    }
    // The track read whole into memory and converted: what the job's file must hold.
    std::vector<uint8_t> Reference(int number) {
        const auto image =
            audiocd::RipTrackToMemory(drive, params.handle, static_cast<int16_t>(number), {});
        return image ? Converted(*image, folder / ("Reference" + std::to_string(number)),
                                 params.formatIndex, number, static_cast<int>(params.rows.size()))
                     : std::vector<uint8_t>{};
    }
};

// Three tracks, each longer than the encoder's queue holds.
discgen::DiscSpec ThreeLongTracks() {
    discgen::DiscSpec spec = discgen::AudioThreeTracks();
    for (auto& track : spec.tracks)
        track.sectors = 3000;
    return spec;
}

}  // namespace

TEST(RipStream, FilesInEveryFormatEqualThoseOfTheWholeImage) {
    discgen::DiscSpec spec = discgen::AudioThreeTracks();
    spec.tracks.push_back(discgen::ExactBlockMultiple().tracks.front());
    for (int format = 0; format <= 5; ++format) {
        SCOPED_TRACE(format);
        StreamRig rig(spec, format, std::to_string(format));
        ASSERT_FALSE(rig.Run().aborted);
        EXPECT_FALSE(rig.otherThread);
        const std::string extension(encode::FormatAt(format).extension);
        for (int number = 1; number <= static_cast<int>(spec.tracks.size()); ++number) {
            const auto expected = rig.Reference(number);
            ASSERT_FALSE(expected.empty());
            EXPECT_TRUE(rig.Written("Track" + audiocd::NumberText(number) + extension) == expected)
                << number;
        }
    }
}

TEST(RipStreamJob, ReadErrorDropsOnlyThatTracksFileAndResultsComeInTrackOrder) {
    StreamRig rig(ThreeLongTracks(), kMp2);
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
    StreamRig rig(ThreeLongTracks(), kMp2);
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
    StreamRig rig(ThreeLongTracks(), kMp2);
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
    StreamRig rig(discgen::AudioThreeTracks(), kMp2);
    audiocd::SecureRipParams params;
    params.rip = rig.params;
    params.extension = ".mp2";
    const auto result = audiocd::RunSecureRipJob(rig.drive, params, {}, rig.RowText(),
                                                 encode::MakeRipEncoder(params.rip, std::nullopt));
    EXPECT_TRUE(result.allProven);  // no record asked for: two passes that agree
    EXPECT_EQ(rig.events.back(), (RowEvent{2, "Track03.mp2 -->Fertig (AccurateRip: unbekannt)"}));
    EXPECT_EQ(rig.Files(), (std::vector<std::string>{"Rip.cue", "Rip.log", "Track01.mp2",
                                                     "Track02.mp2", "Track03.mp2"}));
    EXPECT_TRUE(rig.Written("Track02.mp2") ==
                Converted(test::WholeTrackWav(rig.disc, 2), rig.folder / "Whole2", kMp2, 2, 3));
}
