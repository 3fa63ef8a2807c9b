#include "TrackBounds.h"

#include <limits>

#include "modMSF.h"

namespace plattmix::audiocd {
namespace {

bool FitsInt32(int64_t value) {
    return value >= std::numeric_limits<int32_t>::min() &&
           value <= std::numeric_limits<int32_t>::max();
}

// The descriptor's address as the signed LBA the drive meant.
int64_t DescriptorLba(const modMMC::TocDescriptor& descriptor) {
    const uint32_t pattern = modMSF::BytesToLong(descriptor.address);
    return static_cast<int32_t>(pattern);
}

}  // namespace

std::optional<TrackBounds> ComputeTrackBounds(const modMMC::Toc& lbaToc, int16_t track,
                                              const SessionToc* sessions) {
    // The row position picks the descriptors, whatever number the disc gives its first track.
    if (track < 1)
        return std::nullopt;
    const auto startIndex = static_cast<size_t>(track - 1);
    const auto endIndex = static_cast<size_t>(track);
    if (endIndex >= lbaToc.descriptors.size() ||
        endIndex >= static_cast<size_t>(modMMC::kTocMaxDescriptors))
        return std::nullopt;

    const int64_t first = DescriptorLba(lbaToc.descriptors[startIndex]);
    // The sector before the next track (or the lead-out); it is never read itself.
    int64_t last = DescriptorLba(lbaToc.descriptors[endIndex]) - 1;
    if (track == lbaToc.lastTrack) {
        last -= kLastTrackTrimSectors;  // the disc's last track leaves two seconds out
    } else if (sessions != nullptr && startIndex < sessions->tracks.size() &&
               sessions->EndsEarlierSession(startIndex)) {
        // The session gap behind it is no part of the track: its own lead-out ends it.
        last = int64_t{sessions->TrackEndLba(startIndex)} - 1 - kLastTrackTrimSectors;
    }
    if (!FitsInt32(last))
        return std::nullopt;

    const int64_t sectors = last - first;
    const int64_t audioBytes = sectors * modMSF::kAudioFrameBytes;
    if (!FitsInt32(sectors) || !FitsInt32(audioBytes))
        return std::nullopt;

    TrackBounds bounds;
    bounds.firstLba = static_cast<int32_t>(first);
    bounds.lastLba = static_cast<int32_t>(last);
    bounds.audioBytes = audioBytes;
    return bounds;
}

}  // namespace plattmix::audiocd
