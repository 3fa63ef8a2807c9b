// Reading a track's audio for the secure mode: by sample positions with the drive's read offset
// applied, in blocks of 27 sectors' worth of samples, the samples the drive cannot deliver (before
// the disc's start, at and after its lead-out) as silence, with C2 error pointers where the drive
// reports them, and a read far away before a block is read again so that the drive's cache
// cannot answer for the disc.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "AccurateRipChecksum.h"
#include "ISCSI.h"

namespace plattmix::audiocd {

inline constexpr int64_t kSectorSamples = kSamplesPerSector;
inline constexpr int64_t kSampleBytes = 4;  // 16-bit stereo

// A track as the secure mode reads it: every sector from its first to its last.
struct SecureTrackSpan {
    int32_t firstLba = 0;
    int32_t endLba = 0;  // the first sector after the track
    int64_t Samples() const { return (static_cast<int64_t>(endLba) - firstLba) * kSectorSamples; }
    int64_t AudioBytes() const { return Samples() * kSampleBytes; }
};

class SecureReader {
  public:
    // leadOut: the disc's lead-out, the first sector the drive cannot read; offset: the drive's
    // read offset in samples (+N: the track's sample p is what the drive returns at p + N); c2:
    // ask for C2 error pointers.
    SecureReader(scsi::ISCSI& transport, std::string handle, int32_t leadOut, int offset, bool c2);

    static size_t BlockCount(const SecureTrackSpan& span);

    struct Block {
        bool read = false;  // false: the drive failed the request
        std::vector<uint8_t> audio;
        // Per sector of audio: the drive marked bytes that went into it as unreliable.
        std::vector<bool> c2;
    };
    // The track's block index: its samples with the offset applied.
    Block Read(const SecureTrackSpan& span, size_t index);
    // The same block again, the drive's cache defeated first.
    Block ReRead(const SecureTrackSpan& span, size_t index);

    // The first LBA of the failed request, after a block that was not read.
    int32_t FailedLba() const { return failedLba_; }
    int32_t FailedEnd() const { return failedEnd_; }

  private:
    // Into raw_, and each sector's C2 mark into c2Marks_.
    bool ReadSectors(int32_t lba, int32_t count);

    scsi::ISCSI* transport_;
    std::string handle_;
    int32_t leadOut_;
    int offset_;
    bool c2_;
    int32_t failedLba_ = 0;
    int32_t failedEnd_ = 0;
    std::vector<uint8_t> raw_;
    std::vector<bool> c2Marks_;
};

}  // namespace plattmix::audiocd
