#include "CdAudioPlayer.h"

#include <algorithm>
#include <functional>
#include <vector>

#include "CdAudioErrors.h"
#include "ScsiStatus.h"
#include "TrackBounds.h"
#include "modMMC.h"
#include "modMSF.h"

namespace plattmix::audiocd {

namespace {
constexpr size_t kSectorBytes = static_cast<size_t>(modMSF::kAudioFrameBytes);
}  // namespace

CdAudioPlayer::CdAudioPlayer(scsi::ISCSI& transport, std::string handle, int32_t firstLba,
                             int32_t endLba, std::unique_ptr<IAudioSink> sink)
    : sink_(std::move(sink)), position_(firstLba) {
    worker_ = std::jthread([this, &transport, handle = std::move(handle), endLba](
                               std::stop_token stop) { Run(stop, transport, handle, endLba); });
}

CdAudioPlayer::~CdAudioPlayer() {
    Stop();
}

void CdAudioPlayer::Stop() {
    worker_.request_stop();
    Wait();
}

void CdAudioPlayer::Wait() {
    if (worker_.joinable())
        worker_.join();
}

int CdAudioPlayer::ErrorCode() const {
    std::lock_guard guard(errorLock_);
    return errorCode_;
}

std::string CdAudioPlayer::Error() const {
    std::lock_guard guard(errorLock_);
    return error_;
}

void CdAudioPlayer::Fail(int code, std::string text) {
    std::lock_guard guard(errorLock_);
    errorCode_ = code;
    error_ = CdAudioErrorText(code) + " " + std::move(text);
}

// Reads a block of sectors, then hands it over in small pieces, so that a stop is noticed
// within a few sectors of sound and the position moves on smoothly.
void CdAudioPlayer::Run(std::stop_token stop, scsi::ISCSI& transport, std::string handle,
                        int32_t endLba) {
    std::vector<uint8_t> buffer(kPlayReadSectors * kSectorBytes);
    int32_t lba = position_.load();
    bool failed = false;
    while (!stop.stop_requested() && !failed && lba < endLba) {
        const int32_t count = std::min(kPlayReadSectors, endLba - lba);
        const auto block = std::span(buffer).first(static_cast<size_t>(count) * kSectorBytes);
        if (modMMC::ReadCD(transport, handle, static_cast<uint32_t>(lba),
                           static_cast<uint32_t>(count), block,
                           kReadCdAllFields) != scsi::kStatusGood) {
            Fail(kCdAudioReadFailed,
                 "(Sektoren " + std::to_string(lba) + " - " + std::to_string(lba + count) + ")");
            failed = true;
            break;
        }
        for (int32_t done = 0; done < count && !stop.stop_requested();) {
            const int32_t piece = std::min(kPlayWriteSectors, count - done);
            const std::string error =
                sink_->Write(block.subspan(static_cast<size_t>(done) * kSectorBytes,
                                           static_cast<size_t>(piece) * kSectorBytes),
                             stop);
            if (!error.empty()) {
                Fail(kCdAudioNoOutput, error);
                failed = true;
                break;
            }
            if (stop.stop_requested())
                break;  // the sink may not have taken these
            done += piece;
            position_ = lba + done;
        }
        lba += count;
    }
    if (stop.stop_requested() || failed)
        sink_->Drop();
    else
        sink_->Drain();
    playing_ = false;
}

}  // namespace plattmix::audiocd
