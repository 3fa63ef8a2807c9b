// Converting WAV images to each format and reading the files back with FFmpeg: codec, rate,
// channels, length, tags, FLAC's exact samples; and what is left on disk when the target cannot
// be written. (Stopping an encoder: the rip stream's tests.)
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "AudioSynth.h"
#include "ConvertAudioStream.h"
#include "MediaProbe.h"
#include "OutputFormats.h"
#include "WavHeader.h"
#include "common/ScratchFolder.h"

using namespace plattmix;
using namespace plattmix::encode;
namespace fs = std::filesystem;

namespace {

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

// Three seconds and a bit of generated music behind the program's header: 230 sectors, not a
// whole number of any codec's frames.
constexpr size_t kShortBytes = 230 * 2352;
const std::vector<uint8_t>& ShortImage() {
    static const std::vector<uint8_t> image = [] {
        const auto header = audiocd::WavHeader(kShortBytes);
        std::vector<uint8_t> bytes(header->begin(), header->end());
        bytes.resize(44 + kShortBytes);
        discgen::AudioSynth synth(1, discgen::AudioSynth::Voice::Chord, 7);
        for (size_t at = 44; at < bytes.size(); at += 2352)
            synth.FillSector(std::span<uint8_t, 2352>(bytes.data() + at, 2352));
        return bytes;
    }();
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
        ASSERT_TRUE(ConvertAudioStream(ShortImage(), "audio/wav", base, c.index, kTags, {}));
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
            // The header's data size, N - 44: the last 44 bytes are not audio to the demuxer.
            ASSERT_EQ(probed->pcm.size(), (kShortBytes - 44) / 2);
            for (size_t i = 0; i < probed->pcm.size(); ++i) {
                const auto* sample = &ShortImage()[44 + 2 * i];
                const auto value = static_cast<int16_t>(sample[0] | sample[1] << 8);
                ASSERT_EQ(probed->pcm[i], int32_t{value} << 16) << "sample " << i;
            }
        }
        // The demuxer's view of the source: the frames the header announces.
        const auto sourceFrames = static_cast<int64_t>(kShortBytes - 44) / 4;
        EXPECT_NEAR(static_cast<double>(probed->samples),
                    static_cast<double>(sourceFrames * c.rate / 44100), c.frame);
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

// A target that cannot be written (a missing folder, a folder in the file's place, a full disk):
// false, and no file left behind.
TEST(ConvertAudioStream, AnUnwritableTargetGivesFalseAndNoFile) {
    const fs::path folder = test::ScratchFolder("encode");
    EXPECT_FALSE(ConvertAudioStream(ShortImage(), "audio/wav", (folder / "fehlt" / "T").string(), 0,
                                    {}, {}));
    fs::create_directories(folder / "T.flac");
    EXPECT_FALSE(ConvertAudioStream(ShortImage(), "audio/wav", (folder / "T").string(), 3, {}, {}));
    EXPECT_EQ(FilesIn(folder), std::vector<fs::path>{folder / "T.flac"});
    fs::create_symlink("/dev/full", folder / "Full.ac3");  // takes the open, refuses every byte
    EXPECT_FALSE(
        ConvertAudioStream(ShortImage(), "audio/wav", (folder / "Full").string(), 4, {}, {}));
}
