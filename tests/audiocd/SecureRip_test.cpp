// The secure mode through the disc-image drive and a local AccurateRip server: what is read how
// often, the files against the disc's true audio, the rows' verdicts and the log.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "AccurateRipFetch.h"
#include "AccurateRipFile.h"
#include "AccurateRipIds.h"
#include "CurlHttpGet.h"
#include "DiscWriter.h"
#include "Fixtures.h"
#include "ScsiStatus.h"
#include "SecureRipJob.h"
#include "SessionToc.h"
#include "WavHeader.h"
#include "common/LocalHttpServer.h"
#include "common/ScratchFolder.h"
#include "imagedrive/clsImageDrive.h"
#include "modMMC.h"

using namespace plattmix;
using scsi::imagedrive::clsImageDrive;
namespace fs = std::filesystem;

namespace {

using Bytes = std::vector<uint8_t>;

Bytes ReadAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

std::string Text(const fs::path& path) {
    const Bytes bytes = ReadAll(path);
    return {bytes.begin(), bytes.end()};
}

// The disc as a drive without quirks reads it: the same name, so the same audio.
discgen::DiscSpec WithoutQuirks(discgen::DiscSpec spec) {
    spec.drive = {};
    return spec;
}

discgen::DiscDescription Write(const discgen::DiscSpec& spec, const fs::path& folder) {
    const auto written = discgen::WriteDisc(spec, folder);
    EXPECT_TRUE(written.ok()) << written.error;
    return written.value ? *written.value : discgen::DiscDescription{};
}

// A generated disc in an image drive, a local AccurateRip server, a secure rip to WAV.
struct SecureRig {
    fs::path folder = test::ScratchFolder("secure");
    discgen::DiscDescription disc;
    clsImageDrive drive;
    test::LocalHttpServer server;
    audiocd::SecureRipParams params;
    std::vector<std::pair<size_t, std::string>> rows;
    std::vector<std::string> warnings;

    explicit SecureRig(const discgen::DiscSpec& spec) {
        disc = Write(spec, folder / "disc");
        const auto handle = drive.AddDrive(disc.cuePath.string());
        EXPECT_TRUE(handle.ok());
        fs::create_directories(folder / "out");
        params.rip.handle = handle.ok() ? handle.Value() : "";
        params.rip.targetFolder = (folder / "out").string() + "/";
        params.rip.namePrefix = "Track";
        for (size_t i = 0; i < spec.tracks.size(); ++i)
            params.rip.rows.push_back(
                {static_cast<int>(i + 1), spec.tracks[i].mode == discgen::TrackMode::Audio});
        params.accurateRipServer = server.Url();
        params.httpGet = audiocd::CurlHttpGet;
        params.driveName = "Plattmix Abbildlaufwerk";
        params.extension = ".wav";
    }
    // The server knows the disc with the true audio of truth (the same disc, read right).
    void Serve(const discgen::DiscDescription& truth) {
        const auto response = discgen::AccurateRipResponseOf(truth, 12);
        ASSERT_TRUE(response.ok()) << response.error;
        const std::vector<audiocd::AccurateRipResponse> responses{*response.value};
        server.Set("/" + audiocd::AccurateRipRecordPath(discgen::AccurateRipIdsOf(truth)),
                   {200, discgen::MakeAccurateRipFile(responses)});
    }
    audiocd::SecureRipResult Run() {
        audiocd::JobHooks hooks;
        hooks.warn = [this](const std::string& text) { warnings.push_back(text); };
        return audiocd::RunSecureRipJob(
            drive, params, hooks,
            [this](size_t row, const std::string& text) { rows.emplace_back(row, text); }, {});
    }
    std::string Result(size_t row) const {
        std::string last;
        for (const auto& [r, text] : rows)
            if (r == row)
                last = text;
        return last;
    }
    std::string Log() const { return Text(folder / "out" / "Rip.log"); }
};

// The track's every sector as a plain drive without quirks reads it, behind the standard header.
Bytes TrueWav(const discgen::DiscDescription& truth, int position) {
    clsImageDrive plain;
    auto handle = plain.AddDrive(truth.cuePath.string()).Value();
    const auto toc = audiocd::ReadSessionToc(plain, handle);
    const auto bounds = audiocd::ExactBoundsOf(*toc, position);
    Bytes audio(static_cast<size_t>(bounds->Sectors()) * 2352);
    EXPECT_EQ(modMMC::ReadCD(plain, handle, static_cast<uint32_t>(bounds->firstLba),
                             static_cast<uint32_t>(bounds->Sectors()), audio, 0xF8),
              scsi::kStatusGood);
    const auto header = audiocd::StandardWavHeader(static_cast<int64_t>(audio.size()));
    Bytes wav(header->size() + audio.size());
    std::copy(header->begin(), header->end(), wav.begin());
    std::copy(audio.begin(), audio.end(),
              wav.begin() + static_cast<std::ptrdiff_t>(header->size()));
    return wav;
}

size_t Count(const std::string& text, const std::string& part) {
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

}  // namespace

TEST(SecureRip, AKnownDiscIsReadOnceAndMatchesEveryTrack) {
    SecureRig rig(discgen::AudioThreeTracks());
    rig.Serve(rig.disc);
    const auto result = rig.Run();
    EXPECT_TRUE(result.allProven);
    EXPECT_TRUE(rig.warnings.empty());
    for (size_t row = 0; row < 3; ++row) {
        const std::string name = "Track0" + std::to_string(row + 1) + ".wav";
        EXPECT_EQ(rig.Result(row), name + " -->Fertig (AccurateRip: übereinstimmend, 12)");
        EXPECT_TRUE(ReadAll(rig.folder / "out" / name) ==
                    TrueWav(rig.disc, static_cast<int>(row + 1)))
            << name;
    }
    const std::string log = rig.Log();
    EXPECT_EQ(Count(log, "übereinstimmend (Vertrauen 12)"), 3u) << log;
    EXPECT_TRUE(fs::exists(rig.folder / "out" / "Rip.cue"));
}

TEST(SecureRip, WithoutTheRecordEachTrackIsReadTwiceAndAgreementProvesIt) {
    SecureRig rig(discgen::AudioThreeTracks());  // the server does not know it
    const auto result = rig.Run();
    EXPECT_TRUE(result.allProven);
    EXPECT_EQ(result.accurateRipStatus, audiocd::kAccurateRipUnknownDisc);
    EXPECT_EQ(rig.Result(1), "Track02.wav -->Fertig (AccurateRip: unbekannt)");
    EXPECT_TRUE(ReadAll(rig.folder / "out" / "Track02.wav") == TrueWav(rig.disc, 2));
}

TEST(SecureRip, ADisagreeingRecordIsNamedAndTheTrackStillProvenByTwoPasses) {
    SecureRig rig(discgen::AudioThreeTracks());
    auto response = discgen::AccurateRipResponseOf(rig.disc, 7);
    ASSERT_TRUE(response.ok());
    response.value->tracks[1].crc ^= 1;
    const std::vector<audiocd::AccurateRipResponse> responses{*response.value};
    rig.server.Set("/" + audiocd::AccurateRipRecordPath(discgen::AccurateRipIdsOf(rig.disc)),
                   {200, discgen::MakeAccurateRipFile(responses)});
    EXPECT_TRUE(rig.Run().allProven);
    EXPECT_EQ(rig.Result(0), "Track01.wav -->Fertig (AccurateRip: übereinstimmend, 7)");
    EXPECT_EQ(rig.Result(1), "Track02.wav -->Fertig (AccurateRip: abweichend)");
}

TEST(SecureRip, TheDrivesOffsetIsUndone) {
    const fs::path folder = test::ScratchFolder("secure-truth");
    const auto truth = Write(WithoutQuirks(discgen::ReadsLate()), folder);
    SecureRig rig(discgen::ReadsLate());
    rig.Serve(truth);
    rig.params.offset = discgen::kReadsLateSamples;
    EXPECT_TRUE(rig.Run().allProven);
    for (int position = 1; position <= 3; ++position) {
        Bytes expected = TrueWav(truth, position);
        // The drive cannot read past the lead-out: the disc's last samples come as silence.
        if (position == 3)
            std::fill(expected.end() - discgen::kReadsLateSamples * 4, expected.end(), 0);
        EXPECT_TRUE(ReadAll(rig.folder / "out" / ("Track0" + std::to_string(position) + ".wav")) ==
                    expected)
            << position;
    }
    EXPECT_EQ(Count(rig.Log(), "übereinstimmend"), 3u) << rig.Log();
}

TEST(SecureRip, FlakySectorsAreReadAgainUntilAMajorityAgrees) {
    const fs::path folder = test::ScratchFolder("secure-truth");
    const auto truth = Write(WithoutQuirks(discgen::FlakySectors()), folder);
    SecureRig rig(discgen::FlakySectors());  // unknown to the server: two passes
    const auto result = rig.Run();
    EXPECT_TRUE(result.allProven) << rig.Log();
    EXPECT_TRUE(ReadAll(rig.folder / "out" / "Track02.wav") == TrueWav(truth, 2));
    EXPECT_EQ(Count(rig.Log(), "Erneut gelesen:      0 Sektoren"), 2u) << rig.Log();

    // Sectors that never read the same twice: the track fails, its file stays, the log says why.
    discgen::DiscSpec hopeless = discgen::FlakySectors();
    hopeless.drive.flaky.front().probability = 1.0;
    SecureRig lost(hopeless);
    EXPECT_FALSE(lost.Run().allProven);
    EXPECT_TRUE(fs::exists(lost.folder / "out" / "Track02.wav"));
    EXPECT_NE(lost.Log().find("nicht überein"), std::string::npos) << lost.Log();
}

TEST(SecureRip, AnEnhancedCdsRecordIsFoundAndItsLastAudioTrackIsExact) {
    SecureRig rig(discgen::Enhanced());
    rig.Serve(rig.disc);
    EXPECT_TRUE(rig.Run().allProven) << rig.Log();
    EXPECT_EQ(rig.Result(1), "Track02.wav -->Fertig (AccurateRip: übereinstimmend, 12)");
    EXPECT_TRUE(ReadAll(rig.folder / "out" / "Track02.wav") == TrueWav(rig.disc, 2));
}

TEST(SecureRip, TheCueSheetCarriesCatalogIsrcAndPregaps) {
    SecureRig rig(discgen::CatalogAndIsrc());  // track 2 with INDEX 00, track 3 with PREGAP
    rig.Run();
    EXPECT_EQ(Text(rig.folder / "out" / "Rip.cue"),
              "CATALOG 4006381333931\n"
              "FILE \"Track01.wav\" WAVE\n"
              "  TRACK 01 AUDIO\n"
              "    ISRC DEA123400001\n"
              "    INDEX 01 00:00:00\n"
              "  TRACK 02 AUDIO\n"
              "    ISRC DEA123400002\n"
              "    INDEX 00 00:04:00\n"
              "FILE \"Track02.wav\" WAVE\n"
              "    INDEX 01 00:00:00\n"
              "  TRACK 03 AUDIO\n"
              "    INDEX 00 00:03:00\n"
              "FILE \"Track03.wav\" WAVE\n"
              "    INDEX 01 00:00:00\n");
}
