// The sectors of a loaded disc, read from the image files one at a time on demand: the BIN and
// ISO files stay on disk (they may be gigabytes), only the requested sectors are read.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "imagedrive/DiscImage.h"
#include "imagedrive/EdcEcc.h"
#include "imagedrive/ImageResult.h"
#include "imagedrive/ReadCdFields.h"

namespace plattmix::scsi::imagedrive {

enum class SectorRead { Ok, OutOfRange, ReadFailed };

struct RawSector {
    SectorRead result = SectorRead::OutOfRange;
    SectorKind kind = SectorKind::Audio;
};

class SectorSource {
  public:
    // Opens every file of the disc for reading; the error names the file that failed.
    static ImageResult<std::shared_ptr<SectorSource>> Open(DiscImage disc);
    ~SectorSource();
    SectorSource(const SectorSource&) = delete;
    SectorSource& operator=(const SectorSource&) = delete;

    const DiscImage& Disc() const { return disc_; }
    // The 2352 raw bytes of a sector: stored bytes of raw tracks, a Mode 1 frame built around
    // the stored 2048 bytes, silence or an empty data frame in gaps without file bytes.
    RawSector Read(int32_t lba, std::span<uint8_t, kRawSectorSize> out) const;

  private:
    explicit SectorSource(DiscImage disc) : disc_(std::move(disc)) {}
    bool ReadFile(const DiscTrack& track, int32_t lba, std::span<uint8_t> out) const;

    DiscImage disc_;
    std::vector<int> descriptors_;
};

}  // namespace plattmix::scsi::imagedrive
