#include "CdText.h"

#include <algorithm>
#include <array>
#include <vector>

#include "MmcOpcodes.h"
#include "ScsiStatus.h"
#include "modMMC.h"

namespace plattmix::audiocd {

namespace {

constexpr size_t kHeader = 4;
constexpr size_t kPack = 18;
constexpr size_t kTextBytes = 12;
constexpr uint8_t kTitlePack = 0x80;
constexpr uint8_t kPerformerPack = 0x81;
constexpr uint8_t kMaxCharPosition = 15;
constexpr int kMaxTrack = 99;
// Eight blocks of 256 packs behind the header: the most a drive can have to tell.
constexpr uint16_t kLargestReply = static_cast<uint16_t>(kHeader + 8 * 256 * kPack);

bool CrcMatches(std::span<const uint8_t> pack) {
    const uint16_t stored = static_cast<uint16_t>((pack[16] << 8) | pack[17]);
    return modMMC::CdTextCrc(pack.first(16)) == stored;
}

std::string Latin1ToUtf8(const std::string& latin1) {
    std::string out;
    for (const char c : latin1) {
        const auto code = static_cast<uint8_t>(c);
        if (code < 0x80) {
            out.push_back(c);
            continue;
        }
        out.push_back(static_cast<char>(0xC0u | (code >> 6)));
        out.push_back(static_cast<char>(0x80u | (code & 0x3Fu)));
    }
    return out;
}

// Collects the texts of one pack type. The packs carry the texts one after the other, each
// ending in a NUL; each pack names the text its first byte belongs to and how many characters
// of it came before. When a pack does not continue where the last one stopped (a pack was
// skipped: the sequence number jumps and the position does not fit), the text in progress is
// dropped and reading picks up from the pack's own header.
class TextStream {
  public:
    void Add(std::span<const uint8_t> pack) {
        const int track = pack[1] & 0x7F;
        const uint8_t position = pack[3] & 0x0F;
        const uint8_t sequence = pack[2];
        const bool next = started_ && sequence == static_cast<uint8_t>(sequence_ + 1);
        const bool inPlace = position == std::min<size_t>(text_.size(), kMaxCharPosition);
        const bool continues = started_ && track == track_ && (next || inPlace);
        sequence_ = sequence;
        if (!continues) {
            started_ = true;
            track_ = track;
            text_.clear();
            lost_ = position != 0;  // its beginning is gone: skip to the next text
        }
        for (size_t i = 4; i < 4 + kTextBytes; ++i) {
            if (pack[i] != 0) {
                text_.push_back(static_cast<char>(pack[i]));
                continue;
            }
            if (!lost_)
                Finish();
            lost_ = false;
            text_.clear();
            ++track_;
        }
    }

    const std::map<int, std::string>& Texts() const { return texts_; }

  private:
    void Finish() {
        if (track_ > kMaxTrack)
            return;
        std::string text = Latin1ToUtf8(text_);
        // A lone tab stands for the previous track's text.
        if (text == "\t") {
            const auto previous = texts_.find(track_ - 1);
            text = previous != texts_.end() ? previous->second : std::string();
        }
        texts_[track_] = std::move(text);
    }

    bool started_ = false;
    bool lost_ = false;
    uint8_t sequence_ = 0;
    int track_ = 0;
    std::string text_;
    std::map<int, std::string> texts_;
};

std::map<int, std::string> TrackTexts(const std::map<int, std::string>& all) {
    std::map<int, std::string> tracks;
    for (const auto& [track, text] : all) {
        if (track > 0 && !text.empty())
            tracks[track] = text;
    }
    return tracks;
}

std::string AlbumText(const std::map<int, std::string>& all) {
    const auto album = all.find(0);
    return album != all.end() ? album->second : std::string();
}

int32_t Ask(scsi::ISCSI& transport, std::string& handle, std::span<uint8_t> buffer) {
    const auto cdb = modMMC::BuildReadTOCFormat(false, scsi::kTocFormatCdText, 0,
                                                static_cast<uint16_t>(buffer.size()));
    auto cdbLength = static_cast<uint8_t>(cdb.size());
    int32_t direction = 0;
    int16_t timeOut = modMMC::kCommandTimeOut;
    return transport.ExecCMD(handle, cdb, cdbLength, direction, buffer.data(),
                             static_cast<int32_t>(buffer.size()), timeOut);
}

}  // namespace

std::optional<CdText> ParseCdText(std::span<const uint8_t> reply) {
    if (reply.size() < kHeader)
        return std::nullopt;
    const size_t length = (size_t{reply[0]} << 8) | reply[1];
    const size_t announced = length >= 2 ? (length - 2) / kPack : 0;
    const size_t packs = std::min(announced, (reply.size() - kHeader) / kPack);

    TextStream titles, performers;
    for (size_t p = 0; p < packs; ++p) {
        const auto pack = reply.subspan(kHeader + p * kPack, kPack);
        if (!CrcMatches(pack))
            continue;
        const bool block0 = (pack[3] & 0x70) == 0;
        const bool doubleByte = (pack[3] & 0x80) != 0;
        if (!block0 || doubleByte)
            continue;
        if (pack[0] == kTitlePack)
            titles.Add(pack);
        if (pack[0] == kPerformerPack)
            performers.Add(pack);
    }

    CdText text;
    text.albumTitle = AlbumText(titles.Texts());
    text.albumPerformer = AlbumText(performers.Texts());
    text.titles = TrackTexts(titles.Texts());
    text.performers = TrackTexts(performers.Texts());
    if (text.albumTitle.empty() && text.albumPerformer.empty() && text.titles.empty() &&
        text.performers.empty())
        return std::nullopt;
    return text;
}

std::optional<CdText> ReadCdText(scsi::ISCSI& transport, std::string handle) {
    // The header first, then as much as it announces.
    std::array<uint8_t, kHeader> header{};
    if (Ask(transport, handle, header) != scsi::kStatusGood)
        return std::nullopt;
    const size_t length = (size_t{header[0]} << 8) | header[1];
    if (length < 2 + kPack)
        return std::nullopt;
    std::vector<uint8_t> reply(std::min<size_t>(length + 2, kLargestReply), 0);
    if (Ask(transport, handle, reply) != scsi::kStatusGood)
        return std::nullopt;
    return ParseCdText(reply);
}

}  // namespace plattmix::audiocd
