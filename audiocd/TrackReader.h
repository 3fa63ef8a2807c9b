// Reading one audio track block by block: READ CD of 27 sectors at a time, then whatever is
// left in one request. A job steps a reader when it wants the next block, so it can read
// several tracks in turns and hand each block on wherever it likes.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "ISCSI.h"
#include "JobHooks.h"
#include "TrackBounds.h"
#include "WavHeader.h"

namespace plattmix::audiocd {

inline constexpr const char* kTextTocFailed = "Konnte TOC Format 0 nicht lesen.";

class TrackReader {
  public:
    // The track's bounds from the table of contents (the user is told when the table cannot be
    // read) and its WAV header; nothing when either cannot be had.
    static std::optional<TrackReader> Open(scsi::ISCSI& transport, std::string handle,
                                           int16_t track, const JobHooks& hooks);

    enum class Step {
        Block,            // Bytes() holds the next full block
        Remainder,        // Bytes() holds the last, shorter request's sectors
        Done,             // every sector has been read
        BlockFailed,      // a full block could not be read
        RemainderFailed,  // the last, shorter request could not be read
    };
    Step Next();

    const WavHeaderBytes& Header() const { return header_; }
    std::span<const uint8_t> Bytes() const { return buffer_; }
    // How far the reading has come, 0..100.
    int Percent() const;
    // After a failure: "Lesefehler in Range a - b." for the failed request.
    std::string FailureText() const;

  private:
    TrackReader(scsi::ISCSI& transport, std::string handle, const TrackBounds& bounds,
                const WavHeaderBytes& header);

    scsi::ISCSI* transport_;
    std::string handle_;
    TrackBounds bounds_;
    WavHeaderBytes header_;
    std::vector<uint8_t> buffer_;
    int32_t current_;         // the next sector to read
    int32_t failedFrom_ = 0;  // the failed request's first sector
    int32_t failedTo_ = 0;    // and the sector after its last
};

// "Lesefehler in Range a - b."
std::string ReadErrorText(int32_t from, int32_t to);

}  // namespace plattmix::audiocd
