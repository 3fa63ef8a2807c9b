#include "TrackList.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "ScsiStatus.h"
#include "SessionToc.h"
#include "modMMC.h"
#include "modMSF.h"

namespace plattmix::audiocd {

int IsDataTrack(uint8_t adrControl) {
    std::string bits = modMSF::ByteToBinary(adrControl);
    if (bits.size() < 4)
        bits.insert(0, 4 - bits.size(), '0');
    std::string control = bits.substr(bits.size() - 4);
    control[2] = '0';  // the copy-permitted bit does not decide
    // "1111" can never match after the line above; the list is kept whole all the same.
    static constexpr std::array<const char*, 7> kAudio = {"0000", "0001", "1000", "1001",
                                                          "1100", "1101", "1111"};
    const bool audio = std::find(kAudio.begin(), kAudio.end(), control) != kAudio.end();
    return audio ? 0 : 1;
}

std::string FormatDauer(int64_t milliseconds) {
    const int64_t minutes = milliseconds / 60000;
    const int64_t seconds = (milliseconds % 60000) / 1000;
    char text[32];
    std::snprintf(text, sizeof text, "%02lld:%02lld", static_cast<long long>(minutes),
                  static_cast<long long>(seconds));
    return text;
}

namespace {

TrackList Failed(const char* text) {
    TrackList list;
    list.emptyText = text;
    return list;
}

}  // namespace

TrackList ReadTrackList(scsi::ISCSI& transport, std::string handle) {
    if (modMMC::TestUnitReady(transport, handle) == scsi::kStatusCheckCondition) {
        const bool noMedium = transport.LastSK() == scsi::kSenseNotReady &&
                              transport.LastASC() == scsi::kAscMediumNotPresent;
        return Failed(noMedium ? kTextNoDisc : kTextNotReady);
    }
    std::array<uint8_t, modMMC::kTocReplyLength> reply{};
    if (modMMC::ReadTOC(transport, handle, true, reply) != scsi::kStatusGood) {
        return Failed(kTextBlankDisc);
    }
    const auto toc = modMMC::ParseTOC(reply);
    TrackList list;
    if (!toc)
        return list;
    auto sessions = SessionTocFromToc(*toc, true);
    if (sessions)
        ReadSessions(transport, handle, *sessions);
    const auto& d = toc->descriptors;
    bool anyAudio = false;
    // Every descriptor that has a following one is a track; the last is the lead-out. The last
    // track of a session that another follows ends at its session's lead-out.
    for (size_t i = 0; i + 1 < d.size(); ++i) {
        const modMSF::MSF start = modMSF::MakeMSF(d[i].address);
        const bool endsSession =
            sessions && i < sessions->tracks.size() && sessions->EndsEarlierSession(i);
        const modMSF::MSF end = endsSession ? modMSF::LBAToMSF(sessions->TrackEndLba(i))
                                            : modMSF::MakeMSF(d[i + 1].address);
        const bool data = IsDataTrack(d[i].adrControl) == 1;
        anyAudio = anyAudio || !data;
        TrackRow row;
        row.track = d[i].track;
        row.anfang = modMSF::MSFToString(start);
        row.ende = modMSF::MSFToString(end);
        row.inhalt = data ? kTextData : kTextAudio;
        row.startLba = modMSF::MSFToLBA(start);
        row.endLba = modMSF::MSFToLBA(end);
        const int64_t frames = std::max<int64_t>(0, row.endLba - row.startLba);
        row.dauer = FormatDauer(frames * 1000 / modMSF::kFramesPerSecond);
        list.rows.push_back(std::move(row));
    }
    list.isDataCD = !list.rows.empty() && !anyAudio;
    return list;
}

}  // namespace plattmix::audiocd
