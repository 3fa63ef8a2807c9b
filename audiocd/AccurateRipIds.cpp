#include "AccurateRipIds.h"

#include <cstdio>

#include "modMSF.h"

namespace plattmix::audiocd {
namespace {

int DigitSum(int32_t value) {
    int sum = 0;
    for (; value > 0; value /= 10) {
        sum += value % 10;
    }
    return sum;
}

int32_t Seconds(int32_t lba) {
    return (lba + modMSF::kPregapFrames) / modMSF::kFramesPerSecond;
}

}  // namespace

std::string Hex8Text(uint32_t value) {
    char text[9];
    std::snprintf(text, sizeof text, "%08x", value);
    return text;
}

AccurateRipIds ComputeAccurateRipIds(std::span<const int32_t> audioStarts,
                                     std::span<const int32_t> allStarts, int32_t leadOut) {
    AccurateRipIds ids;
    ids.audioTracks = static_cast<int>(audioStarts.size());
    uint32_t position = 0;
    for (const int32_t start : audioStarts) {
        ++position;
        const auto lba = static_cast<uint32_t>(start);
        ids.id1 += lba;
        // A first track at LBA 0 counts as 1, so that its place still weighs in.
        ids.id2 += (lba > 0 ? lba : 1u) * position;
    }
    ids.id1 += static_cast<uint32_t>(leadOut);
    ids.id2 += static_cast<uint32_t>(leadOut) * (position + 1);
    ids.freedbId = ComputeFreedbId(allStarts, leadOut);
    return ids;
}

uint32_t ComputeFreedbId(std::span<const int32_t> allStarts, int32_t leadOut) {
    if (allStarts.empty()) {
        return 0;
    }
    int checksum = 0;
    for (const int32_t start : allStarts) {
        checksum += DigitSum(Seconds(start));
    }
    const auto playing = static_cast<uint32_t>(Seconds(leadOut) - Seconds(allStarts.front()));
    return (static_cast<uint32_t>(checksum % 255) << 24) | (playing << 8) |
           static_cast<uint32_t>(allStarts.size());
}

std::string AccurateRipIdText(const AccurateRipIds& ids) {
    char count[16];
    std::snprintf(count, sizeof count, "%03d", ids.audioTracks);
    return std::string(count) + "-" + Hex8Text(ids.id1) + "-" + Hex8Text(ids.id2) + "-" +
           Hex8Text(ids.freedbId);
}

std::string AccurateRipRecordPath(const AccurateRipIds& ids) {
    const std::string id1 = Hex8Text(ids.id1);
    return std::string{id1[7], '/', id1[6], '/', id1[5], '/'} + "dBAR-" + AccurateRipIdText(ids) +
           ".bin";
}

}  // namespace plattmix::audiocd
