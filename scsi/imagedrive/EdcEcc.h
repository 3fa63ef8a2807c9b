// Error detection and correction codes of a CD-ROM data sector: the 32-bit EDC and the
// Reed-Solomon P and Q parity bytes (RSPC), and a whole Mode 1 sector built around 2048 bytes
// of user data, as a drive would read it raw from a pressed disc.
#pragma once

#include <cstdint>
#include <span>

namespace plattmix::scsi::imagedrive {

inline constexpr size_t kRawSectorSize = 2352;
inline constexpr size_t kUserDataSize = 2048;
inline constexpr size_t kSyncSize = 12;
inline constexpr size_t kMode1EdcOffset = 2064;
inline constexpr size_t kPParityOffset = 2076;  // 172 bytes
inline constexpr size_t kQParityOffset = 2248;  // 104 bytes

// CRC over the bytes, generator x^32+x^31+x^16+x^15+x^4+x^3+x+1, least significant bit first.
uint32_t ComputeEdc(std::span<const uint8_t> bytes);

// Fills the P and Q parity of a raw sector from its bytes 12..2247 (header onward).
void ComputeEccParity(std::span<uint8_t, kRawSectorSize> sector);

// Sync, BCD header of the disc address lba + 150 with mode byte 1, the user data, EDC, the
// eight zero bytes and the parity.
void BuildMode1Sector(int32_t lba, std::span<const uint8_t, kUserDataSize> userData,
                      std::span<uint8_t, kRawSectorSize> sector);

// Sync and a BCD header with the given mode byte; the rest of the sector is left untouched.
void WriteSyncAndHeader(int32_t lba, uint8_t mode, std::span<uint8_t, kRawSectorSize> sector);

}  // namespace plattmix::scsi::imagedrive
