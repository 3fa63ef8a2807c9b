#include "DiscId.h"

#include <algorithm>
#include <cstdio>

#include "Sha1.h"

namespace plattmix::audiocd {
namespace {

constexpr int32_t kLeadInFrames = 150;
// Between the audio session's lead-out and the data session's first track: the lead-out area
// (6750 frames), the next lead-in (4500) and the data track's pre-gap (150).
constexpr int32_t kSessionGapFrames = 11400;

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
    if (end == rows.end()) {
        toc.leadOut = rows.back().endLba + kLeadInFrames;
    } else {
        // Enhanced CD: the audio session's own lead-out, derived from where the data session
        // starts. TODO(session TOC): take the first session's lead-out from READ TOC instead.
        toc.leadOut = end->startLba + kLeadInFrames - kSessionGapFrames;
    }
    return toc;
}

}  // namespace plattmix::audiocd
