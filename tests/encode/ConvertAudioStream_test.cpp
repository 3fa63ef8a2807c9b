// Converting WAV images to each format and reading the files back with FFmpeg: codec, rate,
// channels, length, tags, FLAC's exact samples; and what is left on disk when a conversion is
// refused, fails or is aborted.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "ConvertAudioStream.h"
#include "MediaProbe.h"
#include "OutputFormats.h"
#include "WavImage.h"
#include "common/ScratchFolder.h"

using namespace plattmix;
using namespace plattmix::encode;
namespace fs = std::filesystem;

namespace {

// A record of what the hooks were told.
struct HookLog {
    int yields = 0;
    int abortPolls = 0;
    std::vector<int> progress;
    int abortAfterPolls = -1;  // -1: never

    ConvertHooks Hooks() {
        ConvertHooks hooks;
        hooks.yield = [this] { ++yields; };
        hooks.progress = [this](int p) { progress.push_back(p); };
        hooks.aborted = [this] {
            ++abortPolls;
            return abortAfterPolls >= 0 && abortPolls > abortAfterPolls;
        };
        return hooks;
    }
};

AudioTags SomeTags() {
    AudioTags tags;
    tags.track = 3;
    tags.trackCount = 12;
    tags.title = "Über den Wolken";
    tags.artist = "Die Testkapelle";
    tags.album = "Plattmix Proben";
    tags.albumArtist = "Verschiedene";
    tags.date = "1999-02-03";
    tags.disc = 2;
    tags.discCount = 3;
    tags.releaseId = "a4e7c2e0-0000-4000-8000-000000000001";
    tags.recordingId = "b5f8d3f1-0000-4000-8000-000000000002";
    return tags;
}

std::vector<fs::path> FilesIn(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(folder))
        files.push_back(entry.path());
    return files;
}

// Three seconds and a bit: 230 sectors, not a whole number of any codec's frames.
const std::vector<uint8_t>& ShortImage() {
    static const std::vector<uint8_t> image = test::MakeWavImage(230);
    return image;
}

struct FormatCase {
    int index;
    const char* decoder;
    int rate;
    int frame;  // samples per codec frame
    bool tagged;
    const char* releaseIdKey = "";  // as FFmpeg reads it back, lower-case
    const char* recordingIdKey = "";
};

void PrintTo(const FormatCase& c, std::ostream* os) {
    *os << kOutputFormats[static_cast<size_t>(c.index)].cliName;
}

class EachFormat : public ::testing::TestWithParam<FormatCase> {};

}  // namespace

TEST_P(EachFormat, DecodesToItsCodecRateChannelsLengthAndTags) {
    const FormatCase& c = GetParam();
    const fs::path folder = test::ScratchFolder("encode");
    const std::string base = (folder / "Track03").string();
    HookLog log;
    ASSERT_TRUE(
        ConvertAudioStream(ShortImage(), "audio/wav", base, c.index, SomeTags(), log.Hooks()));

    const OutputFormat& format = kOutputFormats[static_cast<size_t>(c.index)];
    const fs::path file = base + std::string(format.extension);
    ASSERT_EQ(FilesIn(folder), std::vector<fs::path>{file});
    auto probed = ProbeAudioFile(file.string());
    ASSERT_TRUE(probed);
    EXPECT_EQ(probed->codec, c.decoder);
    EXPECT_EQ(probed->sampleRate, c.rate);
    EXPECT_EQ(probed->channels, 2);
    if (c.index == 5) {
        EXPECT_EQ(probed->bitsPerCodedSample, 24);  // WMA declares 24 bits, as it always has
    }

    // The demuxer's view of the source: the frames the header announces.
    const int64_t sourceFrames = (static_cast<int64_t>(ShortImage().size()) - 88) / 4;
    const int64_t expected = sourceFrames * c.rate / 44100;
    EXPECT_NEAR(static_cast<double>(probed->samples), static_cast<double>(expected), c.frame);

    if (c.tagged) {
        EXPECT_EQ(probed->tags["title"], "Über den Wolken");
        EXPECT_EQ(probed->tags["artist"], "Die Testkapelle");
        EXPECT_EQ(probed->tags["album"], "Plattmix Proben");
        EXPECT_EQ(probed->tags["album_artist"], "Verschiedene");
        EXPECT_EQ(probed->tags["track"], "3/12");
        EXPECT_EQ(probed->tags["date"], "1999-02-03");
        EXPECT_EQ(probed->tags["disc"], "2/3");
        EXPECT_EQ(probed->tags[c.releaseIdKey], "a4e7c2e0-0000-4000-8000-000000000001");
        EXPECT_EQ(probed->tags[c.recordingIdKey], "b5f8d3f1-0000-4000-8000-000000000002");
    }
    ASSERT_FALSE(log.progress.empty());
    EXPECT_EQ(log.progress.back(), 100);
}

INSTANTIATE_TEST_SUITE_P(
    Formats, EachFormat,
    ::testing::Values(
        FormatCase{0, "mp3", 44100, 1152, true, "musicbrainz album id", "musicbrainz track id"},
        FormatCase{1, "aac", 44100, 1024, true, "musicbrainz album id", "musicbrainz track id"},
        FormatCase{2, "mp2", 48000, 1152, false},
        FormatCase{3, "flac", 44100, 4608, true, "musicbrainz_albumid", "musicbrainz_trackid"},
        FormatCase{4, "ac3", 48000, 1536, false},
        FormatCase{5, "wmav2", 44100, 2048, true, "musicbrainz/album id", "musicbrainz/track id"}),
    [](const auto& param_info) {
        return std::string(kOutputFormats[static_cast<size_t>(param_info.param.index)].cliName);
    });

TEST(Flac, DecodesToExactlyTheAnnouncedSamplesIn24Bits) {
    const fs::path folder = test::ScratchFolder("encode");
    const std::string base = (folder / "Track01").string();
    HookLog log;
    ASSERT_TRUE(ConvertAudioStream(ShortImage(), "audio/wav", base, 3, {}, log.Hooks()));
    const auto probed = ProbeAudioFile(base + ".flac", true);
    ASSERT_TRUE(probed);
    EXPECT_EQ(probed->bitsPerRawSample, 24);

    const std::vector<int16_t> source = test::AnnouncedSamples(ShortImage());
    ASSERT_EQ(probed->pcm.size(), source.size());  // the last 44 bytes are not audio to it
    size_t mismatches = 0;
    for (size_t i = 0; i < source.size(); ++i) {
        const int32_t sample24 = probed->pcm[i] >> 8;
        if ((sample24 & 0xFF) != 0 || (sample24 >> 8) != source[i])
            ++mismatches;
    }
    EXPECT_EQ(mismatches, 0u);
}

TEST(OutputName, IndexesOutsideOneToFiveMakeMp3) {
    const fs::path folder = test::ScratchFolder("encode");
    for (int index : {0, 7, -2}) {
        const std::string base = (folder / ("Track" + std::to_string(index + 10))).string();
        HookLog log;
        ASSERT_TRUE(ConvertAudioStream(ShortImage(), "audio/wav", base, index, {}, log.Hooks()));
        const auto probed = ProbeAudioFile(base + ".mp3");
        ASSERT_TRUE(probed) << index;
        EXPECT_EQ(probed->codec, "mp3");
    }
    EXPECT_EQ(FilesIn(folder).size(), 3u);
}

TEST(Refused, AnotherContentTypeStartsNothing) {
    const fs::path folder = test::ScratchFolder("encode");
    HookLog log;
    for (const char* type : {"audio/mpeg", "", "audio/WAV", "audio/x-wav"})
        EXPECT_FALSE(
            ConvertAudioStream(ShortImage(), type, (folder / "T").string(), 3, {}, log.Hooks()))
            << type;
    EXPECT_TRUE(FilesIn(folder).empty());
    EXPECT_EQ(log.yields + log.abortPolls, 0);  // returned before any waiting
}

TEST(Refused, ImagesTheDemuxerRejectsLeaveNoFile) {
    const fs::path folder = test::ScratchFolder("encode");
    std::vector<uint8_t> garbage(64 * 1024);
    uint32_t state = 12345;
    for (auto& byte : garbage) {
        state = state * 1103515245u + 12345u;
        byte = static_cast<uint8_t>(state >> 24);
    }
    std::vector<uint8_t> notRiff = ShortImage();
    notRiff[0] = 'X';
    const std::vector<uint8_t> headerOnly(ShortImage().begin(), ShortImage().begin() + 20);
    HookLog log;
    const std::vector<uint8_t>* images[] = {&garbage, &notRiff, &headerOnly};
    for (const auto* image : images) {
        EXPECT_FALSE(
            ConvertAudioStream(*image, "audio/wav", (folder / "T").string(), 1, {}, log.Hooks()));
    }
    EXPECT_FALSE(ConvertAudioStream({}, "audio/wav", (folder / "T").string(), 1, {}, log.Hooks()));
    EXPECT_TRUE(FilesIn(folder).empty());
}

TEST(Failure, UnwritableTargetGivesFalseAndNoFile) {
    const fs::path folder = test::ScratchFolder("encode");
    HookLog log;
    EXPECT_FALSE(ConvertAudioStream(ShortImage(), "audio/wav", (folder / "missing" / "T").string(),
                                    0, {}, log.Hooks()));
    // A folder where the file would go.
    fs::create_directories(folder / "T.flac");
    EXPECT_FALSE(
        ConvertAudioStream(ShortImage(), "audio/wav", (folder / "T").string(), 3, {}, log.Hooks()));
    EXPECT_EQ(FilesIn(folder).size(), 1u);
    EXPECT_TRUE(fs::is_directory(folder / "T.flac"));
}

TEST(Failure, FullDiskGivesFalse) {
    // /dev/full takes the open and refuses every byte.
    if (!fs::exists("/dev/full"))
        GTEST_SKIP() << "no /dev/full";
    const fs::path folder = test::ScratchFolder("encode");
    const fs::path link = folder / "Full.ac3";
    fs::create_symlink("/dev/full", link);
    HookLog log;
    EXPECT_FALSE(ConvertAudioStream(ShortImage(), "audio/wav", (folder / "Full").string(), 4, {},
                                    log.Hooks()));
}

TEST(Abort, StopsTheEncoderAndRemovesThePartialFile) {
    // A minute of music: far more than one poll period of work in any build.
    static const std::vector<uint8_t> minute = test::MakeWavImage(75 * 60);
    for (int index : {0, 1, 5}) {
        const fs::path folder = test::ScratchFolder("encode");
        HookLog log;
        log.abortAfterPolls = 0;
        EXPECT_FALSE(ConvertAudioStream(minute, "audio/wav", (folder / "Lang").string(), index, {},
                                        log.Hooks()))
            << index;
        EXPECT_TRUE(FilesIn(folder).empty()) << index;
        EXPECT_EQ(log.abortPolls, 1) << index;  // asked once; the worker stopped at the next packet
        EXPECT_GE(log.yields, 1) << index;
    }
}

TEST(Polling, YieldsAndReportsRisingProgressWhileTheWorkerRuns) {
    static const std::vector<uint8_t> minutes = test::MakeWavImage(75 * 120);
    const fs::path folder = test::ScratchFolder("encode");
    HookLog log;
    ASSERT_TRUE(
        ConvertAudioStream(minutes, "audio/wav", (folder / "T").string(), 2, {}, log.Hooks()));
    EXPECT_GE(log.yields, 1);
    EXPECT_EQ(log.yields, log.abortPolls);  // one yield and one abort poll per period
    ASSERT_FALSE(log.progress.empty());
    for (size_t i = 1; i < log.progress.size(); ++i)
        EXPECT_GT(log.progress[i], log.progress[i - 1]);
    EXPECT_EQ(log.progress.back(), 100);
}
