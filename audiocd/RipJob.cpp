#include "RipJob.h"

#include <algorithm>
#include <cstdio>
#include <deque>
#include <memory>
#include <thread>

#include "RipTrack.h"

namespace plattmix::audiocd {
namespace {

constexpr auto kPollPeriod = std::chrono::milliseconds(50);

std::string FileName(const RipJobParams& params, const std::string& number) {
    return params.numberFirst ? number + params.namePrefix : params.namePrefix + number;
}

// As many encoders at once as the machine has cores, at least one.
size_t EncoderLimit() {
    return std::max(1u, std::thread::hardware_concurrency());
}

// A track whose row has not had its result yet: read whole (or stopped), its encoder perhaps
// still writing.
struct Pending {
    size_t row = 0;
    std::unique_ptr<TrackEncode> encoder;  // nullptr: nothing to wait for
    enum class Show { EncoderResult, Text, Nothing } show = Show::EncoderResult;
    std::string text;  // for Show::Text
};

// The job on the caller's thread. Encoders run on their own threads; their results reach the
// rows only from here, in track order, at the polling points.
class RipRun {
  public:
    RipRun(scsi::ISCSI& transport, const RipJobParams& params, const JobHooks& hooks,
           const RowTextFn& rowText, const EncodeFn& encode)
        : transport_(transport),
          params_(params),
          hooks_(hooks),
          rowText_(rowText),
          encode_(encode) {}

    RipJobResult Run();

  private:
    void SetText(size_t row, const std::string& text) const {
        if (rowText_)
            rowText_(row, text);
    }
    void RipWav(size_t row, const std::string& name);
    // Reads the row's track into a new encoder; false when the user stopped it.
    bool RipConverted(size_t row, const std::string& name);
    bool PushBlock(TrackEncode& encoder, std::span<const uint8_t> bytes);
    // Shows every result whose track and all earlier ones are complete.
    void Relay();
    size_t Running();
    void WaitForSlot();
    void WaitForAll();
    void PollOnce();

    scsi::ISCSI& transport_;
    const RipJobParams& params_;
    const JobHooks& hooks_;
    const RowTextFn& rowText_;
    const EncodeFn& encode_;
    std::deque<Pending> pending_;
};

RipJobResult RipRun::Run() {
    RipJobResult result;
    for (size_t row = 0; row < params_.rows.size(); ++row) {
        if (!params_.rows[row].checked)
            continue;
        WaitForSlot();
        SetText(row, kTextWriting);
        hooks_.Yield();
        // The window had its chance to take "Abbrechen", F9 or a close request.
        if (hooks_.Aborted()) {
            WaitForAll();
            SetText(row, kTextAborted);
            hooks_.Yield();
            result.aborted = true;
            break;
        }
        ++result.filesStarted;
        const int number =
            params_.runningNumber ? result.filesStarted : params_.rows[row].trackNumber;
        const std::string name = FileName(params_, NumberText(number));
        if (params_.formatIndex == kWavFormatIndex) {
            RipWav(row, name);
        } else if (!RipConverted(row, name)) {
            result.aborted = true;
            break;
        }
    }
    WaitForAll();
    return result;
}

// The row keeps its "Schreibe..." when reading failed and the user got a message instead.
void RipRun::RipWav(size_t row, const std::string& name) {
    const auto track = static_cast<int16_t>(row + 1);  // the row's position, not its number
    const auto text = RipTrackWav(transport_, params_.handle, track,
                                  params_.targetFolder + name + ".wav", name, hooks_);
    if (text)
        SetText(row, *text);
}

bool RipRun::RipConverted(size_t row, const std::string& name) {
    const auto track = static_cast<int16_t>(row + 1);
    Pending done;
    done.row = row;
    bool stopped = false;
    const BlockSink sink = [&](std::span<const uint8_t> bytes) {
        if (!encode_)
            return true;  // read as usual; the row fails afterwards
        if (!done.encoder) {
            done.encoder = encode_(params_.targetFolder + name, name, row);
            if (!done.encoder)
                return false;
        }
        stopped = hooks_.Aborted();
        return !stopped && PushBlock(*done.encoder, bytes);
    };
    const StreamEnd end = RipTrackToSink(transport_, params_.handle, track, hooks_, sink);
    if (end == StreamEnd::NotStarted)
        return true;
    if (end == StreamEnd::ReadFailed || stopped) {
        if (done.encoder)
            done.encoder->Cancel();
        done.show = stopped ? Pending::Show::Text : Pending::Show::Nothing;
        done.text = kTextAborted;
    } else if (!done.encoder) {
        done.show = Pending::Show::Text;
        done.text = kTextTrackFailed;
    } else if (end == StreamEnd::Complete) {
        done.encoder->Finish();
    }
    pending_.push_back(std::move(done));
    Relay();
    hooks_.Yield();
    return !stopped;
}

bool RipRun::PushBlock(TrackEncode& encoder, std::span<const uint8_t> bytes) {
    for (;;) {
        switch (encoder.Push(bytes, kPollPeriod)) {
            case ByteQueue::PushResult::Taken:
                return true;
            case ByteQueue::PushResult::Closed:
                return false;
            case ByteQueue::PushResult::Full:
                Relay();
                hooks_.Yield();
                break;
        }
    }
}

void RipRun::Relay() {
    while (!pending_.empty()) {
        Pending& front = pending_.front();
        if (front.encoder && !front.encoder->WaitFor(std::chrono::milliseconds(0)))
            return;
        if (front.show == Pending::Show::EncoderResult)
            SetText(front.row, front.encoder->Result());
        else if (front.show == Pending::Show::Text)
            SetText(front.row, front.text);
        pending_.pop_front();
    }
}

size_t RipRun::Running() {
    return static_cast<size_t>(std::count_if(pending_.begin(), pending_.end(), [](Pending& p) {
        return p.encoder && !p.encoder->WaitFor(std::chrono::milliseconds(0));
    }));
}

// One poll: the first unfinished encoder gets up to 50 ms, then the window its turn.
void RipRun::PollOnce() {
    for (Pending& p : pending_) {
        if (p.encoder && !p.encoder->WaitFor(std::chrono::milliseconds(0))) {
            p.encoder->WaitFor(kPollPeriod);
            break;
        }
    }
    Relay();
    hooks_.Yield();
}

void RipRun::WaitForSlot() {
    Relay();
    while (Running() >= EncoderLimit())
        PollOnce();
}

void RipRun::WaitForAll() {
    Relay();
    while (!pending_.empty())
        PollOnce();
}

}  // namespace

std::string NumberText(int number) {
    char text[16];
    std::snprintf(text, sizeof text, "%02d", number);
    return text;
}

RipJobResult RunRipJob(scsi::ISCSI& transport, const RipJobParams& params, const JobHooks& hooks,
                       const RowTextFn& rowText, const EncodeFn& encode) {
    return RipRun(transport, params, hooks, rowText, encode).Run();
}

}  // namespace plattmix::audiocd
