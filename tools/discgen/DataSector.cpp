#include "DataSector.h"

#include <cstddef>
#include <string_view>

namespace plattmix::discgen {

void StampDataSector(int32_t lba, std::span<uint8_t, 2048> sector) {
    const auto address = static_cast<uint32_t>(lba);
    sector[0] = static_cast<uint8_t>(address >> 24);
    sector[1] = static_cast<uint8_t>(address >> 16);
    sector[2] = static_cast<uint8_t>(address >> 8);
    sector[3] = static_cast<uint8_t>(address);
    constexpr std::string_view kTag = "PLATTMIX";
    for (size_t i = 0; i < kTag.size(); ++i) {
        sector[4 + i] = static_cast<uint8_t>(kTag[i]);
    }
    uint32_t state = (address * 2654435761u) ^ 0x5BD1E995u;
    if (state == 0) {
        state = 1;
    }
    for (size_t i = 12; i < sector.size(); ++i) {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        sector[i] = static_cast<uint8_t>(state >> 24);
    }
}

}  // namespace plattmix::discgen
