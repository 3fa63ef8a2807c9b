// The raw Mode 1 frame: header bytes, and EDC and P/Q parity checked against a separate
// bit-by-bit CRC and against the Reed-Solomon syndromes the parity must cancel.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

#include "imagedrive/EdcEcc.h"

namespace plattmix::scsi::imagedrive {
namespace {

using Sector = std::array<uint8_t, kRawSectorSize>;

// CRC with generator x^32+x^31+x^16+x^15+x^4+x^3+x+1, one bit at a time, low bit first.
uint32_t BitwiseEdc(const uint8_t* bytes, size_t count) {
    uint32_t reflected = 0;
    for (const int exponent : {31, 16, 15, 4, 3, 1, 0})
        reflected |= 1u << (31 - exponent);
    uint32_t crc = 0;
    for (size_t i = 0; i < count; ++i) {
        crc ^= bytes[i];
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1u) ? (crc >> 1) ^ reflected : crc >> 1;
    }
    return crc;
}

uint8_t GfMultiply(uint8_t a, uint8_t b) {
    unsigned product = 0, x = a;
    for (unsigned y = b; y != 0; y >>= 1) {
        if (y & 1u)
            product ^= x;
        x <<= 1;
        if (x & 0x100u)
            x ^= 0x11D;
    }
    return static_cast<uint8_t>(product);
}

// Both syndromes of one code word: the plain sum and the sum weighted by alpha^(n-1-i).
bool SyndromesZero(const std::vector<uint8_t>& word) {
    uint8_t plain = 0, weighted = 0;
    for (const uint8_t symbol : word) {
        plain ^= symbol;
        weighted = static_cast<uint8_t>(GfMultiply(weighted, 2) ^ symbol);
    }
    return plain == 0 && weighted == 0;
}

// Counts the P and Q code words of both byte planes whose syndromes are not zero. Words are
// 16-bit from byte 12; P word Np holds words Np + 43k (k < 26), Q word Mq holds words
// (43 Mq + 44 k) mod 1118 (k < 43) and then its two parity words 1118 + Mq and 1144 + Mq.
int BadCodeWords(const Sector& sector) {
    auto symbol = [&](size_t word, size_t plane) { return sector[12 + 2 * word + plane]; };
    int bad = 0;
    for (size_t plane = 0; plane < 2; ++plane) {
        for (size_t column = 0; column < 43; ++column) {
            std::vector<uint8_t> word;
            for (size_t k = 0; k < 26; ++k)
                word.push_back(symbol(column + 43 * k, plane));
            bad += SyndromesZero(word) ? 0 : 1;
        }
        for (size_t diagonal = 0; diagonal < 26; ++diagonal) {
            std::vector<uint8_t> word;
            for (size_t k = 0; k < 43; ++k)
                word.push_back(symbol((43 * diagonal + 44 * k) % 1118, plane));
            word.push_back(symbol(1118 + diagonal, plane));
            word.push_back(symbol(1144 + diagonal, plane));
            bad += SyndromesZero(word) ? 0 : 1;
        }
    }
    return bad;
}

Sector Mode1(int32_t lba, uint8_t fill) {
    std::array<uint8_t, kUserDataSize> user{};
    for (size_t i = 0; i < user.size(); ++i)
        user[i] = static_cast<uint8_t>(fill + i * 13);
    Sector sector{};
    BuildMode1Sector(lba, user, sector);
    return sector;
}

TEST(EdcEccTest, HeaderIsBcdAndEdcMatchesABitwiseCrc) {
    // LBA 270000 is disc address 60:02:00; the BCD digits of 16:39:74 test every nibble.
    const std::pair<int32_t, std::array<uint8_t, 4>> headers[] = {
        {0, {0x00, 0x02, 0x00, 0x01}},
        {270000, {0x60, 0x02, 0x00, 0x01}},
        {(16 * 60 + 39) * 75 + 74 - 150, {0x16, 0x39, 0x74, 0x01}}};
    for (const auto& [lba, header] : headers) {
        SCOPED_TRACE(lba);
        const Sector sector = Mode1(lba, static_cast<uint8_t>(lba));
        EXPECT_TRUE(std::equal(header.begin(), header.end(), sector.begin() + 12));
        EXPECT_TRUE(std::all_of(sector.begin() + 2068, sector.begin() + 2076,
                                [](uint8_t b) { return b == 0; }));  // the intermediate bytes
        const uint32_t stored = sector[2064] | (uint32_t{sector[2065]} << 8) |
                                (uint32_t{sector[2066]} << 16) | (uint32_t{sector[2067]} << 24);
        EXPECT_EQ(stored, BitwiseEdc(sector.data(), 2064));
        EXPECT_EQ(BitwiseEdc(sector.data(), 2068), 0u);  // the CRC of message + CRC
        EXPECT_EQ(ComputeEdc(std::span(sector).first(2064)), stored);
    }
}

TEST(EdcEccTest, ParityCancelsEverySyndromeAndOneWrongByteShows) {
    Sector sector = Mode1(1234, 7);
    EXPECT_EQ(BadCodeWords(sector), 0);
    EXPECT_EQ(BadCodeWords(Mode1(0, 0)), 0);
    sector[16 + 500] ^= 0x40;  // one user byte lies in one P and one Q word of its plane
    EXPECT_EQ(BadCodeWords(sector), 2);
    Sector parity = Mode1(99, 1);
    parity[kQParityOffset + 3] ^= 1;  // a Q parity byte only upsets its own Q word
    EXPECT_EQ(BadCodeWords(parity), 1);
}

}  // namespace
}  // namespace plattmix::scsi::imagedrive
