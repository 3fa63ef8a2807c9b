#include "TrackReader.h"

#include <array>
#include <cmath>
#include <utility>

#include "ScsiStatus.h"
#include "SessionToc.h"
#include "modMMC.h"
#include "modMSF.h"

namespace plattmix::audiocd {
namespace {

constexpr size_t kSectorBytes = static_cast<size_t>(modMSF::kAudioFrameBytes);
constexpr size_t kBlockBytes = static_cast<size_t>(kRipBlockSectors) * kSectorBytes;

// The table of contents with LBA addresses and its sessions, and the bounds of the track in
// them. The user is told
// when the table cannot be read; bounds that cannot be worked out end the job quietly, as
// nothing has been written yet.
std::optional<TrackBounds> ReadBounds(scsi::ISCSI& transport, std::string& handle, int16_t track,
                                      const JobHooks& hooks) {
    std::array<uint8_t, modMMC::kTocReplyLength> reply{};
    if (modMMC::ReadTOC(transport, handle, false, reply) != scsi::kStatusGood) {
        hooks.Warn(kTextTocFailed);
        return std::nullopt;
    }
    const auto toc = modMMC::ParseTOC(reply);
    if (!toc)
        return std::nullopt;
    auto sessions = SessionTocFromToc(*toc, false);
    if (sessions)
        ReadSessions(transport, handle, *sessions);
    return ComputeTrackBounds(*toc, track, sessions ? &*sessions : nullptr);
}

}  // namespace

std::string ReadErrorText(int32_t from, int32_t to) {
    return "Lesefehler in Range " + std::to_string(from) + " - " + std::to_string(to) + ".";
}

std::optional<TrackReader> TrackReader::Open(scsi::ISCSI& transport, std::string handle,
                                             int16_t track, const JobHooks& hooks) {
    const auto bounds = ReadBounds(transport, handle, track, hooks);
    if (!bounds)
        return std::nullopt;
    const auto header = WavHeader(bounds->audioBytes);
    if (!header)
        return std::nullopt;
    return TrackReader(transport, std::move(handle), *bounds, *header);
}

TrackReader::TrackReader(scsi::ISCSI& transport, std::string handle, const TrackBounds& bounds,
                         const WavHeaderBytes& header)
    : transport_(&transport),
      handle_(std::move(handle)),
      bounds_(bounds),
      header_(header),
      buffer_(kBlockBytes),
      current_(bounds.firstLba) {}

TrackReader::Step TrackReader::Next() {
    const int64_t left = static_cast<int64_t>(bounds_.lastLba) - current_;
    if (left <= 0)
        return Step::Done;
    const bool full = left >= kRipBlockSectors;
    const auto sectors = static_cast<int32_t>(full ? kRipBlockSectors : left);
    buffer_.resize(static_cast<size_t>(sectors) * kSectorBytes);
    if (modMMC::ReadCD(*transport_, handle_, static_cast<uint32_t>(current_),
                       static_cast<uint32_t>(sectors), buffer_,
                       kReadCdAllFields) != scsi::kStatusGood) {
        failedFrom_ = current_;
        failedTo_ = current_ + sectors;
        current_ = bounds_.lastLba;  // nothing more comes from this track
        return full ? Step::BlockFailed : Step::RemainderFailed;
    }
    current_ += sectors;
    return full ? Step::Block : Step::Remainder;
}

int TrackReader::Percent() const {
    const double done = static_cast<double>(current_) - bounds_.firstLba;
    const double total = static_cast<double>(bounds_.lastLba) - bounds_.firstLba;
    return static_cast<int>(std::lround(done / total * 100.0));
}

std::string TrackReader::FailureText() const {
    return ReadErrorText(failedFrom_, failedTo_);
}

}  // namespace plattmix::audiocd
