// What an emulated drive does to the audio it reads besides handing it over: the read offset
// of its mechanics and sectors that read wrong now and then (with the C2 error pointers a
// drive sets for bytes it could not correct).
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "imagedrive/DriveSlot.h"
#include "imagedrive/SectorSource.h"

namespace plattmix::scsi::imagedrive {

inline constexpr size_t kC2PointerBytes = 294;  // one bit per byte of a 2352-byte sector

// The audio of sectors as a drive with a read offset returns them (see Faults): the samples of
// the disc moved by the offset, taken from the one or two sectors they lie in; samples before
// the disc, beyond it, between sessions or in data sectors are silence. Remembers the sector it
// read last, as reads go on where the previous sector ended.
class ShiftedAudio {
  public:
    ShiftedAudio(const SectorSource& medium, int32_t offsetSamples)
        : medium_(medium), offsetBytes_(int64_t{offsetSamples} * 4) {}
    void Read(int32_t lba, std::span<uint8_t, kRawSectorSize> out);

  private:
    const std::array<uint8_t, kRawSectorSize>& DiscSector(int64_t lba);

    const SectorSource& medium_;
    int64_t offsetBytes_;
    int64_t cachedLba_ = -1;
    bool cached_ = false;
    std::array<uint8_t, kRawSectorSize> cache_{};
};

// Rolls the dice of the flaky ranges that hold lba. When the read comes out wrong, flips one
// bit in each of a few bytes of audio and sets those bytes' bits in c2 (bit 7 of byte 0 is the
// sector's byte 0); otherwise leaves both alone. Answers whether the read came out wrong.
bool FlakyRead(std::vector<FlakyRange>& ranges, int32_t lba,
               std::span<uint8_t, kRawSectorSize> audio, std::span<uint8_t, kC2PointerBytes> c2);

}  // namespace plattmix::scsi::imagedrive
