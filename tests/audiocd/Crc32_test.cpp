// The checksum must equal the common CRC-32 (zlib, cksum -a crc32b), however the bytes arrive.
#include "Crc32.h"

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

namespace plattmix::audiocd {
namespace {

std::span<const uint8_t> Bytes(std::string_view text) {
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

TEST(Crc32, MatchesTheCheckValuesWholePiecewiseAndWithZeros) {
    EXPECT_EQ(Crc32::Of(Bytes("123456789")), 0xCBF43926u);
    EXPECT_EQ(Crc32::Of(Bytes("")), 0u);
    std::vector<uint8_t> data(1000);
    for (size_t i = 0; i < data.size(); ++i)
        data[i] = static_cast<uint8_t>(i * 7 + 3);
    // Split points around the eight-byte steps and the byte-wise tail.
    for (const size_t cut : {size_t{1}, size_t{7}, size_t{9}, size_t{999}}) {
        Crc32 crc;
        crc.Update(std::span<const uint8_t>(data).first(cut));
        crc.Update(std::span<const uint8_t>(data).subspan(cut));
        EXPECT_EQ(crc.Value(), Crc32::Of(data)) << "cut at " << cut;
    }
    const std::vector<uint8_t> zeros(2352 * 3 + 5, 0);
    Crc32 viaZeros, viaBytes;
    viaZeros.Update(Bytes("x"));
    viaZeros.UpdateZeros(zeros.size());
    viaBytes.Update(Bytes("x"));
    viaBytes.Update(zeros);
    EXPECT_EQ(viaZeros.Value(), viaBytes.Value());
}

}  // namespace
}  // namespace plattmix::audiocd
