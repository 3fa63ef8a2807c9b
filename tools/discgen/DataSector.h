// User data of the generated MODE1 sectors: each 2048-byte sector names its own disc address,
// so a reader that lands on the wrong sector is caught by the first four bytes already.
#pragma once

#include <cstdint>
#include <span>

namespace plattmix::discgen {

// Bytes 0..3: the LBA big-endian; 4..11: "PLATTMIX"; the rest a pseudo-random pattern seeded
// by the LBA.
void StampDataSector(int32_t lba, std::span<uint8_t, 2048> sector);

}  // namespace plattmix::discgen
