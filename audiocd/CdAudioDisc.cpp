#include "CdAudioDisc.h"

#include <array>

#include "ScsiStatus.h"
#include "TrackList.h"
#include "modMSF.h"

namespace plattmix::audiocd {

namespace {
// A loaded disc answers once with its unit attention and may still be spinning up.
constexpr int kReadyAttempts = 3;
}  // namespace

std::optional<CdAudioDisc> DiscFromToc(const modMMC::Toc& lbaToc) {
    if (lbaToc.descriptors.size() < 2 || lbaToc.descriptors.back().track != modMMC::kLeadOutTrack)
        return std::nullopt;
    CdAudioDisc disc;
    int32_t previous = 0;
    for (const auto& d : lbaToc.descriptors) {
        const auto lba = static_cast<int32_t>(modMSF::BytesToLong(d.address));
        if (lba < previous)
            return std::nullopt;
        previous = lba;
        if (d.track == modMMC::kLeadOutTrack) {
            disc.leadOutLba = lba;
            break;
        }
        disc.tracks.push_back(CdAudioTrack{d.track, lba, IsDataTrack(d.adrControl) == 1});
    }
    if (disc.tracks.empty() || disc.leadOutLba == 0)
        return std::nullopt;
    return disc;
}

std::optional<size_t> TrackIndexAt(const CdAudioDisc& disc, int32_t lba) {
    if (disc.tracks.empty() || lba < disc.tracks.front().startLba || lba >= disc.leadOutLba)
        return std::nullopt;
    size_t index = 0;
    while (index + 1 < disc.tracks.size() && disc.tracks[index + 1].startLba <= lba)
        ++index;
    return index;
}

void ApplySessionInfo(CdAudioDisc& disc, const modMMC::SessionInfo& sessions) {
    if (sessions.lastSession > sessions.firstSession)
        disc.lastSessionLba = static_cast<int32_t>(sessions.lastSessionStartLba);
}

namespace {
bool StartsSession(const CdAudioDisc& disc, const CdAudioTrack& track) {
    return disc.lastSessionLba && track.startLba == *disc.lastSessionLba;
}
}  // namespace

int32_t TrackEndLba(const CdAudioDisc& disc, size_t index) {
    if (index + 1 >= disc.tracks.size())
        return disc.leadOutLba;
    const CdAudioTrack& next = disc.tracks[index + 1];
    return StartsSession(disc, next) ? next.startLba - modMMC::kSessionGapSectors : next.startLba;
}

int32_t AudioRunEnd(const CdAudioDisc& disc, int32_t fromLba) {
    for (const auto& track : disc.tracks) {
        if (track.startLba <= fromLba)
            continue;
        if (StartsSession(disc, track))
            return track.startLba - modMMC::kSessionGapSectors;
        if (track.data)
            return track.startLba;
    }
    return disc.leadOutLba;
}

std::optional<CdAudioDisc> ReadCdAudioDisc(scsi::ISCSI& transport, std::string handle) {
    bool ready = false;
    for (int i = 0; i < kReadyAttempts && !ready; ++i)
        ready = modMMC::TestUnitReady(transport, handle) == scsi::kStatusGood;
    if (!ready)
        return std::nullopt;
    std::array<uint8_t, modMMC::kTocReplyLength> reply{};
    if (modMMC::ReadTOC(transport, handle, false, reply) != scsi::kStatusGood)
        return std::nullopt;
    const auto toc = modMMC::ParseTOC(reply);
    auto disc = toc ? DiscFromToc(*toc) : std::nullopt;
    std::array<uint8_t, modMMC::kSessionInfoLength> sessions{};
    if (disc && modMMC::ReadSessionInfo(transport, handle, sessions) == scsi::kStatusGood) {
        if (const auto info = modMMC::ParseSessionInfo(sessions))
            ApplySessionInfo(*disc, *info);
    }
    return disc;
}

}  // namespace plattmix::audiocd
