// Extracting one audio track: READ CD in 27-sector blocks behind the WAV header, to a file or
// into memory for the encoder.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ISCSI.h"
#include "JobHooks.h"

namespace plattmix::audiocd {

inline constexpr const char* kTextTocFailed = "Konnte TOC Format 0 nicht lesen.";
inline constexpr const char* kTextTrackFailed = "XXX Fehler!";
inline constexpr const char* kTextDone = " -->Fertig";

// "Lesefehler in Range a - b."
std::string ReadErrorText(int32_t from, int32_t to);

// Writes the track to filePath (".wav" included), opened without truncation. Answers the text
// for the row's "Ergebnis" column (fileName + ".wav -->Fertig" or "XXX Fehler!"), or nothing
// when the column stays as it is (the TOC or a full block could not be read: the user was
// warned through the hooks).
std::optional<std::string> RipTrackWav(scsi::ISCSI& transport, std::string handle, int16_t track,
                                       const std::string& filePath, const std::string& fileName,
                                       const JobHooks& hooks);

// The same reading into memory: header and audio as one WAV image for the encoder. Nothing
// when reading failed (the user was warned).
std::optional<std::vector<uint8_t>> RipTrackToMemory(scsi::ISCSI& transport, std::string handle,
                                                     int16_t track, const JobHooks& hooks);

// The encoder: the WAV image into pathWithoutExtension + the format's extension; answers the
// row's text. row is the checked row's position, so the encoder can name the track in tags.
using EncodeFn =
    std::function<std::string(const std::vector<uint8_t>& wav, const std::string& basePath,
                              const std::string& fileName, size_t row)>;

// The memory path: the track read into memory behind the WAV header (RipTrackToMemory), then
// handed to the encoder. Answers the row's text ("XXX Fehler!" without an encoder), or nothing
// when reading failed (the user was warned).
std::optional<std::string> RipTrackConvert(scsi::ISCSI& transport, std::string handle,
                                           int16_t track, const std::string& basePath,
                                           const std::string& fileName, const EncodeFn& encode,
                                           size_t row, const JobHooks& hooks);

}  // namespace plattmix::audiocd
