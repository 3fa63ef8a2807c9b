// Turning one extracted track, a complete WAV image in memory, into a compressed file with
// FFmpeg's libraries. The encoder works beside the caller's thread; the caller's thread polls
// it every 50 ms and yields in between, so the window stays alive and "Abbrechen" reaches it.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "ByteQueue.h"

namespace plattmix::encode {

// What goes into the file's tags; empty texts and 0 numbers are left out.
struct AudioTags {
    int track = 0;       // the track number as the disc numbers it
    int trackCount = 0;  // tracks on the disc
    std::string title;
    std::string artist;
    std::string album;
    std::string albumArtist;
    std::string date;
    int disc = 0;             // the disc's position among the release's discs
    int discCount = 0;        // the release's discs
    std::string releaseId;    // MusicBrainz
    std::string recordingId;  // MusicBrainz
};

struct ConvertHooks {
    std::function<void()> yield;        // between polls: let the window process events
    std::function<bool()> aborted;      // polled; true stops the encoder, the partial file goes
    std::function<void(int)> progress;  // 0..100 of the source encoded
};

// Encodes wav (opened by its content type, "audio/wav", through a custom I/O context, never
// written to a temporary file) into basePath + the format's extension for the format at the
// list index (anything but 1..5 is MP3; the WAV index is never passed here). True when the file
// was written whole; false for a source the demuxer does not accept (no encoder is started),
// an encoder failure, a file that cannot be written, or an abort (then no partial file stays).
bool ConvertAudioStream(std::span<const uint8_t> wav, const std::string& contentType,
                        const std::string& basePath, int formatIndex, const AudioTags& tags,
                        const ConvertHooks& hooks);

// The same for a WAV stream arriving through queue while the drive reads it, on the calling
// thread: the demuxer reads it front to back, stop is read before every packet. Closes the queue
// when it ends, so a writer waiting for room stops waiting. True when the file was written
// whole; otherwise no file stays.
bool EncodeStream(audiocd::ByteQueue& queue, const std::string& basePath, int formatIndex,
                  const AudioTags& tags, const std::atomic<bool>& stop) noexcept;

}  // namespace plattmix::encode
