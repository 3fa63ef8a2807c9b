#include "imagedrive/CdTextReply.h"

#include <algorithm>
#include <array>

#include "modMMC.h"

namespace plattmix::scsi::imagedrive {

namespace {

constexpr size_t kTextBytes = 12;     // text bytes of one pack
constexpr size_t kMaxPacks = 256;     // sequence numbers of one block
constexpr size_t kSizeInfoPacks = 3;  // 36 bytes of size information
constexpr uint8_t kMaxCharPosition = 15;
constexpr uint8_t kLanguageEnglish = 0x09;  // the sheet does not say; most discs use it

// One pack with its header, text bytes and CRC.
void AppendPack(std::vector<uint8_t>& out, uint8_t type, uint8_t track, uint8_t charPosition,
                std::span<const uint8_t> text) {
    const size_t at = out.size();
    out.resize(at + kCdTextPackSize, 0);
    out[at] = type;
    out[at + 1] = track;
    out[at + 2] = static_cast<uint8_t>(at / kCdTextPackSize);  // sequence within the block
    out[at + 3] = charPosition;                                // block 0, single-byte text
    std::copy(text.begin(), text.end(), out.begin() + static_cast<std::ptrdiff_t>(at + 4));
    const uint16_t crc = modMMC::CdTextCrc(std::span<const uint8_t>(out).subspan(at, 16));
    out[at + 16] = static_cast<uint8_t>(crc >> 8);
    out[at + 17] = static_cast<uint8_t>(crc & 0xFFu);
}

bool AllEmpty(const std::vector<std::string>& texts) {
    return std::all_of(texts.begin(), texts.end(), [](const std::string& t) { return t.empty(); });
}

// The texts of one pack type, each NUL-terminated, cut into packs. Each pack names the entry
// its first byte belongs to and how many of that entry's characters came before (at most 15).
// Returns the number of packs appended.
size_t AppendTextPacks(std::vector<uint8_t>& out, uint8_t type, int firstTrack,
                       const std::vector<std::string>& texts, size_t maxPacks) {
    std::vector<uint8_t> stream;
    std::vector<uint8_t> trackOf;   // per stream byte
    std::vector<uint8_t> offsetOf;  // per stream byte: characters of its entry before it
    for (size_t entry = 0; entry < texts.size(); ++entry) {
        const auto track =
            static_cast<uint8_t>(entry == 0 ? 0 : firstTrack + static_cast<int>(entry) - 1);
        const std::string& text = texts[entry];
        for (size_t i = 0; i <= text.size(); ++i) {
            stream.push_back(i < text.size() ? static_cast<uint8_t>(text[i]) : uint8_t{0});
            trackOf.push_back(track);
            offsetOf.push_back(static_cast<uint8_t>(std::min<size_t>(i, kMaxCharPosition)));
        }
    }
    size_t packs = 0;
    for (size_t at = 0; at < stream.size() && packs < maxPacks; at += kTextBytes, ++packs) {
        std::array<uint8_t, kTextBytes> text{};
        const size_t n = std::min(kTextBytes, stream.size() - at);
        std::copy_n(stream.begin() + static_cast<std::ptrdiff_t>(at), n, text.begin());
        if (packs + 1 == maxPacks && at + kTextBytes < stream.size())
            text.back() = 0;  // a text cut at the end of the block still ends in a NUL
        AppendPack(out, type, trackOf[at], offsetOf[at], text);
    }
    return packs;
}

void AppendUtf8Fallback(std::string& out, size_t& i, std::string_view utf8) {
    out.push_back('?');
    ++i;
    // Skip the continuation bytes of the character that could not be placed.
    while (i < utf8.size() && (static_cast<uint8_t>(utf8[i]) & 0xC0u) == 0x80u)
        ++i;
}

}  // namespace

std::string ToLatin1(std::string_view utf8) {
    std::string out;
    size_t i = 0;
    while (i < utf8.size()) {
        const auto lead = static_cast<uint8_t>(utf8[i]);
        if (lead < 0x80) {
            out.push_back(static_cast<char>(lead));
            ++i;
            continue;
        }
        // Two-byte sequences from C2 and C3 cover U+0080..U+00FF; everything else is outside.
        if ((lead == 0xC2 || lead == 0xC3) && i + 1 < utf8.size() &&
            (static_cast<uint8_t>(utf8[i + 1]) & 0xC0u) == 0x80u) {
            const auto next = static_cast<uint8_t>(utf8[i + 1]);
            out.push_back(static_cast<char>(((lead & 0x03u) << 6) | (next & 0x3Fu)));
            i += 2;
            continue;
        }
        AppendUtf8Fallback(out, i, utf8);
    }
    return out;
}

std::vector<uint8_t> CdTextPacks(const CdTextBlock& block) {
    std::vector<uint8_t> out;
    std::array<uint8_t, 16> counts{};
    size_t room = kMaxPacks - kSizeInfoPacks;
    const std::array<std::pair<uint8_t, const std::vector<std::string>*>, 2> kinds{
        {{kPackTitle, &block.titles}, {kPackPerformer, &block.performers}}};
    for (const auto& [type, texts] : kinds) {
        if (AllEmpty(*texts))
            continue;
        const size_t packs = AppendTextPacks(out, type, block.firstTrack, *texts, room);
        room -= packs;
        counts[type & 0x0Fu] = static_cast<uint8_t>(packs);
    }
    if (out.empty())
        return out;

    counts[kPackSizeInfo & 0x0Fu] = kSizeInfoPacks;
    const size_t totalPacks = out.size() / kCdTextPackSize + kSizeInfoPacks;
    const size_t entries = std::max(block.titles.size(), block.performers.size());
    const int trackCount = static_cast<int>(std::max<size_t>(entries, 2) - 1);  // album aside
    std::array<uint8_t, kSizeInfoPacks * kTextBytes> info{};
    info[0] = kCharCodeLatin1;
    info[1] = static_cast<uint8_t>(block.firstTrack);
    info[2] = static_cast<uint8_t>(block.firstTrack + trackCount - 1);
    info[3] = 0;  // no copy protection flags
    std::copy(counts.begin(), counts.end(), info.begin() + 4);
    info[20] = static_cast<uint8_t>(totalPacks - 1);  // last sequence number of block 0
    info[28] = kLanguageEnglish;
    for (size_t p = 0; p < kSizeInfoPacks; ++p) {
        AppendPack(out, kPackSizeInfo, static_cast<uint8_t>(p), 0,
                   std::span<const uint8_t>(info).subspan(p * kTextBytes, kTextBytes));
    }
    return out;
}

std::optional<Reply> CdTextReply(const DiscImage& disc) {
    CdTextBlock block;
    block.firstTrack = disc.tracks.front().number;
    block.titles.push_back(ToLatin1(disc.title));
    block.performers.push_back(ToLatin1(disc.performer));
    for (const DiscTrack& track : disc.tracks) {
        block.titles.push_back(ToLatin1(track.title));
        block.performers.push_back(ToLatin1(track.performer));
    }
    const std::vector<uint8_t> packs = CdTextPacks(block);
    if (packs.empty())
        return std::nullopt;
    Reply reply(4, 0);
    const size_t length = packs.size() + 2;
    reply[0] = static_cast<uint8_t>(length >> 8);
    reply[1] = static_cast<uint8_t>(length & 0xFFu);
    reply.insert(reply.end(), packs.begin(), packs.end());
    return reply;
}

}  // namespace plattmix::scsi::imagedrive
