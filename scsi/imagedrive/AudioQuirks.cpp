#include "imagedrive/AudioQuirks.h"

#include <algorithm>

namespace plattmix::scsi::imagedrive {

namespace {

constexpr auto kSectorBytes = static_cast<int64_t>(kRawSectorSize);
constexpr uint32_t kMaxFlippedBytes = 8;

// Rounds towards minus infinity, for byte positions before the disc's first sector.
int64_t FloorDiv(int64_t value, int64_t divisor) {
    const int64_t quotient = value / divisor;
    return (value % divisor != 0 && value < 0) ? quotient - 1 : quotient;
}

}  // namespace

const std::array<uint8_t, kRawSectorSize>& ShiftedAudio::DiscSector(int64_t lba) {
    if (cached_ && cachedLba_ == lba)
        return cache_;
    cached_ = true;
    cachedLba_ = lba;
    const bool onDisc = lba >= 0 && lba < medium_.Disc().LeadOut();
    const RawSector raw = onDisc ? medium_.Read(static_cast<int32_t>(lba), cache_) : RawSector{};
    if (raw.result != SectorRead::Ok || raw.kind != SectorKind::Audio)
        cache_.fill(0);
    return cache_;
}

void ShiftedAudio::Read(int32_t lba, std::span<uint8_t, kRawSectorSize> out) {
    const int64_t from = int64_t{lba} * kSectorBytes - offsetBytes_;
    const int64_t first = FloorDiv(from, kSectorBytes);
    const auto skip = static_cast<size_t>(from - first * kSectorBytes);
    const auto& head = DiscSector(first);
    std::copy(head.begin() + static_cast<std::ptrdiff_t>(skip), head.end(), out.begin());
    if (skip == 0)
        return;
    const auto& tail = DiscSector(first + 1);
    std::copy_n(tail.begin(), skip,
                out.begin() + static_cast<std::ptrdiff_t>(kRawSectorSize - skip));
}

bool FlakyRead(std::vector<FlakyRange>& ranges, int32_t lba,
               std::span<uint8_t, kRawSectorSize> audio, std::span<uint8_t, kC2PointerBytes> c2) {
    bool wrong = false;
    for (FlakyRange& range : ranges) {
        if (!range.range.Touches(lba, 1))
            continue;
        const double roll = static_cast<double>(range.dice()) / 4294967296.0;  // [0, 1)
        if (roll >= range.probability)
            continue;
        wrong = true;
        const uint32_t bytes = 1 + range.dice() % kMaxFlippedBytes;
        for (uint32_t i = 0; i < bytes; ++i) {
            const size_t at = range.dice() % kRawSectorSize;
            audio[at] ^= static_cast<uint8_t>(1u << (range.dice() % 8));
            c2[at / 8] |= static_cast<uint8_t>(0x80u >> (at % 8));
        }
    }
    return wrong;
}

}  // namespace plattmix::scsi::imagedrive
