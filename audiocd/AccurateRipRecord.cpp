#include "AccurateRipRecord.h"

#include "LittleEndian.h"

namespace plattmix::audiocd {
namespace {

bool SameDisc(const AccurateRipIds& a, const AccurateRipIds& b) {
    return a.audioTracks == b.audioTracks && a.id1 == b.id1 && a.id2 == b.id2 &&
           a.freedbId == b.freedbId;
}

}  // namespace

AccurateRipRecord ParseAccurateRipRecord(std::span<const uint8_t> bytes,
                                         const AccurateRipIds& ids) {
    AccurateRipRecord record;
    size_t at = 0;
    while (at < bytes.size()) {
        if (bytes.size() - at < kAccurateRipHeaderBytes) {
            break;
        }
        AccurateRipResponse response;
        response.ids = {bytes[at], LoadLE32(&bytes[at + 1]), LoadLE32(&bytes[at + 5]),
                        LoadLE32(&bytes[at + 9])};
        at += kAccurateRipHeaderBytes;
        const auto trackBytes =
            static_cast<size_t>(response.ids.audioTracks) * kAccurateRipTrackBytes;
        if (!SameDisc(response.ids, ids) || bytes.size() - at < trackBytes) {
            break;
        }
        for (int track = 0; track < response.ids.audioTracks; ++track) {
            response.tracks.push_back(
                {bytes[at], LoadLE32(&bytes[at + 1]), LoadLE32(&bytes[at + 5])});
            at += kAccurateRipTrackBytes;
        }
        record.responses.push_back(std::move(response));
    }
    if (at != bytes.size() || record.responses.empty()) {
        record.responses.clear();
        record.error = kAccurateRipDamaged;
    }
    return record;
}

}  // namespace plattmix::audiocd
