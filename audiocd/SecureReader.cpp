#include "SecureReader.h"

#include <algorithm>
#include <cstring>

#include "ScsiStatus.h"
#include "TrackBounds.h"
#include "modMMC.h"
#include "modMSF.h"

namespace plattmix::audiocd {
namespace {

constexpr int64_t kBlockSamples = kRipBlockSectors * kSectorSamples;
constexpr size_t kSectorBytes = static_cast<size_t>(modMSF::kAudioFrameBytes);
constexpr size_t kC2Bytes = 294;             // one bit per byte of the sector
constexpr uint8_t kReadCdC2Pointers = 0x02;  // byte 9: the C2 error pointers after each sector
// A read this far away before a block is read again leaves the block out of the drive's cache.
constexpr int32_t kCacheDefeatDistance = 10000;

int64_t FloorDiv(int64_t value, int64_t by) {
    return value >= 0 ? value / by : -((-value + by - 1) / by);
}

}  // namespace

SecureReader::SecureReader(scsi::ISCSI& transport, std::string handle, int32_t leadOut, int offset,
                           bool c2)
    : transport_(&transport),
      handle_(std::move(handle)),
      leadOut_(leadOut),
      offset_(offset),
      c2_(c2) {}

size_t SecureReader::BlockCount(const SecureTrackSpan& span) {
    return static_cast<size_t>((span.Samples() + kBlockSamples - 1) / kBlockSamples);
}

bool SecureReader::ReadSectors(int32_t lba, int32_t count) {
    const size_t stride = kSectorBytes + (c2_ ? kC2Bytes : 0);
    raw_.resize(static_cast<size_t>(count) * stride);
    c2Marks_.assign(static_cast<size_t>(count), false);
    const uint8_t flags = static_cast<uint8_t>(kReadCdAllFields | (c2_ ? kReadCdC2Pointers : 0));
    if (modMMC::ReadCD(*transport_, handle_, static_cast<uint32_t>(lba),
                       static_cast<uint32_t>(count), raw_, flags) != scsi::kStatusGood) {
        failedLba_ = lba;
        failedEnd_ = lba + count;
        return false;
    }
    if (!c2_)
        return true;
    // Audio first, C2 pointers after it: the audio moves together, the pointers are looked at.
    for (size_t sector = 0; sector < static_cast<size_t>(count); ++sector) {
        const uint8_t* pointers = raw_.data() + sector * stride + kSectorBytes;
        c2Marks_[sector] =
            std::any_of(pointers, pointers + kC2Bytes, [](uint8_t bits) { return bits != 0; });
        std::memmove(raw_.data() + sector * kSectorBytes, raw_.data() + sector * stride,
                     kSectorBytes);
    }
    raw_.resize(static_cast<size_t>(count) * kSectorBytes);
    return true;
}

SecureReader::Block SecureReader::Read(const SecureTrackSpan& span, size_t index) {
    const int64_t trackStart = static_cast<int64_t>(span.firstLba) * kSectorSamples;
    const int64_t first = static_cast<int64_t>(index) * kBlockSamples;
    const int64_t count = std::min(kBlockSamples, span.Samples() - first);
    Block block;
    block.audio.assign(static_cast<size_t>(count * kSampleBytes), 0);
    block.c2.assign(static_cast<size_t>((count + kSectorSamples - 1) / kSectorSamples), false);
    // The drive's samples [from, to) carry the block; only those on the disc are asked for.
    const int64_t from = trackStart + first + offset_;
    const int64_t to = from + count;
    const int64_t readFrom = std::max<int64_t>(from, 0);
    const int64_t readTo = std::min<int64_t>(to, static_cast<int64_t>(leadOut_) * kSectorSamples);
    if (readFrom >= readTo) {
        block.read = true;  // all silence
        return block;
    }
    const auto lba = static_cast<int32_t>(FloorDiv(readFrom, kSectorSamples));
    const auto endLba = static_cast<int32_t>(FloorDiv(readTo - 1, kSectorSamples) + 1);
    if (!ReadSectors(lba, endLba - lba))
        return block;
    const int64_t skip = readFrom - static_cast<int64_t>(lba) * kSectorSamples;
    std::memcpy(block.audio.data() + (readFrom - from) * kSampleBytes,
                raw_.data() + skip * kSampleBytes,
                static_cast<size_t>((readTo - readFrom) * kSampleBytes));
    // A drive sector's mark goes to every sector of the block its samples reach.
    for (size_t drive = 0; drive < c2Marks_.size(); ++drive) {
        if (!c2Marks_[drive])
            continue;
        const int64_t start = (lba + static_cast<int64_t>(drive)) * kSectorSamples - from;
        const int64_t firstSector = std::max<int64_t>(start, 0) / kSectorSamples;
        const int64_t lastSector =
            std::min<int64_t>(start + kSectorSamples - 1, count - 1) / kSectorSamples;
        for (int64_t sector = firstSector; sector <= lastSector; ++sector)
            block.c2[static_cast<size_t>(sector)] = true;
    }
    block.read = true;
    return block;
}

SecureReader::Block SecureReader::ReRead(const SecureTrackSpan& span, size_t index) {
    const int32_t near = span.firstLba + static_cast<int32_t>(index) * kRipBlockSectors;
    const int32_t away = near >= kCacheDefeatDistance
                             ? near - kCacheDefeatDistance
                             : std::min(near + kCacheDefeatDistance, leadOut_ - 1);
    ReadSectors(std::max(away, 0), 1);
    return Read(span, index);
}

}  // namespace plattmix::audiocd
