// The secure mode through the disc-image drive and a local AccurateRip server: what is read how
// often, the files against the disc's true audio, the rows' verdicts, the log and the cue sheet;
// the CRC-32 that names each pass.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "AccurateRipFetch.h"
#include "AccurateRipFile.h"
#include "AccurateRipIds.h"
#include "Crc32.h"
#include "CurlHttpGet.h"
#include "Fixtures.h"
#include "RipRig.h"
#include "SecureRipJob.h"
#include "common/LocalHttpServer.h"

using namespace plattmix;
namespace fs = std::filesystem;

namespace {

using test::WholeTrackWav;

// The disc as a drive without quirks reads it: the same name, so the same audio.
discgen::DiscDescription WithoutQuirks(discgen::DiscSpec spec) {
    spec.drive = {};
    return test::WrittenDisc(spec, test::ScratchFolder("secure-truth"));
}

// A secure rip to WAV, asking a local AccurateRip server.
struct SecureRig : test::RipRig {
    test::LocalHttpServer server;
    audiocd::SecureRipParams secure;

    explicit SecureRig(const discgen::DiscSpec& spec, const std::string& sub = "rig")
        : RipRig(spec, sub) {
        secure.accurateRipServer = server.Url();
        secure.httpGet = audiocd::CurlHttpGet;
        secure.driveName = "Plattmix Abbildlaufwerk";
        secure.extension = ".wav";
    }
    // The server knows the disc with the true audio of truth, with the given confidence; the
    // track at position `wrong` with a differing checksum.
    void Serve(const discgen::DiscDescription& truth, int confidence = 12, size_t wrong = 99) {
        auto response = discgen::AccurateRipResponseOf(truth, confidence);
        ASSERT_TRUE(response.ok()) << response.error;
        if (wrong < response.value->tracks.size())
            response.value->tracks[wrong].crc ^= 1;
        const std::vector<audiocd::AccurateRipResponse> responses{*response.value};
        server.Set("/" + audiocd::AccurateRipRecordPath(discgen::AccurateRipIdsOf(truth)),
                   {200, discgen::MakeAccurateRipFile(responses)});
    }
    audiocd::SecureRipResult Run() {
        secure.rip = params;
        return audiocd::RunSecureRipJob(drive, secure, hooks, RowText(), {});
    }
    bool Exact(int position, const std::vector<uint8_t>& expected) const {
        return Written("Track0" + std::to_string(position) + ".wav") == expected;
    }
    std::string Text(const std::string& name) const {
        return test::WholeFile(folder / "out" / name);
    }
};

size_t Count(const std::string& text, const std::string& part) {
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

}  // namespace

// An Enhanced CD the server knows: its record is found, every audio track matches, the last one
// up to the audio session's lead-out.
TEST(SecureRip, AKnownDiscIsReadOnceAndMatchesEveryTrack) {
    SecureRig rig(discgen::Enhanced());
    rig.Serve(rig.disc);
    EXPECT_TRUE(rig.Run().allProven);
    EXPECT_TRUE(rig.warnings.empty());
    for (int position = 1; position <= 2; ++position) {
        EXPECT_EQ(rig.LastText(static_cast<size_t>(position - 1)),
                  "Track0" + std::to_string(position) +
                      ".wav -->Fertig (AccurateRip: übereinstimmend, 12)");
        EXPECT_TRUE(rig.Exact(position, WholeTrackWav(rig.disc, position))) << position;
    }
    EXPECT_EQ(Count(rig.Text("Rip.log"), "übereinstimmend (Vertrauen 12)"), 2u);
}

// Unknown to the server, or known with a differing checksum: two passes that agree prove it.
TEST(SecureRip, WithoutAMatchingRecordTwoAgreeingPassesProveTheTrack) {
    SecureRig unknown(discgen::AudioThreeTracks(), "unknown");
    const auto result = unknown.Run();
    EXPECT_TRUE(result.allProven);
    EXPECT_EQ(result.accurateRipStatus, audiocd::kAccurateRipUnknownDisc);
    EXPECT_EQ(unknown.LastText(1), "Track02.wav -->Fertig (AccurateRip: unbekannt)");
    EXPECT_TRUE(unknown.Exact(2, WholeTrackWav(unknown.disc, 2)));

    SecureRig differing(discgen::AudioThreeTracks(), "differing");
    differing.Serve(differing.disc, 7, 1);
    EXPECT_TRUE(differing.Run().allProven);
    EXPECT_EQ(differing.LastText(0), "Track01.wav -->Fertig (AccurateRip: übereinstimmend, 7)");
    EXPECT_EQ(differing.LastText(1), "Track02.wav -->Fertig (AccurateRip: abweichend)");
    EXPECT_NE(differing.Text("Rip.log").find("Zusammenfassung: 3 von 3 Tracks bewiesen (2 durch "
                                             "AccurateRip, 1 durch Prüfen und Kopieren).\n"),
              std::string::npos);
}

TEST(SecureRip, TheDrivesOffsetIsUndone) {
    const auto truth = WithoutQuirks(discgen::ReadsLate());
    SecureRig rig(discgen::ReadsLate());
    rig.Serve(truth);
    rig.secure.offset = discgen::kReadsLateSamples;
    EXPECT_TRUE(rig.Run().allProven);
    for (int position = 1; position <= 3; ++position) {
        auto expected = WholeTrackWav(truth, position);
        // The drive cannot read past the lead-out: the disc's last samples come as silence.
        if (position == 3)
            std::fill(expected.end() - discgen::kReadsLateSamples * 4, expected.end(), 0);
        EXPECT_TRUE(rig.Exact(position, expected)) << position;
    }
    EXPECT_EQ(Count(rig.Text("Rip.log"), "übereinstimmend"), 3u);
}

TEST(SecureRip, FlakySectorsAreReadAgainUntilAMajorityAgrees) {
    const auto truth = WithoutQuirks(discgen::FlakySectors());
    SecureRig rig(discgen::FlakySectors());  // unknown to the server: two passes
    EXPECT_TRUE(rig.Run().allProven) << rig.Text("Rip.log");
    EXPECT_TRUE(rig.Exact(2, WholeTrackWav(truth, 2)));
    EXPECT_EQ(Count(rig.Text("Rip.log"), "Erneut gelesen:      0 Sektoren"), 2u);

    // Sectors that never read the same twice: the track fails, its file stays, the log says why.
    discgen::DiscSpec hopeless = discgen::FlakySectors();
    hopeless.drive.flaky.front().probability = 1.0;
    SecureRig lost(hopeless, "lost");
    EXPECT_FALSE(lost.Run().allProven);
    EXPECT_TRUE(fs::exists(lost.folder / "out" / "Track02.wav"));
    EXPECT_NE(lost.Text("Rip.log").find("nicht überein"), std::string::npos);
}

TEST(SecureRip, TheCueSheetCarriesCatalogIsrcAndPregaps) {
    SecureRig rig(discgen::CatalogAndIsrc());  // track 2 with INDEX 00, track 3 with PREGAP
    rig.Run();
    EXPECT_EQ(rig.Text("Rip.cue"),
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

// The checksum each pass is named by is the common CRC-32 (zlib, cksum -a crc32b), however the
// bytes arrive (in pieces around its eight-byte steps, or as counted zeros).
TEST(Crc32, MatchesTheCheckValuePiecewiseAndWithZeros) {
    const std::string digits = "123456789";
    EXPECT_EQ(audiocd::Crc32::Of({reinterpret_cast<const uint8_t*>(digits.data()), 9}),
              0xCBF43926u);
    std::vector<uint8_t> data(1000);
    for (size_t i = 0; i < data.size(); ++i)
        data[i] = static_cast<uint8_t>(i * 7 + 3);
    for (const size_t cut : {size_t{1}, size_t{7}, size_t{9}, size_t{999}}) {
        audiocd::Crc32 crc;
        crc.Update(std::span<const uint8_t>(data).first(cut));
        crc.Update(std::span<const uint8_t>(data).subspan(cut));
        EXPECT_EQ(crc.Value(), audiocd::Crc32::Of(data)) << "cut at " << cut;
    }
    std::vector<uint8_t> zeros(2352 * 3 + 6, 0);
    zeros[0] = 'x';
    audiocd::Crc32 viaZeros;
    viaZeros.Update(std::vector<uint8_t>{'x'});
    viaZeros.UpdateZeros(zeros.size() - 1);
    EXPECT_EQ(viaZeros.Value(), audiocd::Crc32::Of(zeros));
}
