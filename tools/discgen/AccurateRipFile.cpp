#include "AccurateRipFile.h"

namespace plattmix::discgen {
namespace {

void PutLE32(std::string& bytes, uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<char>((value >> shift) & 0xFFu));
    }
}

}  // namespace

std::string MakeAccurateRipFile(std::span<const audiocd::AccurateRipResponse> responses) {
    std::string bytes;
    for (const audiocd::AccurateRipResponse& response : responses) {
        bytes.push_back(static_cast<char>(response.tracks.size()));
        PutLE32(bytes, response.ids.id1);
        PutLE32(bytes, response.ids.id2);
        PutLE32(bytes, response.ids.freedbId);
        for (const audiocd::AccurateRipTrack& track : response.tracks) {
            bytes.push_back(static_cast<char>(track.confidence));
            PutLE32(bytes, track.crc);
            PutLE32(bytes, track.frame450Crc);
        }
    }
    return bytes;
}

}  // namespace plattmix::discgen
