#include "DiscId.h"

#include <algorithm>
#include <cstdio>

#include "Sha1.h"
#include "modMSF.h"

namespace plattmix::audiocd {
namespace {

constexpr int32_t kLeadInFrames = modMSF::kPregapFrames;  // MusicBrainz counts from the lead-in

std::string Hex(uint32_t value, int digits) {
    char text[9];
    std::snprintf(text, sizeof text, "%0*X", digits, value);
    return text;
}

std::string Base64(std::span<const uint8_t> bytes) {
    static constexpr char kDigits[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._";
    std::string text;
    for (size_t at = 0; at < bytes.size(); at += 3) {
        const size_t left = std::min<size_t>(3, bytes.size() - at);
        uint32_t group = uint32_t{bytes[at]} << 16;
        if (left > 1)
            group |= uint32_t{bytes[at + 1]} << 8;
        if (left > 2)
            group |= bytes[at + 2];
        for (size_t i = 0; i < 4; ++i)
            text += i <= left ? kDigits[group >> (18 - 6 * i) & 0x3F] : '-';
    }
    return text;
}

}  // namespace

std::string MusicBrainzDiscId(int firstTrack, int lastTrack, int32_t leadOut,
                              std::span<const int32_t> offsets) {
    std::string fields = Hex(static_cast<uint32_t>(firstTrack), 2) +
                         Hex(static_cast<uint32_t>(lastTrack), 2) +
                         Hex(static_cast<uint32_t>(leadOut), 8);
    for (int track = 1; track <= 99; ++track) {
        const int at = track - firstTrack;
        const bool known = at >= 0 && static_cast<size_t>(at) < offsets.size();
        fields += Hex(known ? static_cast<uint32_t>(offsets[static_cast<size_t>(at)]) : 0, 8);
    }
    return Base64(Sha1(fields));
}

std::optional<DiscIdToc> DiscIdTocOf(const TrackList& list) {
    const auto& rows = list.rows;
    const auto isAudio = [](const TrackRow& row) { return row.inhalt == kTextAudio; };
    const auto lastAudio = std::find_if(rows.rbegin(), rows.rend(), isAudio);
    if (lastAudio == rows.rend())
        return std::nullopt;
    const auto end = lastAudio.base();  // after the last audio track
    DiscIdToc toc;
    toc.firstTrack = rows.front().track;
    toc.lastTrack = (end - 1)->track;
    for (auto row = rows.begin(); row != end; ++row)
        toc.offsets.push_back(row->startLba + kLeadInFrames);
    // The last audio track's end: the disc's lead-out, or on an Enhanced CD its audio
    // session's, as the track list reads them from the sessions.
    toc.leadOut = (end - 1)->endLba + kLeadInFrames;
    return toc;
}

}  // namespace plattmix::audiocd
