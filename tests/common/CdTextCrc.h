// The CRC of a CD-Text pack, bit by bit as written down: CRC-16 with the polynomial 0x1021 over
// the pack's first 16 bytes, starting at 0, the result inverted.
#pragma once

#include <cstdint>
#include <span>

namespace plattmix::test {

inline uint16_t CdTextPackCrc(std::span<const uint8_t> pack) {
    unsigned crc = 0;
    for (const uint8_t byte : pack.first(16)) {
        for (unsigned bit = 8; bit-- > 0;) {
            const unsigned top = (crc >> 15) & 1u;
            crc = (crc << 1) & 0xFFFFu;
            if ((((unsigned{byte} >> bit) & 1u) ^ top) != 0)
                crc ^= 0x1021u;
        }
    }
    return static_cast<uint16_t>(~crc & 0xFFFFu);
}

}  // namespace plattmix::test
