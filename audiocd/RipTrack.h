// Extracting one audio track: READ CD in 27-sector blocks behind the WAV header, to a file, or
// block by block to whoever takes the stream (the encoder).
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "ISCSI.h"
#include "JobHooks.h"
#include "TrackReader.h"

namespace plattmix::audiocd {

inline constexpr const char* kTextTrackFailed = "XXX Fehler!";
inline constexpr const char* kTextDone = " -->Fertig";

// Writes the track to filePath (".wav" included), opened without truncation. Answers the text
// for the row's "Ergebnis" column (fileName + ".wav -->Fertig" or "XXX Fehler!"), or nothing
// when the column stays as it is (the TOC or a full block could not be read: the user was
// warned through the hooks).
std::optional<std::string> RipTrackWav(scsi::ISCSI& transport, std::string handle, int16_t track,
                                       const std::string& filePath, const std::string& fileName,
                                       const JobHooks& hooks);

// Takes the WAV header, then each block's bytes; false stops the reading.
using BlockSink = std::function<bool(std::span<const uint8_t>)>;

// How reading a track into a sink ended.
enum class StreamEnd { NotStarted, Complete, ReadFailed, SinkStopped };

// Reads the track behind its WAV header into sink, with the progress and a yield after each
// block. A read error is told through the hooks ("Lesefehler in Range a - b."); NotStarted when
// the table of contents or the track's bounds could not be had (the user was warned where the
// table failed).
StreamEnd RipTrackToSink(scsi::ISCSI& transport, std::string handle, int16_t track,
                         const JobHooks& hooks, const BlockSink& sink);

// The same reading into memory: header and audio as one WAV image. Nothing when reading failed
// (the user was warned).
std::optional<std::vector<uint8_t>> RipTrackToMemory(scsi::ISCSI& transport, std::string handle,
                                                     int16_t track, const JobHooks& hooks);

}  // namespace plattmix::audiocd
