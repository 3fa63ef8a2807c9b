#include "SecureTrack.h"

#include <algorithm>
#include <map>
#include <optional>

#include "AccurateRipChecksum.h"
#include "Crc32.h"
#include "TrackBounds.h"
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
                   const SecureOutput& output, const JobHooks& hooks)
        : reader_(reader),
          params_(params),
          output_(output),
          hooks_(hooks),
          blocks_(SecureReader::BlockCount(params.span)),
          sectors_(static_cast<size_t>(params.span.endLba - params.span.firstLba)) {}

    SecureTrackResult Run();

  private:
    // Reads every block; with streaming, each goes to the output too, and the sectors settled
    // by vote replace what this read gave. With expected_ set, a sector read otherwise is read
    // again until it comes right.
    bool ReadPass(Pass& pass, bool streaming);
    void Correct(size_t index, SecureReader::Block& block);
    bool OpenOutput();
    // Votes on every sector the passes disagree on (or the drive marked) until each is settled;
    // false when one cannot be.
    bool Settle(const Pass& first, const Pass& second);
    bool SettleBlock(size_t block, std::map<size_t, Ballot>& ballots);
    void Progress(size_t done) const {
        hooks_.Progress(static_cast<int>(done * 100 / std::max<size_t>(blocks_, 1)));
        hooks_.Yield();
    }
    SecureTrackResult Ended(SecureTrackResult::End end) {
        if (result_.output && end != SecureTrackResult::End::Done)
            result_.output->Cancel();
        result_.end = end;
        return std::move(result_);
    }
    SecureTrackResult::End Failure() const {
        using End = SecureTrackResult::End;
        return stopped_ ? End::Stopped : outputFailed_ ? End::OutputFailed : End::ReadFailed;
    }
    void Judge() {
        if (params_.record != nullptr)
            result_.verdict =
                CompareWithRecord(*params_.record, params_.recordPosition, result_.v1, result_.v2);
    }

    SecureReader& reader_;
    const SecureTrackParams& params_;
    const SecureOutput& output_;
    const JobHooks& hooks_;
    size_t blocks_;
    size_t sectors_;
    std::map<size_t, std::vector<uint8_t>> settled_;  // sector -> the content the vote chose
    std::vector<uint32_t> expected_;                  // each sector's agreed CRC, for the copy
    SecureTrackResult result_;
    bool stopped_ = false;
    bool outputFailed_ = false;
};

bool SecureTrackRun::OpenOutput() {
    if (result_.output)
        result_.output->Cancel();
    result_.output = output_.open();
    const auto header = StandardWavHeader(params_.span.AudioBytes());
    if (!result_.output || !header || !output_.push(*result_.output, *header)) {
        outputFailed_ = true;
        return false;
    }
    return true;
}

bool SecureTrackRun::ReadPass(Pass& pass, bool streaming) {
    AccurateRipChecksum sums(static_cast<uint32_t>(params_.span.Samples()), params_.firstAudio,
                             params_.lastAudio);
    pass.sectorCrcs.assign(sectors_, 0);
    pass.c2.assign(sectors_, false);
    for (size_t index = 0; index < blocks_; ++index) {
        if (hooks_.Aborted()) {
            stopped_ = true;
            return false;
        }
        SecureReader::Block block = reader_.Read(params_.span, index);
        if (!block.read)
            return false;
        if (!expected_.empty())
            Correct(index, block);
        for (size_t s = 0; s < block.c2.size(); ++s) {
            const size_t sector = index * kBlockSectors + s;
            pass.sectorCrcs[sector] = Crc32::Of(SectorOf(block.audio, s));
            pass.c2[sector] = block.c2[s];
        }
        pass.crc.Update(block.audio);
        if (streaming) {
            sums.Update(block.audio);
            if (!output_.push(*result_.output, block.audio)) {
                stopped_ = hooks_.Aborted();
                outputFailed_ = !stopped_;
                return false;
            }
        }
        Progress(index + 1);
    }
    result_.passCrcs.push_back(pass.crc.Value());
    if (streaming) {
        result_.v1 = sums.V1();
        result_.v2 = sums.V2();
    }
    return true;
}

void SecureTrackRun::Correct(size_t index, SecureReader::Block& block) {
    const auto put = [&block](size_t s, std::span<const uint8_t> bytes) {
        std::copy(bytes.begin(), bytes.end(),
                  block.audio.begin() + static_cast<std::ptrdiff_t>(s * kSectorBytes));
    };
    std::vector<size_t> wrong;
    for (size_t s = 0; s < block.c2.size(); ++s) {
        const size_t sector = index * kBlockSectors + s;
        if (const auto it = settled_.find(sector); it != settled_.end())
            put(s, it->second);
        else if (Crc32::Of(SectorOf(block.audio, s)) != expected_[sector])
            wrong.push_back(s);
    }
    for (int extra = 0; extra < kMaxExtraReads && !wrong.empty(); ++extra) {
        const SecureReader::Block again = reader_.ReRead(params_.span, index);
        result_.rereadSectors += static_cast<int>(again.c2.size());
        std::erase_if(wrong, [&](size_t s) {
            const bool right = again.read && Crc32::Of(SectorOf(again.audio, s)) ==
                                                 expected_[index * kBlockSectors + s];
            if (right)
                put(s, SectorOf(again.audio, s));
            return right;
        });
    }
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
            expected_.resize(sectors_);
            expected_[sector] = winner;
        }
    }
    return true;
}

SecureTrackResult SecureTrackRun::Run() {
    using End = SecureTrackResult::End;
    Pass first;
    if (!OpenOutput())
        return Ended(End::OutputFailed);
    if (!ReadPass(first, true))
        return Ended(Failure());
    Judge();
    if (result_.verdict.Matches()) {
        result_.proof = RipProof::AccurateRip;
        result_.output->Finish();
        return Ended(End::Done);
    }

    Pass second;
    hooks_.Progress(0);
    if (!ReadPass(second, false))
        return Ended(Failure());
    if (!Settle(first, second)) {
        if (hooks_.Aborted())
            return Ended(End::Stopped);
        result_.output->Finish();  // kept, the problem named in the log
        return Ended(End::Done);
    }
    result_.proof = RipProof::TestAndCopy;
    if (settled_.empty()) {  // the first pass was right throughout
        result_.output->Finish();
        return Ended(End::Done);
    }
    // The first pass was wrong somewhere: the output again, the settled sectors put in and
    // every other sector checked against what both passes read.
    for (size_t sector = 0; sector < sectors_; ++sector)
        if (!settled_.contains(sector) && first.sectorCrcs[sector] == second.sectorCrcs[sector])
            expected_[sector] = first.sectorCrcs[sector];
    Pass copy;
    hooks_.Progress(0);
    if (!OpenOutput() || !ReadPass(copy, true))
        return Ended(Failure());
    for (size_t sector = 0; sector < sectors_; ++sector) {
        if (copy.sectorCrcs[sector] != expected_[sector]) {
            result_.proof = RipProof::None;
            result_.problem = "Sektor " +
                              std::to_string(params_.span.firstLba + static_cast<int32_t>(sector)) +
                              " ließ sich nicht wieder so lesen, wie abgestimmt.";
            break;
        }
    }
    Judge();
    result_.output->Finish();
    return Ended(End::Done);
}

}  // namespace

SecureTrackResult RipSecureTrack(SecureReader& reader, const SecureTrackParams& params,
                                 const SecureOutput& output, const JobHooks& hooks) {
    return SecureTrackRun(reader, params, output, hooks).Run();
}

}  // namespace plattmix::audiocd
