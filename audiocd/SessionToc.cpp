#include "SessionToc.h"

#include <algorithm>
#include <array>
#include <map>

#include "ScsiStatus.h"
#include "TrackList.h"
#include "modMSF.h"

namespace plattmix::audiocd {

namespace {

constexpr uint8_t kAdrPosition = 1;
constexpr int kMaxTrackPoint = 99;
// Far beyond the last sector of any disc; a table with an address outside ±this is damaged, and
// sums of addresses within it never overflow.
constexpr int32_t kLargestLba = 1 << 30;

int32_t AddressLba(const std::array<uint8_t, 4>& address, bool msf) {
    if (msf)
        return modMSF::MSFToLBA(modMSF::MakeMSF(address));
    return static_cast<int32_t>(modMSF::BytesToLong(address));
}

// Numbers the tracks' sessions and finds each session's track range; the lead-outs come
// from the caller, one per session number in order.
std::vector<TocSession> GroupSessions(const std::vector<TocTrack>& tracks,
                                      const std::vector<int32_t>& leadOuts) {
    std::vector<TocSession> sessions;
    for (size_t i = 0; i < tracks.size(); ++i) {
        if (sessions.empty() || sessions.back().number != tracks[i].session)
            sessions.push_back(TocSession{tracks[i].session, i, i, 0});
        sessions.back().lastTrack = i;
    }
    for (size_t s = 0; s < sessions.size() && s < leadOuts.size(); ++s)
        sessions[s].leadOutLba = leadOuts[s];
    return sessions;
}

// Each session's lead-out lies after its last track's start and no later than the next
// session's first track.
bool Plausible(const std::vector<TocTrack>& tracks, const std::vector<TocSession>& sessions) {
    for (size_t s = 0; s < sessions.size(); ++s) {
        const int32_t leadOut = sessions[s].leadOutLba;
        if (leadOut <= tracks[sessions[s].lastTrack].startLba)
            return false;
        if (s + 1 < sessions.size() && leadOut > tracks[sessions[s + 1].firstTrack].startLba)
            return false;
    }
    return true;
}

// Takes the new session numbers when they make ascending, plausible sessions. The last
// session always ends at the disc's lead-out, as the table of contents has it.
bool Regroup(SessionToc& toc, const std::vector<int>& sessionOfTrack,
             std::vector<int32_t> leadOuts) {
    std::vector<TocTrack> tracks = toc.tracks;
    for (size_t i = 0; i < tracks.size(); ++i) {
        if (i > 0 && sessionOfTrack[i] < sessionOfTrack[i - 1])
            return false;
        tracks[i].session = sessionOfTrack[i];
    }
    std::vector<TocSession> sessions = GroupSessions(tracks, leadOuts);
    if (sessions.size() != leadOuts.size())
        return false;
    sessions.back().leadOutLba = toc.leadOutLba;
    if (!Plausible(tracks, sessions))
        return false;
    toc.tracks = std::move(tracks);
    toc.sessions = std::move(sessions);
    return true;
}

}  // namespace

int32_t SessionToc::TrackEndLba(size_t index) const {
    const TocSession& session = SessionOf(index);
    if (index < session.lastTrack)
        return tracks[index + 1].startLba;
    return session.leadOutLba;
}

bool SessionToc::EndsEarlierSession(size_t index) const {
    const TocSession& session = SessionOf(index);
    return index == session.lastTrack && &session != &sessions.back();
}

const TocSession& SessionToc::SessionOf(size_t index) const {
    for (const TocSession& session : sessions) {
        if (index <= session.lastTrack)
            return session;
    }
    return sessions.back();
}

std::optional<SessionToc> SessionTocFromToc(const modMMC::Toc& toc, bool msf) {
    SessionToc result;
    bool leadOut = false;
    for (const modMMC::TocDescriptor& d : toc.descriptors) {
        const int32_t lba = AddressLba(d.address, msf);
        if (lba <= -kLargestLba || lba >= kLargestLba)
            return std::nullopt;
        if (d.track == modMMC::kLeadOutTrack) {
            result.leadOutLba = lba;
            leadOut = true;
            break;
        }
        result.tracks.push_back(TocTrack{d.track, 1, lba, IsDataTrack(d.adrControl) == 1});
    }
    if (result.tracks.empty() || !leadOut)
        return std::nullopt;
    result.sessions = GroupSessions(result.tracks, {result.leadOutLba});
    return result;
}

bool ApplyFullToc(SessionToc& toc, const modMMC::FullToc& full) {
    std::map<int, int> sessionOfNumber;  // track number -> session
    std::map<int, int32_t> leadOutOfSession;
    for (const modMMC::FullTocEntry& entry : full.entries) {
        if ((entry.adrControl >> 4) != kAdrPosition)
            continue;
        if (entry.point >= 1 && entry.point <= kMaxTrackPoint)
            sessionOfNumber[entry.point] = entry.session;
        if (entry.point == modMMC::kPointLeadOut) {
            leadOutOfSession[entry.session] =
                modMSF::MSFToLBA(modMSF::MakeMSF(entry.pMinute, entry.pSecond, entry.pFrame));
        }
    }
    std::vector<int> sessionOfTrack;
    for (const TocTrack& track : toc.tracks) {
        const auto found = sessionOfNumber.find(track.number);
        if (found == sessionOfNumber.end() || !leadOutOfSession.contains(found->second))
            return false;
        sessionOfTrack.push_back(found->second);
    }
    std::vector<int32_t> leadOuts;  // one per session, in the tracks' order
    int previous = 0;
    for (const int session : sessionOfTrack) {
        if (session != previous)
            leadOuts.push_back(leadOutOfSession[session]);
        previous = session;
    }
    return Regroup(toc, sessionOfTrack, std::move(leadOuts));
}

bool ApplySessionInfo(SessionToc& toc, const modMMC::SessionInfo& info) {
    if (info.lastSession <= info.firstSession)
        return false;
    const auto last = std::find_if(toc.tracks.begin(), toc.tracks.end(), [&](const TocTrack& t) {
        return t.number == info.lastSessionFirstTrack;
    });
    if (last == toc.tracks.begin() || last == toc.tracks.end())
        return false;
    std::vector<int> sessionOfTrack;
    for (auto it = toc.tracks.begin(); it != toc.tracks.end(); ++it)
        sessionOfTrack.push_back(it < last ? info.lastSession - 1 : info.lastSession);
    const int32_t before = last->startLba - modMMC::kSessionGapSectors;
    return Regroup(toc, sessionOfTrack, {before, toc.leadOutLba});
}

void ReadSessions(scsi::ISCSI& transport, std::string& handle, SessionToc& toc) {
    std::array<uint8_t, modMMC::kFullTocLength> full{};
    if (modMMC::ReadFullToc(transport, handle, full) == scsi::kStatusGood) {
        if (const auto parsed = modMMC::ParseFullToc(full); parsed && ApplyFullToc(toc, *parsed))
            return;
    }
    std::array<uint8_t, modMMC::kSessionInfoLength> info{};
    if (modMMC::ReadSessionInfo(transport, handle, info) == scsi::kStatusGood) {
        if (const auto parsed = modMMC::ParseSessionInfo(info))
            ApplySessionInfo(toc, *parsed);
    }
}

std::optional<SessionToc> ReadSessionToc(scsi::ISCSI& transport, std::string handle) {
    std::array<uint8_t, modMMC::kTocReplyLength> reply{};
    if (modMMC::ReadTOC(transport, handle, false, reply) != scsi::kStatusGood)
        return std::nullopt;
    const auto table = modMMC::ParseTOC(reply);
    auto toc = table ? SessionTocFromToc(*table, false) : std::nullopt;
    if (toc)
        ReadSessions(transport, handle, *toc);
    return toc;
}

std::optional<ExactTrackBounds> ExactBoundsOf(const SessionToc& toc, int position) {
    if (position < 1 || static_cast<size_t>(position) > toc.tracks.size())
        return std::nullopt;
    const auto index = static_cast<size_t>(position - 1);
    const ExactTrackBounds bounds{toc.tracks[index].startLba, toc.TrackEndLba(index) - 1};
    if (bounds.lastLba < bounds.firstLba)
        return std::nullopt;
    return bounds;
}

}  // namespace plattmix::audiocd
