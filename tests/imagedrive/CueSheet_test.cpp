// The CUE parser, the disc layout built from it and the loading of image files.
#include <gtest/gtest.h>

#include <algorithm>

#include "ImageFixture.h"
#include "imagedrive/CueSheet.h"
#include "imagedrive/DiscImage.h"
#include "imagedrive/ImageLoader.h"

namespace plattmix::scsi::imagedrive::test {
namespace {

constexpr std::string_view kFullSheet =
    "\xEF\xBB\xBFREM GENRE Pop\r\n"
    "CATALOG 4006381333931\r\n"
    "PERFORMER \"Die Band\"\r\n"
    "TITLE \"Ein Album\"\r\n"
    "FILE \"erste Seite.bin\" BINARY\r\n"
    "  TRACK 01 AUDIO\r\n"
    "    TITLE \"Lied Eins\"\r\n"
    "    PERFORMER \"Die Sängerin\"\r\n"
    "    ISRC DEA123456789\r\n"
    "    FLAGS DCP PRE\r\n"
    "    INDEX 01 00:00:00\r\n"
    "  track 02 audio\r\n"
    "    INDEX 00 00:01:00\r\n"
    "    INDEX 01 00:02:00\r\n"
    "    INDEX 02 00:02:10\r\n"
    "    POSTGAP 00:00:05\r\n"
    "FILE daten.bin BINARY\r\n"
    "  TRACK 03 MODE1/2048\r\n"
    "    PREGAP 00:02:00\r\n"
    "    INDEX 01 00:00:00\r\n";

TEST(CueSheetTest, ReadsFilesTracksIndexesTextAndFlagsAndPlacesThemOnTheDisc) {
    const auto parsed = ParseCueSheet(kFullSheet, "/bilder", "demo.cue");
    ASSERT_TRUE(parsed.ok()) << parsed.Error();
    const CueSheet& sheet = parsed.Value();
    // Texts reach the drive's CD-Text (CdTextReply_test) and generated discs (discgen), the
    // catalog and ISRCs the secure rip's cue sheet.
    ASSERT_EQ(sheet.files.size(), 2u);
    EXPECT_EQ(sheet.files[0].path, "/bilder/erste Seite.bin");
    ASSERT_EQ(sheet.files[0].tracks.size(), 2u);
    EXPECT_EQ(sheet.files[0].tracks[0].performer, "Die Sängerin");

    const CueTrack& second = sheet.files[0].tracks[1];
    ASSERT_EQ(second.indexes.size(), 3u);
    EXPECT_EQ(second.indexes[2].frames, 160);  // INDEX 00, 01 and POSTGAP: the layout below

    const int64_t sizes[] = {300 * 2352, 40 * 2048};
    const auto disc = LayoutDisc(sheet, sizes, "demo.cue");
    ASSERT_TRUE(disc.ok()) << disc.Error();
    const auto& tracks = disc.Value().tracks;
    ASSERT_EQ(tracks.size(), 3u);
    // Track 1: file sectors 0..74. Track 2: INDEX 00 at 75, INDEX 01 at 150, file to 299,
    // then 5 postgap sectors. Track 3: 150 pregap sectors without file bytes, then 40 sectors.
    // Each: area start, start, end, first sector from the file, its byte offset, control.
    const int64_t expected[3][6] = {{0, 0, 75, 0, 0, 0x3},  // copy permitted, pre-emphasis
                                    {75, 150, 305, 75, 75 * 2352, 0},
                                    {305, 455, 495, 455, 0, 0x4}};
    for (size_t i = 0; i < 3; ++i) {
        const DiscTrack& t = tracks[i];
        const int64_t got[6] = {t.areaStart, t.start, t.end, t.fileFirst, t.fileOffset, t.control};
        EXPECT_TRUE(std::equal(got, got + 6, expected[i])) << "track " << i + 1;
    }
    EXPECT_EQ(disc.Value().LeadOut(), 495);
}

struct BadSheet {
    std::string_view text;
    std::string_view message;
};

TEST(CueSheetTest, RejectsBadSheetsNamingFileAndLine) {
    const BadSheet cases[] = {
        {"FILE a.bin BINARY\nTRACK 01 AUDIO\nGAP 00:00:00\n",
         "demo.cue, Zeile 3: unbekanntes Schlüsselwort 'GAP'"},
        {"TRACK 01 AUDIO\n", "demo.cue, Zeile 1: TRACK vor der ersten FILE-Zeile"},
        {"FILE a.bin BINARY\n\nTRACK 01 MODE2/2336\n",
         "demo.cue, Zeile 3: Spurart 'MODE2/2336' nicht unterstützt"},
        {"FILE a.wav WAVE\n", "demo.cue, Zeile 1: Dateityp 'WAVE' nicht unterstützt"},
        {"FILE \"a b.bin BINARY\n", "demo.cue, Zeile 1: Anführungszeichen nicht geschlossen"},
        {"FILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:75\n",
         "demo.cue, Zeile 3: ungültige Zeitangabe '00:00:75'"},
        {"FILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 02 00:00:00\n",
         "demo.cue, Zeile 3: INDEX 02 außer der Reihe"},
        {"FILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:05:00\nTRACK 02 AUDIO\n"
         "INDEX 01 00:04:00\n",
         "demo.cue, Zeile 5: INDEX 01 liegt nicht hinter dem vorigen"},
        {"FILE a.bin BINARY\nTRACK 02 AUDIO\nINDEX 01 00:00:00\nTRACK 02 AUDIO\n",
         "demo.cue, Zeile 4: Spurnummer 02 nicht aufsteigend"},
        {"FILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 00 00:00:00\n",
         "demo.cue, Zeile 2: Spur ohne INDEX 01"},
        {"REM nur ein Kommentar\n", "demo.cue: keine Datei (FILE) angegeben"},
        {"FILE a.bin BINARY\nFILE b.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n",
         "demo.cue, Zeile 1: Datei ohne Spur (TRACK)"},
        {"REM SESSION 02\nFILE a.bin BINARY\n", "demo.cue, Zeile 1: Sitzung 1 hat keine Spur"},
    };
    for (const BadSheet& bad : cases) {
        const auto parsed = ParseCueSheet(bad.text, "", "demo.cue");
        ASSERT_FALSE(parsed.ok()) << bad.text;
        EXPECT_EQ(parsed.Error(), bad.message) << bad.text;
    }
}

TEST(DiscLayoutTest, SectorSizesMixInAFileWhoseSizeMustFit) {
    const auto mixed = ParseCueSheet(
        "FILE a.bin BINARY\nTRACK 01 MODE1/2048\nINDEX 01 00:00:00\n"
        "TRACK 02 AUDIO\nINDEX 01 00:00:10\n",
        "", "m.cue");
    ASSERT_TRUE(mixed.ok());
    const int64_t mixedSize[] = {10 * 2048 + 4 * 2352};
    const auto disc = LayoutDisc(mixed.Value(), mixedSize, "m.cue");
    ASSERT_TRUE(disc.ok()) << disc.Error();
    EXPECT_EQ(disc.Value().tracks[1].fileOffset, 10 * 2048);
    EXPECT_EQ(disc.Value().tracks[1].fileCount, 4);

    const auto audio = ParseCueSheet(
        "FILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"
        "TRACK 02 AUDIO\nINDEX 01 00:01:00\n",
        "", "s.cue");
    ASSERT_TRUE(audio.ok());
    const int64_t tooShort[] = {50 * 2352};
    EXPECT_EQ(LayoutDisc(audio.Value(), tooShort, "s.cue").Error(),
              "s.cue, Zeile 5: Datei 'a.bin' ist zu kurz");
    const int64_t ragged[] = {80 * 2352 + 100};
    EXPECT_EQ(LayoutDisc(audio.Value(), ragged, "s.cue").Error(),
              "s.cue, Zeile 1: Datei 'a.bin' endet mitten in einem Sektor");
}

// ISO files load in the drive test bed, beside a real drive holding the same image.
TEST(ImageLoaderTest, ReportsMissingAndDamagedFiles) {
    const fs::path folder = Scratch();
    WriteText(folder / "fehlt.cue",
              "REM\nFILE weg.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
    WriteBytes(folder / "krumm.iso", std::vector<uint8_t>(2048 + 1));
    EXPECT_EQ(LoadImage((folder / "fehlt.cue").string()).Error(),
              "fehlt.cue, Zeile 2: Datei 'weg.bin' nicht gefunden");
    EXPECT_EQ(LoadImage((folder / "krumm.iso").string()).Error(),
              "krumm.iso: Größe ist kein Vielfaches von 2048 Bytes");
    EXPECT_EQ(LoadImage((folder / "nix.cue").string()).Error(), "nix.cue: Datei nicht gefunden");
    EXPECT_FALSE(LoadImage((folder / "bild.nrg").string()).ok());
}

}  // namespace
}  // namespace plattmix::scsi::imagedrive::test
