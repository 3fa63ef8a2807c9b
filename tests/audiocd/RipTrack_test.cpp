// Extracting tracks from generated discs through the disc-image drive: the bytes written, the
// result texts, the messages and what stays on disk when something fails.
#include <gtest/gtest.h>
#include <scsi/sg.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "DiscWriter.h"
#include "Fixtures.h"
#include "RipTrack.h"
#include "WavHeader.h"
#include "clsSPTI.h"
#include "common/ScratchFolder.h"
#include "imagedrive/clsImageDrive.h"

using namespace plattmix;
using scsi::imagedrive::clsImageDrive;
namespace fs = std::filesystem;

namespace {

using Bytes = std::vector<uint8_t>;
constexpr int64_t kSector = 2352;
constexpr int64_t kBlock = 27 * kSector;

Bytes ReadAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

// What a ripped track must hold: the header and `sectors` sectors from the track's start,
// taken straight from its BIN file.
Bytes ExpectedWav(const discgen::DiscSpec& spec, const discgen::DiscDescription& disc, size_t index,
                  int64_t sectors) {
    const int file = spec.tracks[index].file;
    int64_t offset = 0;
    for (size_t i = 0; i < index; ++i) {
        if (spec.tracks[i].file == file)
            offset += int64_t{spec.tracks[i].sectors} * kSector;
    }
    const auto header = audiocd::WavHeader(sectors * kSector);
    Bytes wav(header->begin(), header->end());
    if (sectors <= 0)
        return wav;
    const Bytes bin = ReadAll(disc.files[static_cast<size_t>(file)].path);
    const auto from = bin.begin() + offset;
    wav.insert(wav.end(), from, from + sectors * kSector);
    return wav;
}

// A generated disc in an image drive, and a record of what the hooks were told.
struct Rig {
    discgen::DiscSpec spec;
    discgen::DiscDescription disc;
    clsImageDrive drive;
    std::string handle;
    fs::path folder;
    std::vector<std::string> warnings;
    std::vector<int> progress;
    int yields = 0;

    audiocd::JobHooks Hooks() {
        audiocd::JobHooks hooks;
        hooks.progress = [this](int p) { progress.push_back(p); };
        hooks.yield = [this] { ++yields; };
        hooks.warn = [this](const std::string& text) { warnings.push_back(text); };
        return hooks;
    }
    std::optional<std::string> Rip(int16_t track, const fs::path& path) {
        return audiocd::RipTrackWav(drive, handle, track, path.string(), "Lied", Hooks());
    }
    std::optional<Bytes> RipToMemory(int16_t track) {
        return audiocd::RipTrackToMemory(drive, handle, track, Hooks());
    }
    int32_t Start(size_t index) const { return disc.tracks[index].startLba; }
};

// cueEdit may rewrite the sheet before the drive loads it.
std::unique_ptr<Rig> Load(discgen::DiscSpec spec, void (*cueEdit)(std::string&) = nullptr) {
    auto rig = std::make_unique<Rig>();
    rig->folder = test::ScratchFolder();
    auto written = discgen::WriteDisc(spec, rig->folder);
    EXPECT_TRUE(written.ok()) << written.error;
    if (!written.ok())
        return nullptr;
    rig->spec = std::move(spec);
    rig->disc = *written.value;
    if (cueEdit != nullptr) {
        std::string cue = rig->disc.cueText;
        cueEdit(cue);
        std::ofstream(rig->disc.cuePath, std::ios::binary) << cue;
    }
    const auto handle = rig->drive.AddDrive(rig->disc.cuePath.string());
    EXPECT_TRUE(handle.ok()) << handle.Error();
    if (!handle.ok())
        return nullptr;
    rig->handle = handle.Value();
    return rig;
}

void RenumberFromFive(std::string& cue) {
    for (const char* number : {"03", "02", "01"}) {
        const std::string from = std::string("TRACK ") + number;
        const std::string to = "TRACK 0" + std::to_string(std::stoi(number) + 4);
        cue.replace(cue.find(from), from.size(), to);
    }
}

discgen::DiscSpec ExactBlockInTheMiddle() {
    auto spec = discgen::ExactBlockMultiple();
    spec.tracks[1].sectors = 11 * 27 + 1;  // last - first = 11 blocks exactly
    return spec;
}

struct RipCase {
    const char* what;
    discgen::DiscSpec (*spec)();
    void (*cueEdit)(std::string&);
    int16_t track;           // row position
    int64_t sectorsLeftOff;  // from the track's span: 1, or 151 for the disc's last track
};

void PrintTo(const RipCase& c, std::ostream* os) {
    *os << c.what;
}

class RipsTheImage : public ::testing::TestWithParam<RipCase> {};

}  // namespace

TEST_P(RipsTheImage, FileAndMemoryHoldHeaderAndTheSectorsUpToLastLba) {
    const RipCase& c = GetParam();
    auto rig = Load(c.spec(), c.cueEdit);
    ASSERT_TRUE(rig);
    const auto index = static_cast<size_t>(c.track - 1);
    const int64_t sectors = rig->disc.tracks[index].lengthSectors - c.sectorsLeftOff;
    const Bytes expected = ExpectedWav(rig->spec, rig->disc, index, sectors);
    // The sector at the last LBA is never asked for.
    rig->drive.AddReadError(rig->handle, rig->Start(index) + static_cast<int32_t>(sectors), 1);

    const fs::path path = rig->folder / "Lied.wav";
    EXPECT_EQ(rig->Rip(c.track, path), "Lied.wav -->Fertig");
    EXPECT_TRUE(ReadAll(path) == expected) << "file of " << ReadAll(path).size() << " bytes";
    EXPECT_EQ(rig->warnings, std::vector<std::string>{});
    const int64_t fullBlocks = sectors > 0 ? sectors / 27 : 0;
    EXPECT_EQ(rig->yields, 1 + fullBlocks);
    ASSERT_FALSE(rig->progress.empty());
    EXPECT_EQ(rig->progress.front(), 0);
    if (sectors > 0 && sectors % 27 == 0) {
        EXPECT_EQ(rig->progress.back(), 100);
    }

    const auto image = rig->RipToMemory(c.track);
    ASSERT_TRUE(image);
    EXPECT_TRUE(*image == expected) << "image of " << image->size() << " bytes";
}

INSTANTIATE_TEST_SUITE_P(
    Discs, RipsTheImage,
    ::testing::Values(
        RipCase{"BlocksAndRemainder", discgen::ExactBlockMultiple, nullptr, 1, 1},
        RipCase{"ExactBlocks", ExactBlockInTheMiddle, nullptr, 2, 1},
        RipCase{"LastTrackTrimmed", discgen::ExactBlockMultiple, nullptr, 3, 151},
        RipCase{"AudioAfterData", discgen::DataTrackFirst, nullptr, 2, 1},
        RipCase{"LastAfterData", discgen::DataTrackFirst, nullptr, 3, 151},
        // An Enhanced CD: the audio session's last track ends at that session's lead-out.
        RipCase{"LastOfTheAudioSession", discgen::Enhanced, nullptr, 2, 151},
        RipCase{"FirstTrackFiveFirstRow", discgen::AudioThreeTracks, RenumberFromFive, 1, 1},
        // The last-track field says 7, no row position reaches it: nothing is trimmed.
        RipCase{"FirstTrackFiveLastRow", discgen::AudioThreeTracks, RenumberFromFive, 3, 1},
        RipCase{"OneSectorTrackIsEmpty", discgen::TinyTracks, nullptr, 1, 1},
        RipCase{"TinyLastTrackHeaderOnly", discgen::TinyTracks, nullptr, 4, 151}),
    [](const auto& param) { return std::string(param.param.what); });

TEST(RipTrackWav, LongerFileKeepsItsTail) {
    auto rig = Load(discgen::AudioThreeTracks());
    ASSERT_TRUE(rig);
    const fs::path path = rig->folder / "Lied.wav";
    const int64_t sectors = rig->disc.tracks[1].lengthSectors - 1;
    const int64_t oldSize = 44 + sectors * kSector + 5000;
    std::ofstream(path, std::ios::binary) << std::string(static_cast<size_t>(oldSize), '\xEE');

    EXPECT_EQ(rig->Rip(2, path), "Lied.wav -->Fertig");
    const Bytes file = ReadAll(path);
    ASSERT_EQ(static_cast<int64_t>(file.size()), oldSize);
    const Bytes expected = ExpectedWav(rig->spec, rig->disc, 1, sectors);
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), file.begin()));
    EXPECT_TRUE(std::all_of(file.begin() + static_cast<std::ptrdiff_t>(expected.size()), file.end(),
                            [](uint8_t b) { return b == 0xEE; }));
}

// Track 2 of AudioThreeTracks: LBA 300 to 524, 8 full blocks and 8 sectors left over.
TEST(RipTrackWav, ReadErrorsInAFullBlockAndInTheRemainder) {
    auto rig = Load(discgen::AudioThreeTracks());
    ASSERT_TRUE(rig);
    ASSERT_EQ(rig->Start(1), 300);
    const fs::path path = rig->folder / "Lied.wav";
    const Bytes whole = ExpectedWav(rig->spec, rig->disc, 1, 224);

    // Sector 359 lies in the third block, 354 to 381: header and two blocks stay behind.
    rig->drive.AddReadError(rig->handle, 359, 1);
    EXPECT_EQ(rig->Rip(2, path), std::nullopt);
    EXPECT_EQ(rig->warnings, std::vector<std::string>{"Lesefehler in Range 354 - 381."});
    EXPECT_TRUE(ReadAll(path) == Bytes(whole.begin(), whole.begin() + 44 + 2 * kBlock));

    // In the remainder (516 to 524) the row says so and no message appears.
    fs::remove(path);
    rig->warnings.clear();
    rig->drive.ClearFaults(rig->handle);
    rig->drive.AddReadError(rig->handle, 520, 1);
    EXPECT_EQ(rig->Rip(2, path), "XXX Fehler!");
    EXPECT_EQ(rig->warnings, std::vector<std::string>{});
    EXPECT_TRUE(ReadAll(path) == Bytes(whole.begin(), whole.begin() + 44 + 8 * kBlock));
}

// The pass-through transport over a node whose SG_IO requests reach the image drive; the READ CD
// at shortLba delivers one sector less, with the residual count a kernel reports, and leaves the
// rest of the buffer holding the previous block.
std::unique_ptr<scsi::clsSPTI> ShortReadingNode(Rig& rig, int32_t shortLba) {
    fs::create_directories(rig.folder / "block" / "sr0");
    fs::create_directories(rig.folder / "dev");
    std::ofstream(rig.folder / "dev" / "sr0") << "node";
    auto sgIo = [&rig, shortLba](int, sg_io_hdr& h) {
        const std::span<const uint8_t> cdb(static_cast<const uint8_t*>(h.cmdp), h.cmd_len);
        uint8_t cdblen = h.cmd_len;
        int32_t direction = h.dxfer_direction == SG_DXFER_FROM_DEV ? 0 : 1;
        int16_t timeOut = 5;
        Bytes reply(h.dxfer_len);
        h.status =
            static_cast<uint8_t>(rig.drive.ExecCMD(rig.handle, cdb, cdblen, direction, reply.data(),
                                                   static_cast<int32_t>(reply.size()), timeOut));
        const auto lba = static_cast<int32_t>(uint32_t{cdb[2]} << 24 | uint32_t{cdb[3]} << 16 |
                                              uint32_t{cdb[4]} << 8 | cdb[5]);
        const bool cut = cdb[0] == 0xBE && lba == shortLba;
        const size_t delivered = reply.size() - (cut ? static_cast<size_t>(kSector) : 0);
        std::copy_n(reply.begin(), delivered, static_cast<uint8_t*>(h.dxferp));
        h.resid = static_cast<int>(reply.size() - delivered);
        return 0;
    };
    return std::make_unique<scsi::clsSPTI>((rig.folder / "block").string(),
                                           (rig.folder / "dev").string(), sgIo);
}

// A READ CD that the drive answers GOOD but short is a read error, on both paths: no audio is
// taken from the bytes that did not come.
TEST(RipTrack, ShortReadCdIsAReadError) {
    auto rig = Load(discgen::AudioThreeTracks());
    ASSERT_TRUE(rig);
    auto node = ShortReadingNode(*rig, 354);
    const fs::path path = rig->folder / "Lied.wav";
    const Bytes whole = ExpectedWav(rig->spec, rig->disc, 1, 224);
    EXPECT_EQ(audiocd::RipTrackWav(*node, "sr0", 2, path.string(), "Lied", rig->Hooks()),
              std::nullopt);
    EXPECT_TRUE(ReadAll(path) == Bytes(whole.begin(), whole.begin() + 44 + 2 * kBlock));
    EXPECT_EQ(audiocd::RipTrackToMemory(*node, "sr0", 2, rig->Hooks()), std::nullopt);
    EXPECT_EQ(rig->warnings, (std::vector<std::string>{"Lesefehler in Range 354 - 381.",
                                                       "Lesefehler in Range 354 - 381."}));
}

TEST(RipTrackToMemory, EveryReadErrorNamesItsRange) {
    auto rig = Load(discgen::AudioThreeTracks());
    ASSERT_TRUE(rig);
    rig->drive.AddReadError(rig->handle, 359, 1);
    EXPECT_EQ(rig->RipToMemory(2), std::nullopt);
    rig->drive.ClearFaults(rig->handle);
    rig->drive.AddReadError(rig->handle, 523, 1);
    EXPECT_EQ(rig->RipToMemory(2), std::nullopt);
    EXPECT_EQ(rig->warnings, (std::vector<std::string>{"Lesefehler in Range 354 - 381.",
                                                       "Lesefehler in Range 516 - 524."}));
}

TEST(RipTrack, TableOfContentsFailureWarnsAndWritesNothing) {
    auto rig = Load(discgen::AudioThreeTracks());
    ASSERT_TRUE(rig);
    const fs::path path = rig->folder / "Lied.wav";
    rig->drive.TimeOutNextCommands(rig->handle, 1);
    EXPECT_EQ(rig->Rip(1, path), std::nullopt);
    EXPECT_FALSE(fs::exists(path));
    rig->drive.TimeOutNextCommands(rig->handle, 1);
    EXPECT_EQ(rig->RipToMemory(1), std::nullopt);
    EXPECT_EQ(rig->warnings, (std::vector<std::string>{"Konnte TOC Format 0 nicht lesen.",
                                                       "Konnte TOC Format 0 nicht lesen."}));
    EXPECT_EQ(rig->progress, (std::vector<int>{0, 0}));
}

TEST(RipTrackWav, FileErrorsWarnWithTheFileAndLeaveTheRow) {
    auto rig = Load(discgen::AudioThreeTracks());
    ASSERT_TRUE(rig);
    const fs::path missing = rig->folder / "fehlt" / "Lied.wav";
    EXPECT_EQ(rig->Rip(1, missing), std::nullopt);
    EXPECT_EQ(rig->Rip(1, "/dev/full"), std::nullopt);  // every write: no space left
    ASSERT_EQ(rig->warnings.size(), 2u);
    EXPECT_NE(rig->warnings[0].find(missing.string()), std::string::npos) << rig->warnings[0];
    EXPECT_NE(rig->warnings[0].find("geöffnet"), std::string::npos);
    EXPECT_NE(rig->warnings[1].find("/dev/full"), std::string::npos) << rig->warnings[1];
    EXPECT_NE(rig->warnings[1].find("Schreiben"), std::string::npos);
}
