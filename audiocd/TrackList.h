// The table of contents of the disc in a drive, read into the rows of the track list.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ISCSI.h"

namespace plattmix::audiocd {

// Texts the track list shows instead of rows (looked up in the language file by the window).
inline constexpr const char* kTextNoDisc = "Keine Disk im Laufwerk";
inline constexpr const char* kTextNotReady = "Laufwerk nicht bereit! Button --> Aktualisieren";
inline constexpr const char* kTextBlankDisc = "Leere CD im Laufwerk!";
inline constexpr const char* kTextAudio = "Audio";
inline constexpr const char* kTextData = "Daten";

struct TrackRow {
    int track = 0;
    std::string dauer;   // "mm:ss"
    std::string anfang;  // "mm:ss:ff"
    std::string ende;    // start of the next descriptor or the session's lead-out, "mm:ss:ff"
    std::string inhalt;  // "Audio" or "Daten"
    int32_t startLba = 0;
    int32_t endLba = 0;  // first block after the track
};

struct TrackList {
    std::vector<TrackRow> rows;
    std::string emptyText;  // why there are no rows (German key); empty when rows were read
    bool isDataCD = false;  // the disc holds data tracks only
};

// 1 for a data track, 0 for audio, from the descriptor's ADR/control byte. The copy bit is
// ignored.
int IsDataTrack(uint8_t adrControl);

// Whole minutes and remaining whole seconds, two digits at least: 245900 ms gives "04:05".
std::string FormatDauer(int64_t milliseconds);

// TEST UNIT READY, then READ TOC in MSF form and the sessions, then one row per track.
TrackList ReadTrackList(scsi::ISCSI& transport, std::string handle);

}  // namespace plattmix::audiocd
