// The sub-channel replies: the media catalog number and a track's ISRC from READ SUB-CHANNEL,
// and the Q sub-channel positions READ CD hands back after each sector, from which the length
// of a track's pregap (INDEX 00) follows. Pure parsing over the reply bytes.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace plattmix::modMMC {

// The 13 digits of the catalog number (READ SUB-CHANNEL format 02h). Nothing when the drive
// marks it invalid, the reply is short, or the digits are not 13 digits or all zeros.
std::optional<std::string> ParseCatalog(std::span<const uint8_t> reply);
// The 12 characters of a track's ISRC (format 03h). Nothing when marked invalid, short, or not
// letters and digits.
std::optional<std::string> ParseIsrc(std::span<const uint8_t> reply);

// A formatted Q sub-channel of mode 1 (a position): track and index, decoded from BCD.
struct QPosition {
    uint8_t control = 0;
    int track = 0;
    int index = 0;
};
// Nothing for a Q of another mode (catalog number, ISRC) or fewer than 16 bytes.
std::optional<QPosition> ParseQPosition(std::span<const uint8_t> q);

// sectors holds consecutive READ CD blocks of 2352 bytes and 16 Q bytes each, the last one the
// sector right before track's INDEX 01. Answers how many of the last sectors lie in the track's
// INDEX 00: from the end back to the first sector whose position names another track or index;
// sectors with a Q of another mode neither end the pregap nor count on its edge.
int32_t PregapSectorsBefore(std::span<const uint8_t> sectors, int track);

}  // namespace plattmix::modMMC
