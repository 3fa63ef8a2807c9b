#include "SecureTrack.h"

#include <algorithm>
#include <map>
#include <optional>

#include "AccurateRipChecksum.h"
#include "Crc32.h"
#include "TrackBounds.h"
#include "WavFile.h"
#include "WavHeader.h"
#include "modMSF.h"

namespace plattmix::audiocd {
namespace {

// Reads of one block, besides the two passes, before its sectors count as unsettled.
constexpr int kMaxExtraReads = 16;
constexpr size_t kSectorBytes = static_cast<size_t>(modMSF::kAudioFrameBytes);
constexpr size_t kBlockSectors = static_cast<size_t>(kRipBlockSectors);

std::span<const uint8_t> SectorOf(const std::vector<uint8_t>& audio, size_t sector) {
    return std::span<const uint8_t>(audio).subspan(sector * kSectorBytes, kSectorBytes);
}

// One pass over the track: each sector's CRC-32 and C2 mark, and the whole track's CRC-32.
struct Pass {
    std::vector<uint32_t> sectorCrcs;
    std::vector<bool> c2;
    Crc32 crc;
};

// The reads of one sector that two passes did not agree on: how often each content came, and
// the content itself.
struct Ballot {
    std::map<uint32_t, int> votes;
    std::map<uint32_t, std::vector<uint8_t>> contents;
    void Add(uint32_t crc, std::span<const uint8_t> bytes) {
        ++votes[crc];
        contents.try_emplace(crc, bytes.begin(), bytes.end());
    }
    // One content read twice at least, and more often than any other.
    std::optional<uint32_t> Winner() const {
        int best = 0, runnerUp = 0;
        uint32_t winner = 0;
        for (const auto& [crc, count] : votes) {
            if (count > best) {
                runnerUp = best;
                best = count;
                winner = crc;
            } else if (count > runnerUp) {
                runnerUp = count;
            }
        }
        return best >= 2 && best > runnerUp ? std::optional<uint32_t>(winner) : std::nullopt;
    }
};

class SecureTrackRun {
  public:
    SecureTrackRun(SecureReader& reader, const SecureTrackParams& params,
                   const std::string& wavPath, const JobHooks& hooks)
        : reader_(reader),
          params_(params),
          file_(wavPath, true),
          hooks_(hooks),
          blocks_(SecureReader::BlockCount(params.span)),
          sectors_(static_cast<size_t>(params.span.endLba - params.span.firstLba)) {}

    SecureTrackResult Run();

  private:
    // Reads every block; with writing, each goes to the file too and its checksums are summed.
    bool ReadPass(Pass& pass, bool writing);
    // Votes on every sector the passes disagree on (or the drive marked) until each is settled;
    // false when one cannot be.
    bool Settle(const Pass& first, const Pass& second);
    bool SettleBlock(size_t block, std::map<size_t, Ballot>& ballots);
    void Progress(size_t done) const {
        hooks_.Progress(static_cast<int>(done * 100 / std::max<size_t>(blocks_, 1)));
        hooks_.Yield();
    }
    SecureTrackResult Ended(SecureTrackResult::End end) {
        const bool closed = file_.Close();
        if (end == SecureTrackResult::End::Done && !closed)
            end = SecureTrackResult::End::FileFailed;
        if (end == SecureTrackResult::End::FileFailed)
            result_.fileError = file_.Error();
        else if (end != SecureTrackResult::End::Done)
            file_.Remove();
        result_.end = end;
        return std::move(result_);
    }
    SecureTrackResult::End Failure() const {
        using End = SecureTrackResult::End;
        return stopped_ ? End::Stopped : fileFailed_ ? End::FileFailed : End::ReadFailed;
    }
    // Puts the settled sectors into the file and sums the checksums again from it.
    bool Mend();
    void Judge() {
        if (params_.record != nullptr)
            result_.verdict =
                CompareWithRecord(*params_.record, params_.recordPosition, result_.v1, result_.v2);
    }

    SecureReader& reader_;
    const SecureTrackParams& params_;
    WavFile file_;
    const JobHooks& hooks_;
    size_t blocks_;
    size_t sectors_;
    std::map<size_t, std::vector<uint8_t>> settled_;  // sector -> the content the vote chose
    SecureTrackResult result_;
    bool stopped_ = false;
    bool fileFailed_ = false;
};

bool SecureTrackRun::ReadPass(Pass& pass, bool writing) {
    AccurateRipChecksum sums(static_cast<uint32_t>(params_.span.Samples()), params_.firstAudio,
                             params_.lastAudio);
    pass.sectorCrcs.assign(sectors_, 0);
    pass.c2.assign(sectors_, false);
    for (size_t index = 0; index < blocks_; ++index) {
        if (hooks_.Aborted()) {
            stopped_ = true;
            return false;
        }
        const SecureReader::Block block = reader_.Read(params_.span, index);
        if (!block.read)
            return false;
        for (size_t s = 0; s < block.c2.size(); ++s) {
            const size_t sector = index * kBlockSectors + s;
            pass.sectorCrcs[sector] = Crc32::Of(SectorOf(block.audio, s));
            pass.c2[sector] = block.c2[s];
        }
        pass.crc.Update(block.audio);
        if (writing) {
            sums.Update(block.audio);
            if (!file_.Append(block.audio)) {
                fileFailed_ = true;
                return false;
            }
        }
        Progress(index + 1);
    }
    result_.passCrcs.push_back(pass.crc.Value());
    if (writing) {
        result_.v1 = sums.V1();
        result_.v2 = sums.V2();
    }
    return true;
}

bool SecureTrackRun::Mend() {
    for (const auto& [sector, content] : settled_) {
        if (!file_.WriteAt(static_cast<int64_t>(kWavHeaderSize + sector * kSectorBytes), content)) {
            fileFailed_ = true;
            return false;
        }
    }
    // The file's audio as it is now, for its CRC and the AccurateRip checksums.
    AccurateRipChecksum sums(static_cast<uint32_t>(params_.span.Samples()), params_.firstAudio,
                             params_.lastAudio);
    Crc32 crc;
    std::vector<uint8_t> buffer(kBlockSectors * kSectorBytes);
    for (int64_t at = 0; at < params_.span.AudioBytes();) {
        const auto want = static_cast<size_t>(
            std::min<int64_t>(static_cast<int64_t>(buffer.size()), params_.span.AudioBytes() - at));
        const std::span<uint8_t> piece(buffer.data(), want);
        if (!file_.ReadAt(static_cast<int64_t>(kWavHeaderSize) + at, piece)) {
            fileFailed_ = true;
            return false;
        }
        crc.Update(piece);
        sums.Update(piece);
        at += static_cast<int64_t>(want);
    }
    result_.passCrcs.push_back(crc.Value());
    result_.v1 = sums.V1();
    result_.v2 = sums.V2();
    return true;
}

bool SecureTrackRun::SettleBlock(size_t block, std::map<size_t, Ballot>& ballots) {
    for (int extra = 0; extra < kMaxExtraReads; ++extra) {
        const bool open = std::any_of(ballots.begin(), ballots.end(),
                                      [](const auto& b) { return !b.second.Winner(); });
        if (!open)
            return true;
        if (hooks_.Aborted())
            return false;
        const SecureReader::Block again = reader_.ReRead(params_.span, block);
        result_.rereadSectors += static_cast<int>(again.c2.size());
        if (!again.read)
            continue;
        for (auto& [sector, ballot] : ballots) {
            const size_t s = sector - block * kBlockSectors;
            if (!ballot.Winner() && !again.c2[s])
                ballot.Add(Crc32::Of(SectorOf(again.audio, s)), SectorOf(again.audio, s));
        }
        hooks_.Yield();
    }
    return std::none_of(ballots.begin(), ballots.end(),
                        [](const auto& b) { return !b.second.Winner(); });
}

bool SecureTrackRun::Settle(const Pass& first, const Pass& second) {
    for (size_t block = 0; block < blocks_; ++block) {
        std::map<size_t, Ballot> ballots;
        const size_t end = std::min(sectors_, (block + 1) * kBlockSectors);
        for (size_t sector = block * kBlockSectors; sector < end; ++sector) {
            if (first.sectorCrcs[sector] != second.sectorCrcs[sector] || first.c2[sector] ||
                second.c2[sector])
                ballots[sector];  // the passes' contents are not at hand: they vote by reading
        }
        if (ballots.empty())
            continue;
        if (!SettleBlock(block, ballots)) {
            const int32_t lba = params_.span.firstLba + static_cast<int32_t>(block * kBlockSectors);
            result_.problem =
                "Die Lesedurchgänge stimmen ab Sektor " + std::to_string(lba) + " nicht überein.";
            return false;
        }
        for (auto& [sector, ballot] : ballots) {
            const uint32_t winner = *ballot.Winner();
            if (winner != first.sectorCrcs[sector])
                settled_[sector] = std::move(ballot.contents[winner]);
        }
    }
    return true;
}

SecureTrackResult SecureTrackRun::Run() {
    using End = SecureTrackResult::End;
    const auto header = StandardWavHeader(params_.span.AudioBytes());
    if (!file_.IsOpen() || !header || !file_.Append(*header))
        return Ended(End::FileFailed);
    Pass first;
    if (!ReadPass(first, true))
        return Ended(Failure());
    Judge();
    if (result_.verdict.Matches()) {
        result_.proof = RipProof::AccurateRip;
        return Ended(End::Done);
    }

    Pass second;
    hooks_.Progress(0);
    if (!ReadPass(second, false))
        return Ended(Failure());
    if (!Settle(first, second))
        return Ended(hooks_.Aborted() ? End::Stopped : End::Done);  // kept, the problem logged
    result_.proof = RipProof::TestAndCopy;
    // Where the first pass was wrong, the file takes what the majority read.
    if (!settled_.empty()) {
        if (!Mend())
            return Ended(End::FileFailed);
        Judge();
    }
    return Ended(End::Done);
}

}  // namespace

SecureTrackResult RipSecureTrack(SecureReader& reader, const SecureTrackParams& params,
                                 const std::string& wavPath, const JobHooks& hooks) {
    return SecureTrackRun(reader, params, wavPath, hooks).Run();
}

}  // namespace plattmix::audiocd
