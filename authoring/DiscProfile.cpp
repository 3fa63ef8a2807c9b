// The names of media profiles as the burn page knows them, by MMC profile number.
#include <array>
#include <utility>

#include "DiscProfile.h"

namespace plattmix::authoring {

namespace {

constexpr std::array<std::pair<int, const char*>, 28> kProfileNames{{
    {0x00, "TYPE_INVALID"},
    {0x01, "NON_REMOVABLE_DISK"},
    {0x02, "REMOVABLE_DISK"},
    {0x03, "MO_ERASABLE"},
    {0x04, "MO_WRITE_ONCE"},
    {0x05, "AS_MO"},
    {0x09, "CD_RECORDABLE"},
    {0x0a, "CD_REWRITABLE"},
    {0x11, "DVD_DASH_RECORDABLE"},
    {0x12, "DVD_RAM"},
    {0x13, "DVD_DASH_REWRITABLE"},
    {0x14, "DVD_DASH_RW_SEQUENTIAL"},
    {0x15, "DVD_DASH_R_DUAL_SEQUENTIAL"},
    {0x16, "DVD_DASH_R_DUAL_LAYER_JUMP"},
    {0x1a, "DVD_PLUS_RW"},
    {0x1b, "DVD_PLUS_R"},
    {0x20, "DDCDROM"},
    {0x21, "DDCD_RECORDABLE"},
    {0x22, "DDCD_REWRITABLE"},
    {0x2a, "DVD_PLUS_RW_DUAL"},
    {0x2b, "DVD_PLUS_R_DUAL"},
    {0x40, "BD_ROM"},
    {0x41, "BD_R_SEQUENTIAL"},
    {0x42, "BD_R_RANDOM_RECORDING"},
    {0x43, "BD_REWRITABLE"},
    {0x50, "HD_DVD_ROM"},
    {0x51, "HD_DVD_RECORDABLE"},
    {0x52, "HD_DVD_RAM"},
}};

}  // namespace

const char* ProfileName(int profile) {
    for (const auto& [number, name] : kProfileNames) {
        if (number == profile)
            return name;
    }
    return "NON_STANDARD";
}

}  // namespace plattmix::authoring
