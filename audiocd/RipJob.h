// The ripping page's Start command after its checks: every checked row, in order, named and
// extracted, with "Schreibe..." and "Abbruch" in the rows as it goes. For a compressed format
// each track streams into its encoder while it is read; once read, the next track is read while
// its encoder finishes, with up to one encoder per core.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "ISCSI.h"
#include "JobHooks.h"
#include "RipTrack.h"
#include "TrackEncode.h"

namespace plattmix::audiocd {

inline constexpr const char* kTextWriting = "Schreibe...";
inline constexpr const char* kTextAborted = "Abbruch";
inline constexpr int kWavFormatIndex = 6;

struct RipRow {
    int trackNumber = 0;  // as the table of contents numbers it
    bool checked = false;
};

struct RipJobParams {
    std::string handle;         // the drive
    std::string targetFolder;   // ends in "/", exists
    std::string namePrefix;     // "Track" when the user gave none
    bool runningNumber = true;  // "Laufende Nummer"; else the track number
    bool numberFirst = false;   // number before the prefix
    int formatIndex = kWavFormatIndex;
    std::vector<RipRow> rows;  // every row of the list, in list order
};

struct RipJobResult {
    bool aborted = false;
    int filesStarted = 0;  // the running number reached
};

// Row texts for the "Ergebnis" column go through rowText(rowPosition, text), always on the
// calling thread and each row's result in track order. Formats other than WAV go to the encoder
// (see TrackEncode.h); without one they report "XXX Fehler!". A read error leaves the row's
// "Schreibe..." and no file; the user's stop ends the job before the next track (a track being
// read is dropped, "Abbruch"; one already read is finished) and the job returns only once every
// encoder has ended, yielding all the while.
using RowTextFn = std::function<void(size_t row, const std::string& text)>;

RipJobResult RunRipJob(scsi::ISCSI& transport, const RipJobParams& params, const JobHooks& hooks,
                       const RowTextFn& rowText, const EncodeFn& encode = {});

// The row's file name without extension: prefix and number (the running number filesStarted
// or the track's own), in the order the user chose.
std::string TrackFileName(const RipJobParams& params, size_t row, int filesStarted);

// As many encoders at once as the machine has cores, at least one.
size_t EncoderLimit();

// "01" from 1: at least two digits.
std::string NumberText(int number);

}  // namespace plattmix::audiocd
