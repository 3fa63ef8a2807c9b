#include "Sha1.h"

#include <bit>
#include <string>

namespace plattmix::audiocd {
namespace {

void Compress(std::array<uint32_t, 5>& state, const uint8_t* block) {
    uint32_t w[80];
    for (int i = 0; i < 16; ++i) {
        w[i] = uint32_t{block[4 * i]} << 24 | uint32_t{block[4 * i + 1]} << 16 |
               uint32_t{block[4 * i + 2]} << 8 | uint32_t{block[4 * i + 3]};
    }
    for (int i = 16; i < 80; ++i)
        w[i] = std::rotl(w[i - 3] ^ w[i - 8] ^ w[i - 14] ^ w[i - 16], 1);
    uint32_t a = state[0], b = state[1], c = state[2], d = state[3], e = state[4];
    for (int i = 0; i < 80; ++i) {
        uint32_t f = 0;
        uint32_t k = 0;
        if (i < 20) {
            f = (b & c) | (~b & d);
            k = 0x5A827999;
        } else if (i < 40) {
            f = b ^ c ^ d;
            k = 0x6ED9EBA1;
        } else if (i < 60) {
            f = (b & c) | (b & d) | (c & d);
            k = 0x8F1BBCDC;
        } else {
            f = b ^ c ^ d;
            k = 0xCA62C1D6;
        }
        const uint32_t next = std::rotl(a, 5) + f + e + k + w[i];
        e = d;
        d = c;
        c = std::rotl(b, 30);
        b = a;
        a = next;
    }
    state[0] += a;
    state[1] += b;
    state[2] += c;
    state[3] += d;
    state[4] += e;
}

}  // namespace

std::array<uint8_t, 20> Sha1(std::string_view message) {
    std::array<uint32_t, 5> state{0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
    // The message, a 1 bit, zeros up to 56 bytes in the last block, the bit length big-endian.
    std::string padded(message);
    padded.push_back(static_cast<char>(0x80));
    while (padded.size() % 64 != 56)
        padded.push_back('\0');
    const uint64_t bits = uint64_t{message.size()} * 8;
    for (int shift = 56; shift >= 0; shift -= 8)
        padded.push_back(static_cast<char>(bits >> shift & 0xFF));
    for (size_t at = 0; at < padded.size(); at += 64)
        Compress(state, reinterpret_cast<const uint8_t*>(padded.data() + at));
    std::array<uint8_t, 20> digest{};
    for (size_t i = 0; i < 20; ++i)
        digest[i] = static_cast<uint8_t>(state[i / 4] >> (24 - 8 * (i % 4)));
    return digest;
}

}  // namespace plattmix::audiocd
