#include "modMSF.h"

#include <charconv>
#include <cstdio>

namespace plattmix::modMSF {

uint8_t HiByte(uint16_t x) {
    return static_cast<uint8_t>((x / 256) & 255);
}
uint8_t LoByte(uint16_t x) {
    return static_cast<uint8_t>(x & 255);
}

uint32_t ShiftRight(uint32_t x, int n) {
    if (n < 1)
        return x;
    if (n > 31)
        return 0;
    return x >> n;
}

uint32_t ShiftLeft(uint32_t x, int n) {
    if (n < 1)
        return x;
    if (n > 31)
        return 0;
    return x << n;
}

uint32_t BytesToLong(uint8_t b0, uint8_t b1, uint8_t b2, uint8_t b3) {
    return (uint32_t{b0} << 24) | (uint32_t{b1} << 16) | (uint32_t{b2} << 8) | uint32_t{b3};
}

uint32_t BytesToLong(std::span<const uint8_t, 4> bytes) {
    return BytesToLong(bytes[0], bytes[1], bytes[2], bytes[3]);
}

MSF MakeMSF(uint8_t minute, uint8_t second, uint8_t frame) {
    return MSF{minute, second, frame};
}

MSF MakeMSF(uint8_t /*ignored*/, uint8_t minute, uint8_t second, uint8_t frame) {
    return MSF{minute, second, frame};
}

MSF MakeMSF(std::span<const uint8_t> parts) {
    if (parts.size() >= 4)
        return MSF{parts[1], parts[2], parts[3]};
    MSF msf;
    if (parts.size() > 0)
        msf.minute = parts[0];
    if (parts.size() > 1)
        msf.second = parts[1];
    if (parts.size() > 2)
        msf.frame = parts[2];
    return msf;
}

namespace {
// The leading numeric value of a part, like a lenient numeric conversion: blanks skipped,
// anything not a number reads as 0.
uint8_t NumericValue(std::string_view part) {
    while (!part.empty() && part.front() == ' ')
        part.remove_prefix(1);
    unsigned value = 0;
    std::from_chars(part.data(), part.data() + part.size(), value);
    return static_cast<uint8_t>(value & 255);
}
}  // namespace

MSF MakeMSF(std::string_view text) {
    uint8_t parts[3] = {0, 0, 0};
    for (int i = 0; i < 3 && !text.empty(); ++i) {
        const auto colon = text.find(':');
        parts[i] = NumericValue(text.substr(0, colon));
        text = colon == std::string_view::npos ? std::string_view{} : text.substr(colon + 1);
    }
    return MSF{parts[0], parts[1], parts[2]};
}

uint8_t ToBcd(int value) {
    return static_cast<uint8_t>(((value / 10) << 4) | (value % 10));
}

std::array<uint8_t, 3> ToBcd(const MSF& msf) {
    return {ToBcd(msf.minute), ToBcd(msf.second), ToBcd(msf.frame)};
}

int FromBcd(uint8_t value) {
    return (value >> 4) * 10 + (value & 0x0F);
}

std::string MSFToString(const MSF& msf) {
    char text[16];
    std::snprintf(text, sizeof text, "%02u:%02u:%02u", unsigned{msf.minute}, unsigned{msf.second},
                  unsigned{msf.frame});
    return text;
}

std::string ByteToBinary(uint8_t x) {
    if (x == 0)
        return "0";
    std::string digits;
    for (int bit = 7; bit >= 0; --bit) {
        const bool set = (x >> bit) & 1;
        if (set || !digits.empty())
            digits.push_back(set ? '1' : '0');
    }
    return digits;
}

int32_t MSFToFrames(const MSF& msf) {
    return msf.minute * kSecondsPerMinute * kFramesPerSecond + msf.second * kFramesPerSecond +
           msf.frame;
}

int32_t MSFToLBA(const MSF& msf) {
    return MSFToFrames(msf) - kPregapFrames;
}

MSF LBAToMSF(int32_t lba) {
    const int32_t frames = lba + kPregapFrames;
    if (frames < 0)
        return MSF{};
    return MSF{static_cast<uint8_t>(frames / (kSecondsPerMinute * kFramesPerSecond)),
               static_cast<uint8_t>((frames / kFramesPerSecond) % kSecondsPerMinute),
               static_cast<uint8_t>(frames % kFramesPerSecond)};
}

}  // namespace plattmix::modMSF
