// CRC-32 as zlib and most checksum tools compute it (reflected polynomial 0xEDB88320, initial
// value and final xor 0xFFFFFFFF), so a track's checksum can be checked with any common tool.
#pragma once

#include <cstdint>
#include <span>

namespace plattmix::audiocd {

class Crc32 {
  public:
    // Adds bytes to the running checksum.
    void Update(std::span<const uint8_t> bytes);
    // Adds count zero bytes (the silence a drive makes up for a gap that is not in any file).
    void UpdateZeros(uint64_t count);
    uint32_t Value() const { return ~state_; }

    // Checksum of one buffer.
    static uint32_t Of(std::span<const uint8_t> bytes);

  private:
    uint32_t state_ = 0xFFFFFFFFu;
};

}  // namespace plattmix::audiocd
