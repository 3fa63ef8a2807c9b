#include "imagedrive/SubChannelReply.h"

#include <algorithm>

#include "MmcOpcodes.h"
#include "modMMC.h"
#include "modMSF.h"

namespace plattmix::scsi::imagedrive {

namespace {

constexpr uint8_t kNoAudioStatus = 0x15;
constexpr uint8_t kDataLength = 20;  // the bytes after the header
constexpr uint8_t kValid = 0x80;
constexpr uint8_t kAdrPosition = 1;
constexpr uint8_t kAdrIsrc = 3;

// Header, format code, then the valid flag and the text from byte 8 on.
Reply TextReply(uint8_t format, const std::string& text) {
    Reply reply(4 + kDataLength, 0);
    reply[1] = kNoAudioStatus;
    reply[3] = kDataLength;
    reply[4] = format;
    if (!text.empty()) {
        reply[8] = kValid;
        std::copy_n(text.begin(), std::min<size_t>(text.size(), 13), reply.begin() + 9);
    }
    return reply;
}

void PutMsf(std::array<uint8_t, 16>& q, size_t at, int32_t frames) {
    std::ranges::copy(modMSF::ToBcd(modMSF::LBAToMSF(frames - modMSF::kPregapFrames)),
                      q.begin() + static_cast<std::ptrdiff_t>(at));
}

}  // namespace

std::optional<Reply> SubChannelReply(const DiscImage& disc, uint8_t format, uint8_t track) {
    if (format == kSubChannelCatalog)
        return TextReply(format, disc.catalog);
    if (format != kSubChannelIsrc)
        return std::nullopt;
    const DiscTrack* numbered = disc.TrackNumbered(track);
    if (numbered == nullptr)
        return std::nullopt;
    Reply reply = TextReply(format, numbered->isrc.substr(0, 12));
    reply[5] = static_cast<uint8_t>((kAdrIsrc << 4) | numbered->control);
    reply[6] = track;
    return reply;
}

std::array<uint8_t, 16> QSubChannel(const DiscImage& disc, int32_t lba) {
    std::array<uint8_t, 16> q{};
    const DiscTrack* track = disc.TrackAt(lba);
    if (track == nullptr)
        return q;
    const bool pregap = lba < track->start;
    q[0] = static_cast<uint8_t>((track->control << 4) | kAdrPosition);
    q[1] = modMSF::ToBcd(track->number);
    q[2] = pregap ? 0 : 1;
    PutMsf(q, 3, pregap ? track->start - 1 - lba : lba - track->start);
    PutMsf(q, 7, lba + modMSF::kPregapFrames);
    const uint16_t crc = modMMC::CdTextCrc(std::span<const uint8_t>(q).first(10));
    q[10] = static_cast<uint8_t>(crc >> 8);
    q[11] = static_cast<uint8_t>(crc & 0xFF);
    return q;
}

}  // namespace plattmix::scsi::imagedrive
