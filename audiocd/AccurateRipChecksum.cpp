#include "AccurateRipChecksum.h"

#include <algorithm>

#include "LittleEndian.h"

namespace plattmix::audiocd {
namespace {

constexpr uint32_t kSkippedSamples = 5 * kSamplesPerSector;

}  // namespace

AccurateRipChecksum::AccurateRipChecksum(uint32_t trackSamples, bool firstTrack, bool lastTrack)
    : trackSamples_(trackSamples),
      firstCounted_(firstTrack ? kSkippedSamples : 1),
      lastCounted_(lastTrack ? (trackSamples > kSkippedSamples ? trackSamples - kSkippedSamples : 0)
                             : trackSamples) {}

void AccurateRipChecksum::Update(std::span<const uint8_t> bytes) {
    const uint8_t* p = bytes.data();
    size_t n = bytes.size();
    if (partialBytes_ > 0) {
        const size_t take = std::min(n, partial_.size() - partialBytes_);
        std::copy_n(p, take, partial_.begin() + static_cast<std::ptrdiff_t>(partialBytes_));
        partialBytes_ += take;
        p += take;
        n -= take;
        if (partialBytes_ < partial_.size()) {
            return;
        }
        Add(partial_.data(), 1);
        partialBytes_ = 0;
    }
    const auto whole = static_cast<uint32_t>(std::min<size_t>(n / 4, trackSamples_ - done_));
    Add(p, whole);
    p += size_t{whole} * 4;
    n -= size_t{whole} * 4;
    if (n > 0 && n < 4 && done_ < trackSamples_) {
        std::copy_n(p, n, partial_.begin());
        partialBytes_ = n;
    }
}

// Adds count samples at the places after done_, those outside the counted range left aside.
void AccurateRipChecksum::Add(const uint8_t* samples, uint32_t count) {
    const uint32_t first = done_ + 1;
    const uint32_t from = std::max(first, firstCounted_);
    const uint32_t to = std::min(done_ + count, lastCounted_);
    uint32_t low = low_;
    uint32_t high = high_;
    for (uint32_t place = from; place <= to; ++place) {
        const uint64_t product = uint64_t{LoadLE32(samples + size_t{place - first} * 4)} * place;
        low += static_cast<uint32_t>(product);
        high += static_cast<uint32_t>(product >> 32);
    }
    low_ = low;
    high_ = high;
    done_ += count;
}

}  // namespace plattmix::audiocd
