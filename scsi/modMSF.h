// Byte, bit and minute/second/frame helpers for MMC replies and track times.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace plattmix::modMSF {

inline constexpr int kFramesPerSecond = 75;
inline constexpr int kSecondsPerMinute = 60;
inline constexpr int kPregapFrames = 150;      // the two seconds before LBA 0
inline constexpr int kAudioFrameBytes = 2352;  // one raw CD sector

struct MSF {
    uint8_t minute = 0;
    uint8_t second = 0;
    uint8_t frame = 0;
    bool operator==(const MSF&) const = default;
};

uint8_t HiByte(uint16_t x);
uint8_t LoByte(uint16_t x);
// Unsigned right shift of a 32-bit pattern; n < 1 gives x, n > 31 gives 0.
uint32_t ShiftRight(uint32_t x, int n);
// Left shift with the same bounds.
uint32_t ShiftLeft(uint32_t x, int n);
uint32_t BytesToLong(uint8_t b0, uint8_t b1, uint8_t b2, uint8_t b3);
uint32_t BytesToLong(std::span<const uint8_t, 4> bytes);

MSF MakeMSF(uint8_t minute, uint8_t second, uint8_t frame);
// Four arguments: the first is ignored (the reserved byte of a TOC address).
MSF MakeMSF(uint8_t ignored, uint8_t minute, uint8_t second, uint8_t frame);
// Three elements are minute, second, frame; with four the first is ignored.
MSF MakeMSF(std::span<const uint8_t> parts);
// "mm:ss:ff"; each part by its numeric value, missing parts 0.
MSF MakeMSF(std::string_view text);

// Two decimal digits in one byte, as sector headers and the Q sub-channel carry them.
uint8_t ToBcd(int value);
int FromBcd(uint8_t value);
// Minute, second and frame as three BCD bytes.
std::array<uint8_t, 3> ToBcd(const MSF& msf);

std::string MSFToString(const MSF& msf);
std::string ByteToBinary(uint8_t x);

// Disc address in frames (including the two-second pre-gap) and logical block address.
int32_t MSFToFrames(const MSF& msf);
int32_t MSFToLBA(const MSF& msf);
MSF LBAToMSF(int32_t lba);

}  // namespace plattmix::modMSF
