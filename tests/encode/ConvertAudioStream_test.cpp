// Converting WAV images to each format and reading the files back with FFmpeg: codec, rate,
// channels, length, tags, FLAC's exact samples; and what is left on disk when a conversion is
// refused, fails or is aborted.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
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
    bool abort = false;  // stop at the first poll

    ConvertHooks Hooks() {
        return {[this] { ++yields; },
                [this] {
                    ++abortPolls;
                    return abort;
                },
                [this](int p) { progress.push_back(p); }};
    }
};

const AudioTags kTags{3,
                      12,
                      "Über den Wolken",
                      "Die Testkapelle",
                      "Plattmix Proben",
                      "Verschiedene",
                      "1999-02-03",
                      2,
                      3,
                      "a4e7c2e0-0000-4000-8000-000000000001",
                      "b5f8d3f1-0000-4000-8000-000000000002"};

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

}  // namespace

// Every format decodes to its codec, rate, two channels, the source's length (FLAC to its exact
// samples) and the tags; the MusicBrainz ids under each container's own keys (as FFmpeg reads
// them back, lower-case).
TEST(ConvertAudioStream, EachFormatDecodesToItsCodecRateLengthAndTags) {
    struct Case {
        int index;
        const char* decoder;
        int rate;
        int frame;                    // samples per codec frame
        const char* idKey = nullptr;  // the release id's key; nullptr: no tags
    };
    const Case cases[] = {{0, "mp3", 44100, 1152, "musicbrainz album id"},
                          {1, "aac", 44100, 1024, "musicbrainz album id"},
                          {2, "mp2", 48000, 1152},
                          {3, "flac", 44100, 4608, "musicbrainz_albumid"},
                          {4, "ac3", 48000, 1536},
                          {5, "wmav2", 44100, 2048, "musicbrainz/album id"},
                          {7, "mp3", 44100, 1152},  // indexes outside 1 to 5 make MP3
                          {-2, "mp3", 44100, 1152}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.index);
        const fs::path folder = test::ScratchFolder("encode");
        const std::string base = (folder / "Track03").string();
        HookLog log;
        ASSERT_TRUE(
            ConvertAudioStream(ShortImage(), "audio/wav", base, c.index, kTags, log.Hooks()));
        const fs::path file = base + std::string(FormatAt(c.index).extension);
        ASSERT_EQ(FilesIn(folder), std::vector<fs::path>{file});
        auto probed = ProbeAudioFile(file.string(), c.index == 3);
        ASSERT_TRUE(probed);
        EXPECT_EQ(probed->codec, c.decoder);
        EXPECT_EQ(probed->sampleRate, c.rate);
        EXPECT_EQ(probed->channels, 2);
        if (c.index == 5) {
            EXPECT_EQ(probed->bitsPerCodedSample, 24);  // WMA declares 24 bits, as it always has
        }
        if (c.index == 3) {  // FLAC: exactly the announced samples, in 24 bits
            EXPECT_EQ(probed->bitsPerRawSample, 24);
            const std::vector<int16_t> source = test::AnnouncedSamples(ShortImage());
            ASSERT_EQ(probed->pcm.size(), source.size());  // the last 44 bytes are not audio to it
            for (size_t i = 0; i < source.size(); ++i)
                ASSERT_EQ(probed->pcm[i], int32_t{source[i]} << 16) << "sample " << i;
        }
        // The demuxer's view of the source: the frames the header announces.
        const int64_t sourceFrames = (static_cast<int64_t>(ShortImage().size()) - 88) / 4;
        EXPECT_NEAR(static_cast<double>(probed->samples),
                    static_cast<double>(sourceFrames * c.rate / 44100), c.frame);
        ASSERT_FALSE(log.progress.empty());
        EXPECT_TRUE(std::is_sorted(log.progress.begin(), log.progress.end()));
        EXPECT_EQ(log.progress.back(), 100);
        if (c.idKey == nullptr)
            continue;
        for (const auto& [key, value] : {std::pair{"title", "Über den Wolken"},
                                         {"artist", "Die Testkapelle"},
                                         {"album", "Plattmix Proben"},
                                         {"album_artist", "Verschiedene"},
                                         {"track", "3/12"},
                                         {"date", "1999-02-03"},
                                         {"disc", "2/3"},
                                         {c.idKey, "a4e7c2e0-0000-4000-8000-000000000001"}})
            EXPECT_EQ(probed->tags[key], value) << key;
        std::string trackKey = c.idKey;
        trackKey.replace(trackKey.find("album"), 5, "track");
        EXPECT_EQ(probed->tags[trackKey], "b5f8d3f1-0000-4000-8000-000000000002");
    }
}

// Another content type, images the demuxer rejects, a target that cannot be written (a missing
// folder, a folder in the file's place, a full disk): false, and no file left behind.
TEST(Refused, BadInputOrTargetGivesFalseAndNoFile) {
    const fs::path folder = test::ScratchFolder("encode");
    const std::string base = (folder / "T").string();
    HookLog log;
    for (const char* type : {"audio/mpeg", "", "audio/WAV", "audio/x-wav"})
        EXPECT_FALSE(ConvertAudioStream(ShortImage(), type, base, 3, {}, log.Hooks())) << type;
    EXPECT_EQ(log.yields + log.abortPolls, 0);  // returned before any waiting

    std::vector<uint8_t> garbage(64 * 1024);
    uint32_t state = 12345;
    for (auto& byte : garbage) {
        state = state * 1103515245u + 12345u;
        byte = static_cast<uint8_t>(state >> 24);
    }
    std::vector<uint8_t> notRiff = ShortImage();
    notRiff[0] = 'X';
    const std::vector<uint8_t> headerOnly(ShortImage().begin(), ShortImage().begin() + 20);
    for (const auto& image : {garbage, notRiff, headerOnly, std::vector<uint8_t>{}})
        EXPECT_FALSE(ConvertAudioStream(image, "audio/wav", base, 1, {}, {}));
    EXPECT_TRUE(FilesIn(folder).empty());

    EXPECT_FALSE(ConvertAudioStream(ShortImage(), "audio/wav", (folder / "fehlt" / "T").string(), 0,
                                    {}, {}));
    fs::create_directories(folder / "T.flac");
    EXPECT_FALSE(ConvertAudioStream(ShortImage(), "audio/wav", base, 3, {}, {}));
    EXPECT_EQ(FilesIn(folder), std::vector<fs::path>{folder / "T.flac"});
    fs::create_symlink("/dev/full", folder / "Full.ac3");  // takes the open, refuses every byte
    EXPECT_FALSE(
        ConvertAudioStream(ShortImage(), "audio/wav", (folder / "Full").string(), 4, {}, {}));
}

TEST(Abort, StopsTheEncoderAndRemovesThePartialFile) {
    // A minute of music: far more than one poll period of work in any build.
    static const std::vector<uint8_t> minute = test::MakeWavImage(75 * 60);
    for (int index : {0, 1, 5}) {
        const fs::path folder = test::ScratchFolder("encode");
        HookLog log;
        log.abort = true;
        EXPECT_FALSE(ConvertAudioStream(minute, "audio/wav", (folder / "Lang").string(), index, {},
                                        log.Hooks()))
            << index;
        EXPECT_TRUE(FilesIn(folder).empty()) << index;
        EXPECT_EQ(log.abortPolls, 1) << index;  // asked once; the worker stopped at the next packet
        EXPECT_GE(log.yields, 1) << index;
    }
}
