// The 44-byte WAV header, and extracting tracks from generated discs through the disc-image
// drive: the bytes written, the result texts, the messages and what stays on disk when something
// fails.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include "Fixtures.h"
#include "RipRig.h"
#include "RipTrack.h"

using namespace plattmix;
namespace fs = std::filesystem;

namespace {

using Bytes = std::vector<uint8_t>;
constexpr int64_t kSector = 2352;
constexpr int64_t kBlock = 27 * kSector;

uint32_t Le32(std::span<const uint8_t> h, size_t at) {
    return uint32_t{h[at]} | uint32_t{h[at + 1]} << 8 | uint32_t{h[at + 2]} << 16 |
           uint32_t{h[at + 3]} << 24;
}

// A generated disc in the image drive, ripped track by track, with what the hooks were told.
struct Rig : test::RipRig {
    discgen::DiscSpec spec;
    std::vector<int> progress;
    int yields = 0;

    explicit Rig(discgen::DiscSpec s, const std::string& sub = "rig")
        : RipRig(s, sub), spec(std::move(s)) {
        hooks.progress = [this](int p) { progress.push_back(p); };
        hooks.yield = [this] { ++yields; };
    }
    std::optional<std::string> Rip(int16_t track, const fs::path& path) {
        return audiocd::RipTrackWav(drive, params.handle, track, path.string(), "Lied", hooks);
    }
    std::optional<Bytes> RipToMemory(int16_t track) {
        return audiocd::RipTrackToMemory(drive, params.handle, track, hooks);
    }
    int32_t Start(size_t index) const { return disc.tracks[index].startLba; }

    // What a ripped track must hold: the header and `sectors` sectors from the track's start,
    // taken straight from its BIN file.
    Bytes ExpectedWav(size_t index, int64_t sectors) const {
        const int file = spec.tracks[index].file;
        int64_t offset = 0;
        for (size_t i = 0; i < index; ++i)
            offset += spec.tracks[i].file == file ? int64_t{spec.tracks[i].sectors} * kSector : 0;
        const auto header = audiocd::WavHeader(sectors * kSector);
        Bytes wav(header->begin(), header->end());
        if (sectors <= 0)
            return wav;
        const Bytes bin = test::FileBytes(disc.files[static_cast<size_t>(file)].path);
        wav.insert(wav.end(), bin.begin() + offset, bin.begin() + offset + sectors * kSector);
        return wav;
    }
    // The same disc with its tracks numbered 5 to 7, in a drive of its own.
    void RenumberFromFive() {
        std::string cue = disc.cueText;
        for (const char* number : {"03", "02", "01"}) {
            const std::string from = std::string("TRACK ") + number;
            cue.replace(cue.find(from), from.size(),
                        "TRACK 0" + std::to_string(std::stoi(number) + 4));
        }
        std::ofstream(disc.cuePath, std::ios::binary) << cue;
        params.handle = drive.AddDrive(disc.cuePath.string()).Value();
    }
};

discgen::DiscSpec ExactBlockInTheMiddle() {
    auto spec = discgen::ExactBlockMultiple();
    spec.tracks[1].sectors = 11 * 27 + 1;  // last - first = 11 blocks exactly
    return spec;
}

}  // namespace

TEST(WavHeader, ThreeHundredSectorsByteForByte) {
    const auto header = audiocd::WavHeader(705600);
    ASSERT_TRUE(header);
    const audiocd::WavHeaderBytes expected = {
        'R',  'I',  'F',  'F',  0x64, 0xC4, 0x0A, 0x00,  // 705636
        'W',  'A',  'V',  'E',  'f',  'm',  't',  ' ',   //
        0x10, 0x00, 0x00, 0x00, 0x01, 0x00, 0x02, 0x00,  // 16, PCM, stereo
        0x44, 0xAC, 0x00, 0x00, 0x10, 0xB1, 0x02, 0x00,  // 44100, 176400
        0x04, 0x00, 0x10, 0x00, 'd',  'a',  't',  'a',   // align 4, 16 bits
        0x14, 0xC4, 0x0A, 0x00,                          // 705556
    };
    EXPECT_EQ(*header, expected);
}

// The RIFF size N + 36 is the first to leave the signed 32-bit range, the data size N - 44 at the
// bottom; an empty track still gets a header, its data size -44 as a 32-bit pattern; the secure
// mode's standard header announces all of the audio.
TEST(WavHeader, SizeFieldsStaySigned32Bit) {
    constexpr int64_t kInt32Max = std::numeric_limits<int32_t>::max();
    constexpr int64_t kInt32Min = std::numeric_limits<int32_t>::min();
    EXPECT_EQ(Le32(*audiocd::WavHeader(kInt32Max - 36), 4), 0x7FFFFFFFu);
    EXPECT_FALSE(audiocd::WavHeader(kInt32Max - 35));
    EXPECT_TRUE(audiocd::WavHeader(kInt32Min + 44));
    EXPECT_FALSE(audiocd::WavHeader(kInt32Min + 43));
    EXPECT_EQ(Le32(*audiocd::WavHeader(0), 4), 36u);
    EXPECT_EQ(Le32(*audiocd::WavHeader(0), 40), 0xFFFFFFD4u);
    EXPECT_EQ(Le32(*audiocd::StandardWavHeader(705600), 40), 705600u);
}

// Every track ends one sector before the next one starts; the disc's last track, and the last
// of an Enhanced CD's audio session, 150 sectors earlier still (sectorsLeftOff 151). The file is
// not truncated.
TEST(RipTrack, FileAndMemoryHoldHeaderAndTheSectorsUpToLastLba) {
    struct Case {
        const char* what;
        discgen::DiscSpec (*spec)();
        bool renumbered;
        int16_t track;           // row position
        int64_t sectorsLeftOff;  // from the track's span
    };
    const Case cases[] = {
        {"BlocksAndRemainder", discgen::ExactBlockMultiple, false, 1, 1},
        {"ExactBlocks", ExactBlockInTheMiddle, false, 2, 1},
        {"LastTrackTrimmed", discgen::ExactBlockMultiple, false, 3, 151},
        {"AudioAfterData", discgen::DataTrackFirst, false, 2, 1},
        {"LastAfterData", discgen::DataTrackFirst, false, 3, 151},
        {"LastOfTheAudioSession", discgen::Enhanced, false, 2, 151},
        {"FirstTrackFiveFirstRow", discgen::AudioThreeTracks, true, 1, 1},
        // The last-track field says 7, no row position reaches it: nothing is trimmed.
        {"FirstTrackFiveLastRow", discgen::AudioThreeTracks, true, 3, 1},
        {"OneSectorTrackIsEmpty", discgen::TinyTracks, false, 1, 1},
        {"TinyLastTrackHeaderOnly", discgen::TinyTracks, false, 4, 151}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Rig rig(c.spec(), c.what);
        if (c.renumbered)
            rig.RenumberFromFive();
        const auto index = static_cast<size_t>(c.track - 1);
        const int64_t sectors = rig.disc.tracks[index].lengthSectors - c.sectorsLeftOff;
        const Bytes expected = rig.ExpectedWav(index, sectors);
        // The sector at the last LBA is never asked for.
        rig.drive.AddReadError(rig.params.handle, rig.Start(index) + static_cast<int32_t>(sectors),
                               1);

        // An older, longer file of that name keeps its tail.
        const fs::path path = rig.folder / "Lied.wav";
        Bytes withTail = expected;
        withTail.resize(expected.size() + 5000, 0xEE);
        std::ofstream(path, std::ios::binary) << std::string(withTail.size(), '\xEE');
        EXPECT_EQ(rig.Rip(c.track, path), "Lied.wav -->Fertig");
        EXPECT_TRUE(test::FileBytes(path) == withTail) << fs::file_size(path) << " bytes";
        EXPECT_EQ(rig.warnings, std::vector<std::string>{});
        EXPECT_EQ(rig.yields, 1 + (sectors > 0 ? sectors / 27 : 0));  // one per block
        ASSERT_FALSE(rig.progress.empty());
        EXPECT_EQ(rig.progress.front(), 0);
        if (sectors > 0 && sectors % 27 == 0) {
            EXPECT_EQ(rig.progress.back(), 100);
        }
        EXPECT_TRUE(rig.RipToMemory(c.track) == expected);
    }
}

// Track 2 of AudioThreeTracks: LBA 300 to 524, 8 full blocks and 8 sectors left over.
TEST(RipTrack, ReadErrorsInAFullBlockAndInTheRemainder) {
    Rig rig(discgen::AudioThreeTracks());
    const fs::path path = rig.folder / "Lied.wav";
    const Bytes whole = rig.ExpectedWav(1, 224);

    // Sector 359 lies in the third block, 354 to 381: header and two blocks stay behind.
    rig.drive.AddReadError(rig.params.handle, 359, 1);
    EXPECT_EQ(rig.Rip(2, path), std::nullopt);
    EXPECT_TRUE(test::FileBytes(path) == Bytes(whole.begin(), whole.begin() + 44 + 2 * kBlock));
    EXPECT_EQ(rig.RipToMemory(2), std::nullopt);
    EXPECT_EQ(rig.warnings, (std::vector<std::string>{"Lesefehler in Range 354 - 381.",
                                                      "Lesefehler in Range 354 - 381."}));

    // In the remainder (516 to 524) the row says so and no message appears; the memory path
    // names the range.
    fs::remove(path);
    rig.warnings.clear();
    rig.drive.ClearFaults(rig.params.handle);
    rig.drive.AddReadError(rig.params.handle, 520, 1);
    EXPECT_EQ(rig.Rip(2, path), "XXX Fehler!");
    EXPECT_EQ(rig.warnings, std::vector<std::string>{});
    EXPECT_TRUE(test::FileBytes(path) == Bytes(whole.begin(), whole.begin() + 44 + 8 * kBlock));
    EXPECT_EQ(rig.RipToMemory(2), std::nullopt);
    EXPECT_EQ(rig.warnings, std::vector<std::string>{"Lesefehler in Range 516 - 524."});
}

// The table of contents (no file made), a file that cannot be opened: each warns, and the row
// keeps its text. (A disk that fills up: the rip job's tests.)
TEST(RipTrack, TableOfContentsAndFileErrorsWarn) {
    Rig rig(discgen::AudioThreeTracks());
    const fs::path path = rig.folder / "Lied.wav";
    rig.drive.TimeOutNextCommands(rig.params.handle, 1);
    EXPECT_EQ(rig.Rip(1, path), std::nullopt);
    EXPECT_FALSE(fs::exists(path));
    rig.drive.TimeOutNextCommands(rig.params.handle, 1);
    EXPECT_EQ(rig.RipToMemory(1), std::nullopt);
    EXPECT_EQ(rig.progress, (std::vector<int>{0, 0}));

    EXPECT_EQ(rig.Rip(4, path), std::nullopt);  // past the last track: nothing to read
    EXPECT_FALSE(fs::exists(path));
    const fs::path missing = rig.folder / "fehlt" / "Lied.wav";
    EXPECT_EQ(rig.Rip(1, missing), std::nullopt);
    ASSERT_EQ(rig.warnings.size(), 3u);
    EXPECT_EQ(rig.warnings[0], "Konnte TOC Format 0 nicht lesen.");
    EXPECT_EQ(rig.warnings[1], "Konnte TOC Format 0 nicht lesen.");
    EXPECT_NE(rig.warnings[2].find(missing.string()), std::string::npos) << rig.warnings[2];
    EXPECT_NE(rig.warnings[2].find("geöffnet"), std::string::npos);
}
