#include "AccurateRipFile.h"

#include <algorithm>
#include <vector>

#include "AccurateRipChecksum.h"
#include "imagedrive/clsImageDrive.h"
#include "modMMC.h"

namespace plattmix::discgen {
namespace {

constexpr uint8_t kUserData = 0x10;  // READ CD flags: the 2352 audio bytes
constexpr uint32_t kBlocksPerRead = 27;

void PutLE32(std::string& bytes, uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<char>((value >> shift) & 0xFFu));
    }
}

// The track's checksums, or the failing READ CD's status.
Result<audiocd::AccurateRipChecksum> ChecksumOf(scsi::ISCSI& drive, std::string& handle,
                                                const TrackInfo& track, bool first, bool last) {
    audiocd::AccurateRipChecksum sum(
        static_cast<uint32_t>(track.lengthSectors) * audiocd::kSamplesPerSector, first, last);
    std::vector<uint8_t> buffer(kBlocksPerRead * kAudioSectorBytes);
    for (int32_t done = 0; done < track.lengthSectors;) {
        const auto n =
            std::min<uint32_t>(kBlocksPerRead, static_cast<uint32_t>(track.lengthSectors - done));
        const std::span<uint8_t> part(buffer.data(), n * kAudioSectorBytes);
        const int32_t status = modMMC::ReadCD(
            drive, handle, static_cast<uint32_t>(track.startLba + done), n, part, kUserData);
        if (status != 0) {
            return Result<audiocd::AccurateRipChecksum>::Fail(
                "READ CD bei LBA " + std::to_string(track.startLba + done) + ": Status " +
                std::to_string(status));
        }
        sum.Update(part);
        done += static_cast<int32_t>(n);
    }
    return Result<audiocd::AccurateRipChecksum>::Ok(sum);
}

}  // namespace

audiocd::AccurateRipIds AccurateRipIdsOf(const DiscDescription& disc) {
    std::vector<int32_t> audio;
    std::vector<int32_t> all;
    for (const TrackInfo& track : disc.tracks) {
        all.push_back(track.startLba);
        if (track.mode == TrackMode::Audio) {
            audio.push_back(track.startLba);
        }
    }
    return audiocd::ComputeAccurateRipIds(audio, all, disc.leadOutLba);
}

Result<audiocd::AccurateRipResponse> AccurateRipResponseOf(const DiscDescription& disc,
                                                           int confidence, bool v2) {
    using Answer = Result<audiocd::AccurateRipResponse>;
    audiocd::AccurateRipResponse response{AccurateRipIdsOf(disc), {}};
    const auto firstAudio = std::find_if(disc.tracks.begin(), disc.tracks.end(),
                                         [](auto& t) { return t.mode == TrackMode::Audio; });
    const auto lastAudio = std::find_if(disc.tracks.rbegin(), disc.tracks.rend(),
                                        [](auto& t) { return t.mode == TrackMode::Audio; });
    scsi::imagedrive::clsImageDrive drive;
    const auto loaded = drive.AddDrive(disc.cuePath.string());
    if (!loaded.ok()) {
        return Answer::Fail(loaded.Error());
    }
    std::string handle = loaded.Value();
    for (const TrackInfo& track : disc.tracks) {
        if (static_cast<int>(response.tracks.size()) == response.ids.audioTracks) {
            break;
        }
        if (track.mode != TrackMode::Audio) {
            response.tracks.push_back({});
            continue;
        }
        const auto sum =
            ChecksumOf(drive, handle, track, &track == &*firstAudio, &track == &*lastAudio);
        if (!sum.ok()) {
            return Answer::Fail(sum.error);
        }
        response.tracks.push_back({confidence, v2 ? sum.value->V2() : sum.value->V1(), 0});
    }
    return Answer::Ok(response);
}

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
