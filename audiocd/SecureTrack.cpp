#include "SecureTrack.h"

#include <algorithm>
#include <map>
#include <optional>

#include "AccurateRipChecksum.h"
#include "Crc32.h"
#include "TrackBounds.h"
#include "WavHeader.h"

namespace plattmix::audiocd {
namespace {

// Reads of one block, besides the two passes, before it counts as unreadable.
constexpr int kMaxExtraReads = 12;

// One pass over the track: each block's CRC-32 and C2 mark, and the whole track's CRC-32.
struct Pass {
    std::vector<uint32_t> blockCrcs;
    std::vector<bool> c2;
    Crc32 crc;
};

class SecureTrackRun {
  public:
    SecureTrackRun(SecureReader& reader, const SecureTrackParams& params,
                   const SecureOutput& output, const JobHooks& hooks)
        : reader_(reader),
          params_(params),
          output_(output),
          hooks_(hooks),
          blocks_(SecureReader::BlockCount(params.span)) {}

    SecureTrackResult Run();

  private:
    // Reads every block; with streaming, each goes to the output too. want, when given, names
    // the CRC each block must have: a block is read again until it has it.
    bool ReadPass(Pass& pass, bool streaming, const std::vector<uint32_t>* want = nullptr);
    bool OpenOutput();
    // The CRC a majority of reads agrees on for each block that needs it; false when a block
    // cannot be settled.
    bool Settle(const Pass& first, const Pass& second, std::vector<uint32_t>& agreed);
    std::optional<uint32_t> Vote(size_t index, std::map<uint32_t, int>& votes);
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

    SecureReader& reader_;
    const SecureTrackParams& params_;
    const SecureOutput& output_;
    const JobHooks& hooks_;
    size_t blocks_;
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

bool SecureTrackRun::ReadPass(Pass& pass, bool streaming, const std::vector<uint32_t>* want) {
    AccurateRipChecksum sums(static_cast<uint32_t>(params_.span.Samples()), params_.firstAudio,
                             params_.lastAudio);
    pass.blockCrcs.assign(blocks_, 0);
    pass.c2.assign(blocks_, false);
    for (size_t index = 0; index < blocks_; ++index) {
        if (hooks_.Aborted()) {
            stopped_ = true;
            return false;
        }
        SecureReader::Block block = reader_.Read(params_.span, index);
        for (int extra = 0; want != nullptr && block.read && extra < kMaxExtraReads &&
                            Crc32::Of(block.audio) != (*want)[index];
             ++extra) {
            block = reader_.ReRead(params_.span, index);
            result_.rereadSectors += kRipBlockSectors;
        }
        if (!block.read)
            return false;
        pass.blockCrcs[index] = Crc32::Of(block.audio);
        pass.c2[index] = block.c2Errors;
        pass.crc.Update(block.audio);
        if (streaming) {
            sums.Update(block.audio);
            if (!output_.push(*result_.output, block.audio)) {
                outputFailed_ = !hooks_.Aborted();
                stopped_ = !outputFailed_;
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

std::optional<uint32_t> SecureTrackRun::Vote(size_t index, std::map<uint32_t, int>& votes) {
    for (int extra = 0; extra <= kMaxExtraReads; ++extra) {
        // Decided: one CRC read twice at least, and more often than any other.
        const auto best = std::max_element(votes.begin(), votes.end(),
                                           [](auto& a, auto& b) { return a.second < b.second; });
        const bool tie = std::count_if(votes.begin(), votes.end(),
                                       [&](auto& v) { return v.second == best->second; }) > 1;
        if (best != votes.end() && best->second >= 2 && !tie)
            return best->first;
        if (extra == kMaxExtraReads || hooks_.Aborted())
            break;
        const SecureReader::Block block = reader_.ReRead(params_.span, index);
        result_.rereadSectors += kRipBlockSectors;
        if (block.read && !block.c2Errors)
            ++votes[Crc32::Of(block.audio)];
        hooks_.Yield();
    }
    return std::nullopt;
}

bool SecureTrackRun::Settle(const Pass& first, const Pass& second, std::vector<uint32_t>& agreed) {
    agreed = first.blockCrcs;
    for (size_t index = 0; index < blocks_; ++index) {
        if (first.blockCrcs[index] == second.blockCrcs[index] && !first.c2[index] &&
            !second.c2[index])
            continue;
        std::map<uint32_t, int> votes;
        for (const Pass* pass : {&first, &second})
            if (!pass->c2[index])
                ++votes[pass->blockCrcs[index]];
        const auto decided = Vote(index, votes);
        if (!decided) {
            const int32_t lba =
                params_.span.firstLba + static_cast<int32_t>(index) * kRipBlockSectors;
            result_.problem =
                "Die Lesedurchgänge stimmen ab Sektor " + std::to_string(lba) + " nicht überein.";
            return false;
        }
        agreed[index] = *decided;
    }
    return true;
}

SecureTrackResult SecureTrackRun::Run() {
    using End = SecureTrackResult::End;
    Pass first;
    if (!OpenOutput())
        return Ended(End::OutputFailed);
    if (!ReadPass(first, true))
        return Ended(stopped_ ? End::Stopped : outputFailed_ ? End::OutputFailed : End::ReadFailed);
    if (params_.record != nullptr)
        result_.verdict =
            CompareWithRecord(*params_.record, params_.recordPosition, result_.v1, result_.v2);
    const bool c2Marked = std::find(first.c2.begin(), first.c2.end(), true) != first.c2.end();
    if (result_.verdict.Matches() && !c2Marked) {
        result_.proof = RipProof::AccurateRip;
        result_.output->Finish();
        return Ended(End::Done);
    }

    Pass second;
    hooks_.Progress(0);
    if (!ReadPass(second, false))
        return Ended(stopped_ ? End::Stopped : End::ReadFailed);
    std::vector<uint32_t> agreed;
    if (!Settle(first, second, agreed)) {
        if (hooks_.Aborted())
            return Ended(End::Stopped);
        result_.output->Finish();  // kept, the problem named in the log
        return Ended(End::Done);
    }
    if (agreed == first.blockCrcs) {
        result_.proof = RipProof::TestAndCopy;
        result_.output->Finish();
        return Ended(End::Done);
    }
    // The first pass was wrong somewhere: the output again, from the agreed blocks.
    Pass copy;
    hooks_.Progress(0);
    if (!OpenOutput())
        return Ended(End::OutputFailed);
    if (!ReadPass(copy, true, &agreed))
        return Ended(stopped_ ? End::Stopped : outputFailed_ ? End::OutputFailed : End::ReadFailed);
    if (copy.blockCrcs != agreed) {
        result_.problem = "Die abgestimmten Blöcke ließen sich nicht wieder lesen.";
        result_.output->Finish();
        return Ended(End::Done);
    }
    if (params_.record != nullptr)
        result_.verdict =
            CompareWithRecord(*params_.record, params_.recordPosition, result_.v1, result_.v2);
    result_.proof = RipProof::TestAndCopy;
    result_.output->Finish();
    return Ended(End::Done);
}

}  // namespace

SecureTrackResult RipSecureTrack(SecureReader& reader, const SecureTrackParams& params,
                                 const SecureOutput& output, const JobHooks& hooks) {
    return SecureTrackRun(reader, params, output, hooks).Run();
}

}  // namespace plattmix::audiocd
