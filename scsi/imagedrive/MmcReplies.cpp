#include "imagedrive/MmcReplies.h"

#include <algorithm>
#include <string_view>

namespace plattmix::scsi::imagedrive {

namespace {

constexpr uint8_t kAdrPosition = 0x10;  // ADR 1: Q sub-channel holds the current position
constexpr uint8_t kLeadOut = 0xAA;
constexpr uint8_t kDiscTypeCdDaOrRom = 0x00;
constexpr uint8_t kDiscTypeXa = 0x20;

void Put16(Reply& reply, size_t at, size_t value) {
    reply[at] = static_cast<uint8_t>((value >> 8) & 0xFFu);
    reply[at + 1] = static_cast<uint8_t>(value & 0xFFu);
}

void PutText(Reply& reply, size_t at, size_t width, std::string_view text) {
    for (size_t i = 0; i < width; ++i) {
        reply[at + i] = static_cast<uint8_t>(i < text.size() ? text[i] : ' ');
    }
}

struct Msf {
    uint8_t minute, second, frame;
};

Msf ToMsf(int32_t lba) {
    const int32_t frames = lba + 150;
    return Msf{static_cast<uint8_t>(frames / (60 * 75)), static_cast<uint8_t>((frames / 75) % 60),
               static_cast<uint8_t>(frames % 75)};
}

// A four-byte TOC address: reserved, M, S, F, or the LBA big-endian.
void PutAddress(Reply& reply, size_t at, int32_t lba, bool msf) {
    if (msf) {
        const Msf time = ToMsf(lba);
        reply[at] = 0;
        reply[at + 1] = time.minute;
        reply[at + 2] = time.second;
        reply[at + 3] = time.frame;
        return;
    }
    const auto value = static_cast<uint32_t>(lba);
    for (size_t i = 0; i < 4; ++i)
        reply[at + i] = static_cast<uint8_t>(value >> (24 - 8 * i));
}

void AppendTrackDescriptor(Reply& reply, uint8_t control, uint8_t number, int32_t lba, bool msf) {
    const size_t at = reply.size();
    reply.resize(at + 8);
    reply[at + 1] = static_cast<uint8_t>(kAdrPosition | control);
    reply[at + 2] = number;
    PutAddress(reply, at + 4, lba, msf);
}

uint8_t DiscType(const DiscImage& disc, const DiscSession& session) {
    for (size_t t = session.firstTrack; t <= session.lastTrack; ++t) {
        if (disc.tracks[t].mode == TrackMode::Mode2_2352)
            return kDiscTypeXa;
    }
    return kDiscTypeCdDaOrRom;
}

// One full-TOC descriptor: session, ADR/control, TNO 0, POINT, zero ATIME, PMIN/PSEC/PFRAME.
void AppendPoint(Reply& reply, int session, uint8_t control, uint8_t point,
                 std::array<uint8_t, 3> pTime) {
    const size_t at = reply.size();
    reply.resize(at + 11);
    reply[at] = static_cast<uint8_t>(session);
    reply[at + 1] = static_cast<uint8_t>(kAdrPosition | control);
    reply[at + 3] = point;
    std::copy(pTime.begin(), pTime.end(), reply.begin() + static_cast<std::ptrdiff_t>(at + 8));
}

constexpr uint16_t kFeatureCdRead = 0x001E;

struct Feature {
    uint16_t code;
    Reply body;  // the bytes after the four-byte feature header
};

std::vector<Feature> Features(bool mediumPresent, bool c2Pointers) {
    constexpr uint8_t kC2Flag = 0x02;
    return {
        {0x0000, {0x00, 0x08, mediumPresent ? uint8_t{0x01} : uint8_t{0x00}, 0x00}},  // profiles
        {0x0001, {0x00, 0x00, 0x00, 0x01}},  // core: SCSI family interface
        {0x0003, {0x29, 0x00, 0x00, 0x00}},  // removable medium: tray, eject, lock
        {kFeatureCdRead, {c2Pointers ? kC2Flag : uint8_t{0x00}, 0x00, 0x00, 0x00}},  // CD read
    };
}

}  // namespace

Reply InquiryReply() {
    Reply reply(36, 0);
    reply[0] = 0x05;  // CD/DVD device
    reply[1] = 0x80;  // removable medium
    reply[2] = 0x05;
    reply[3] = 0x02;  // response data format
    reply[4] = static_cast<uint8_t>(reply.size() - 5);
    PutText(reply, 8, 8, "PLATTMIX");
    PutText(reply, 16, 16, "Image Drive");
    PutText(reply, 32, 4, "1.0");
    return reply;
}

std::optional<Reply> TocReply(const DiscImage& disc, bool msf, uint8_t startTrack) {
    const int lastTrack = disc.tracks.back().number;
    if (startTrack != kLeadOut && startTrack > lastTrack)
        return std::nullopt;
    Reply reply(4, 0);
    reply[2] = static_cast<uint8_t>(disc.tracks.front().number);
    reply[3] = static_cast<uint8_t>(lastTrack);
    for (const DiscTrack& track : disc.tracks) {
        if (startTrack == kLeadOut || track.number < startTrack)
            continue;
        AppendTrackDescriptor(reply, track.control, static_cast<uint8_t>(track.number), track.start,
                              msf);
    }
    AppendTrackDescriptor(reply, disc.tracks.back().control, kLeadOut, disc.LeadOut(), msf);
    Put16(reply, 0, reply.size() - 2);
    return reply;
}

Reply SessionInfoReply(const DiscImage& disc, bool msf) {
    Reply reply(4, 0);
    reply[2] = 1;
    reply[3] = static_cast<uint8_t>(disc.sessions.back().number);
    const DiscTrack& first = disc.tracks[disc.sessions.back().firstTrack];
    AppendTrackDescriptor(reply, first.control, static_cast<uint8_t>(first.number), first.start,
                          msf);
    Put16(reply, 0, reply.size() - 2);
    return reply;
}

std::optional<Reply> FullTocReply(const DiscImage& disc, uint8_t startSession) {
    if (startSession > disc.sessions.back().number)
        return std::nullopt;
    Reply reply(4, 0);
    reply[2] = 1;
    reply[3] = static_cast<uint8_t>(disc.sessions.back().number);
    for (const DiscSession& session : disc.sessions) {
        if (session.number < startSession)
            continue;
        const DiscTrack& first = disc.tracks[session.firstTrack];
        const DiscTrack& last = disc.tracks[session.lastTrack];
        const Msf leadOut = ToMsf(session.leadOut);
        AppendPoint(reply, session.number, first.control, 0xA0,
                    {static_cast<uint8_t>(first.number), DiscType(disc, session), 0});
        AppendPoint(reply, session.number, last.control, 0xA1,
                    {static_cast<uint8_t>(last.number), 0, 0});
        AppendPoint(reply, session.number, last.control, 0xA2,
                    {leadOut.minute, leadOut.second, leadOut.frame});
        for (size_t t = session.firstTrack; t <= session.lastTrack; ++t) {
            const DiscTrack& track = disc.tracks[t];
            const Msf start = ToMsf(track.start);
            AppendPoint(reply, session.number, track.control, static_cast<uint8_t>(track.number),
                        {start.minute, start.second, start.frame});
        }
    }
    Put16(reply, 0, reply.size() - 2);
    return reply;
}

Reply CapacityReply(const DiscImage& disc) {
    Reply reply(8, 0);
    PutAddress(reply, 0, disc.LeadOut() - 1, false);
    PutAddress(reply, 4, 2048, false);
    return reply;
}

Reply DiscInformationReply(const DiscImage& disc) {
    Reply reply(34, 0);
    const DiscSession& last = disc.sessions.back();
    Put16(reply, 0, reply.size() - 2);
    reply[2] = 0x0E;  // last session complete, disc complete, not erasable
    reply[3] = static_cast<uint8_t>(disc.tracks.front().number);
    reply[4] = static_cast<uint8_t>(last.number);
    reply[5] = static_cast<uint8_t>(disc.tracks[last.firstTrack].number);
    reply[6] = static_cast<uint8_t>(disc.tracks[last.lastTrack].number);
    reply[7] = 0x20;  // unrestricted use
    reply[8] = kDiscTypeCdDaOrRom;
    for (const DiscSession& session : disc.sessions)
        reply[8] |= DiscType(disc, session);
    std::fill(reply.begin() + 16, reply.begin() + 24, uint8_t{0xFF});  // no next session
    return reply;
}

Reply ConfigurationReply(uint16_t currentProfile, uint8_t requestType, uint16_t startFeature,
                         bool c2Pointers) {
    Reply reply(8, 0);
    Put16(reply, 6, currentProfile);
    const bool present = currentProfile != kProfileNone;
    for (const Feature& feature : Features(present, c2Pointers)) {
        if (feature.code < startFeature)
            continue;
        if (requestType == 2 && feature.code != startFeature)
            continue;
        const bool persistent = feature.code != kFeatureCdRead;
        const bool current = persistent || present;  // reading a CD needs a CD
        if (requestType == 1 && !current)
            continue;
        const size_t at = reply.size();
        reply.resize(at + 4);
        Put16(reply, at, feature.code);
        reply[at + 2] = static_cast<uint8_t>((persistent ? 0x02 : 0x00) | (current ? 0x01 : 0x00));
        reply[at + 3] = static_cast<uint8_t>(feature.body.size());
        reply.insert(reply.end(), feature.body.begin(), feature.body.end());
    }
    const size_t length = reply.size() - 4;
    for (size_t i = 0; i < 4; ++i)
        reply[i] = static_cast<uint8_t>(length >> (24 - 8 * i));
    return reply;
}

Reply EventStatusReply(uint8_t requestedClasses, uint8_t mediaEvent, bool doorOpen,
                       bool mediaPresent) {
    constexpr uint8_t kMediaClass = 0x10;
    if ((requestedClasses & kMediaClass) == 0) {
        return Reply{0x00, 0x02, 0x80, kMediaClass};  // no event available
    }
    return Reply{0x00,
                 0x06,
                 0x04,  // media class
                 kMediaClass,
                 mediaEvent,
                 static_cast<uint8_t>((doorOpen ? 0x01 : 0x00) | (mediaPresent ? 0x02 : 0x00)),
                 0x00,
                 0x00};
}

}  // namespace plattmix::scsi::imagedrive
