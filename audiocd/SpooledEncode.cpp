#include "SpooledEncode.h"

#include <fcntl.h>
#include <unistd.h>

#include <vector>

namespace plattmix::audiocd {
namespace {

constexpr size_t kFeedBytes = 1 << 20;
constexpr auto kFeedWait = std::chrono::milliseconds(100);

}  // namespace

SpooledEncode::SpooledEncode(std::string wavPath, std::unique_ptr<TrackEncode> encoder)
    : wavPath_(std::move(wavPath)), encoder_(std::move(encoder)) {
    feeder_ = std::jthread([this] { Feed(); });
}

SpooledEncode::~SpooledEncode() {
    Cancel();
}

void SpooledEncode::Feed() {
    const int fd = ::open(wavPath_.c_str(), O_RDONLY | O_CLOEXEC);
    std::vector<uint8_t> buffer(kFeedBytes);
    bool whole = fd >= 0;
    while (whole && !cancelled_) {
        const ssize_t got = ::read(fd, buffer.data(), buffer.size());
        if (got == 0)
            break;
        if (got < 0) {
            whole = false;
            break;
        }
        const std::span<const uint8_t> piece(buffer.data(), static_cast<size_t>(got));
        ByteQueue::PushResult pushed = ByteQueue::PushResult::Full;
        while (!cancelled_ &&
               (pushed = encoder_->Push(piece, kFeedWait)) == ByteQueue::PushResult::Full) {
        }
        if (pushed != ByteQueue::PushResult::Taken)
            whole = false;
    }
    if (fd >= 0)
        ::close(fd);
    if (whole && !cancelled_)
        encoder_->Finish();
    else
        encoder_->Cancel();
    while (!encoder_->WaitFor(kFeedWait)) {
    }
    ::unlink(wavPath_.c_str());
    fed_ = true;
}

bool SpooledEncode::WaitFor(std::chrono::milliseconds wait) {
    const auto until = std::chrono::steady_clock::now() + wait;
    while (!fed_) {
        if (std::chrono::steady_clock::now() >= until)
            return false;
        encoder_->WaitFor(std::chrono::milliseconds(10));
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

std::string SpooledEncode::Result() {
    return encoder_->Result();
}

void SpooledEncode::Cancel() {
    cancelled_ = true;
    if (feeder_.joinable())
        feeder_.join();
}

}  // namespace plattmix::audiocd
