// The rip's log and cue sheet: their exact text, and the message when the log cannot be written.
#include "RipLog.h"

#include <gtest/gtest.h>

#include <string>

#include "RipCue.h"
#include "common/ScratchFolder.h"

namespace plattmix::audiocd {
namespace {

TEST(RipLog, SaysPerTrackHowItWasProvenAndSumsUp) {
    using Kind = AccurateRipVerdict::Kind;
    const std::string problem = "Die Durchgänge stimmen nicht überein.";
    const RipLogTrack proven{1, "Track01.flac", RipProof::AccurateRip, {0x0badf00du},
                             0, 0x1234abcdu,    0x00c0ffeeu,           {Kind::Matching, 12},
                             ""};
    const RipLogTrack failed{2,      "Track02.flac", RipProof::None, {0x11111111u, 0x22222222u},
                             27,     0xau,           0xbu,           {Kind::Differing, 0},
                             problem};
    RipLog log;
    log.program = "Plattmix 9.9";
    log.drive = "PLEXTOR DVDR   PX-716A  1.11";
    log.offset = 667;
    log.accurateRipId = "002-0000168a-00002d14-0a000502";
    log.tracks = {proven, failed};
    EXPECT_FALSE(log.AllProven());
    EXPECT_EQ(FormatRipLog(log),
              "Plattmix 9.9 - Protokoll des Rippens\n"
              "\n"
              "Laufwerk:              PLEXTOR DVDR   PX-716A  1.11\n"
              "Leseversatz:           +667 Samples\n"
              "Modus:                 sicher (AccurateRip, sonst Prüfen und Kopieren)\n"
              "AccurateRip-Kennung:   002-0000168a-00002d14-0a000502\n"
              "\n"
              "Track 01\n"
              "  Datei:               Track01.flac\n"
              "  Nachweis:            AccurateRip\n"
              "  CRC-32 je Durchgang: 0badf00d\n"
              "  Erneut gelesen:      0 Sektoren\n"
              "  AccurateRip v1:      1234abcd\n"
              "  AccurateRip v2:      00c0ffee\n"
              "  AccurateRip:         übereinstimmend (Vertrauen 12)\n"
              "\n"
              "Track 02\n"
              "  Datei:               Track02.flac\n"
              "  Nachweis:            keiner\n"
              "  CRC-32 je Durchgang: 11111111 22222222\n"
              "  Erneut gelesen:      27 Sektoren\n"
              "  AccurateRip v1:      0000000a\n"
              "  AccurateRip v2:      0000000b\n"
              "  AccurateRip:         abweichend\n"
              "  Problem:             Die Durchgänge stimmen nicht überein.\n"
              "\n"
              "Zusammenfassung: 1 von 2 Tracks bewiesen (1 durch AccurateRip, 0 durch Prüfen "
              "und Kopieren); nicht bewiesen: Track 02.\n");

    // A folder that is not there. (Writing both files: the secure mode's tests.)
    const std::string missing = (test::ScratchFolder() / "fehlt").string();
    EXPECT_EQ(WriteRipLog(missing, log),
              "Die Datei " + missing + "/Rip.log lässt sich nicht schreiben.");
}

// The CD-Text's quotes and line ends made harmless, a compressed file's type, a pregap the drive
// makes up. (Catalog, ISRC and INDEX 00: the secure mode's tests.)
TEST(RipCue, CdTextFileTypesAndPregaps) {
    CdText text;
    text.albumTitle = "Platte \"Eins\"";
    text.albumPerformer = "Die Band";
    text.titles = {{3, "Drei\r\nVier"}};  // a line end stays on the line
    text.performers = {{3, "Gast"}};
    const RipCue cue{"", text, {{3, "Track03.mp3", 750, 0, ""}, {5, "Track05.wav", 75, 33, ""}}};
    EXPECT_EQ(FormatRipCue(cue),
              "TITLE \"Platte 'Eins'\"\n"
              "PERFORMER \"Die Band\"\n"
              "FILE \"Track03.mp3\" MP3\n"
              "  TRACK 03 AUDIO\n"
              "    TITLE \"Drei  Vier\"\n"
              "    PERFORMER \"Gast\"\n"
              "    INDEX 01 00:00:00\n"
              "FILE \"Track05.wav\" WAVE\n"
              "  TRACK 05 AUDIO\n"
              "    PREGAP 00:00:33\n"
              "    INDEX 01 00:00:00\n");
}

}  // namespace
}  // namespace plattmix::audiocd
