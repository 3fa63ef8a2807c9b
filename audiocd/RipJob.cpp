#include "RipJob.h"

#include <algorithm>
#include <cstdio>
#include <deque>
#include <memory>
#include <optional>
#include <thread>

#include "RipTrack.h"
#include "TrackReader.h"

namespace plattmix::audiocd {
namespace {

constexpr auto kPollPeriod = std::chrono::milliseconds(50);
constexpr auto kNoWait = std::chrono::milliseconds(0);
// Reading changes to another track only when its queue has this much room.
constexpr size_t kSwitchRoom = kStreamQueueBytes / 2;

// A track whose row has not had its result yet: being read, or read (or stopped) with its
// encoder perhaps still writing.
struct Pending {
    size_t row = 0;
    std::optional<TrackReader> reader;  // while the track is being read
    enum class Waiting { Nothing, Header, Block } waiting = Waiting::Nothing;  // not yet pushed
    std::unique_ptr<TrackEncode> encoder;  // nullptr: nothing to wait for
    enum class Show { EncoderResult, Text, Nothing } show = Show::EncoderResult;
    std::string text;  // for Show::Text

    bool Reading() const { return reader.has_value(); }
    bool Encoding() { return encoder && !encoder->WaitFor(kNoWait); }
    std::span<const uint8_t> WaitingBytes() const {
        if (waiting == Waiting::Header)
            return reader->Header();
        return waiting == Waiting::Block ? reader->Bytes() : std::span<const uint8_t>();
    }
};

// The job on the caller's thread. Encoders run on their own threads; their results reach the
// rows only from here, in track order, at the polling points.
//
// Compressed formats: a track is read for as long as its encoder takes the blocks. When its
// encoder's queue is full (the drive is faster than the encoder), reading goes on with another
// track being read whose queue has room, or starts the next checked track while an encoder slot
// is free, or waits. So a drive slower than the encoders reads one track after the other, and a
// fast one keeps every core encoding, changing tracks at most once per half a queue.
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
    void StartConverted(size_t row, const std::string& name);
    // Reads on until a new track may start (or, with startNext false, until every track is
    // read); false when the user stopped the job.
    bool ReadOn(bool startNext);
    Pending* Choose();
    bool Step(Pending& track);
    void EndReading(Pending& track, Pending::Show show, const std::string& text = {});
    void StopReading();
    // Shows every result whose track and all earlier ones are complete.
    void Relay();
    size_t Running();
    void PollOnce();
    void WaitForAll();

    scsi::ISCSI& transport_;
    const RipJobParams& params_;
    const JobHooks& hooks_;
    const RowTextFn& rowText_;
    const EncodeFn& encode_;
    std::deque<Pending> pending_;
    Pending* current_ = nullptr;  // the track the drive reads now
};

RipJobResult RipRun::Run() {
    RipJobResult result;
    const bool converted = params_.formatIndex != kWavFormatIndex;
    for (size_t row = 0; row < params_.rows.size(); ++row) {
        if (!params_.rows[row].checked)
            continue;
        if (converted && !ReadOn(true)) {
            result.aborted = true;
            break;
        }
        SetText(row, kTextWriting);
        hooks_.Yield();
        // The window had its chance to take "Abbrechen", F9 or a close request.
        if (hooks_.Aborted()) {
            StopReading();
            WaitForAll();
            SetText(row, kTextAborted);
            hooks_.Yield();
            result.aborted = true;
            break;
        }
        ++result.filesStarted;
        const std::string name = TrackFileName(params_, row, result.filesStarted);
        if (converted)
            StartConverted(row, name);
        else
            RipWav(row, name);
    }
    if (converted && !result.aborted && !ReadOn(false))
        result.aborted = true;
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

// A track whose bounds cannot be had keeps its "Schreibe..." (the user was told why).
void RipRun::StartConverted(size_t row, const std::string& name) {
    hooks_.Progress(0);
    hooks_.Yield();
    auto reader =
        TrackReader::Open(transport_, params_.handle, static_cast<int16_t>(row + 1), hooks_);
    if (!reader)
        return;
    Pending& track = pending_.emplace_back();
    track.row = row;
    track.reader.emplace(std::move(*reader));
    track.waiting = Pending::Waiting::Header;
    if (encode_) {
        track.encoder = encode_(params_.targetFolder + name, name, row);
        if (!track.encoder)
            EndReading(track, Pending::Show::Text, kTextTrackFailed);
    }
    current_ = track.Reading() ? &track : current_;
}

bool RipRun::ReadOn(bool startNext) {
    for (;;) {
        Relay();
        Pending* track = Choose();
        if (track == nullptr) {
            const bool reading = std::any_of(pending_.begin(), pending_.end(),
                                             [](const Pending& p) { return p.Reading(); });
            if (!reading || (startNext && Running() < EncoderLimit()))
                return true;
            PollOnce();
            continue;
        }
        if (!Step(*track))
            return false;
    }
}

// The track to read on: the current one while its encoder takes blocks, else the one being
// read with the most room for them, if that is half a queue at least.
Pending* RipRun::Choose() {
    if (current_ != nullptr && current_->Reading()) {
        const auto bytes = current_->WaitingBytes();
        if (!current_->encoder || current_->encoder->Room() >= bytes.size())
            return current_;
    }
    Pending* best = nullptr;
    size_t bestRoom = kSwitchRoom;
    for (Pending& p : pending_) {
        if (!p.Reading())
            continue;
        const size_t room = p.encoder ? p.encoder->Room() : SIZE_MAX;
        if (room >= bestRoom) {
            best = &p;
            bestRoom = room;
        }
    }
    current_ = best;
    return best;
}

// Hands the waiting bytes to the encoder and reads the next block; false when the user stopped.
bool RipRun::Step(Pending& track) {
    if (hooks_.Aborted()) {
        StopReading();
        return false;
    }
    if (track.encoder) {
        switch (track.encoder->Push(track.WaitingBytes(), kNoWait)) {
            case ByteQueue::PushResult::Taken:
                break;
            case ByteQueue::PushResult::Full:
                return true;  // chosen for its room, so not expected: tried again
            case ByteQueue::PushResult::Closed:
                EndReading(track, Pending::Show::EncoderResult);  // the encoder failed
                return true;
        }
    }
    switch (track.reader->Next()) {
        case TrackReader::Step::Block:
            track.waiting = Pending::Waiting::Block;
            break;
        case TrackReader::Step::Remainder:
            track.waiting = Pending::Waiting::Block;
            return true;
        case TrackReader::Step::Done:
            if (track.encoder)
                track.encoder->Finish();
            EndReading(track, track.encoder ? Pending::Show::EncoderResult : Pending::Show::Text,
                       kTextTrackFailed);
            return true;
        case TrackReader::Step::BlockFailed:
        case TrackReader::Step::RemainderFailed:
            hooks_.Warn(track.reader->FailureText());
            if (track.encoder)
                track.encoder->Cancel();
            EndReading(track, Pending::Show::Nothing);
            return true;
    }
    // The bar follows the oldest track still being read.
    const auto oldest = std::find_if(pending_.begin(), pending_.end(),
                                     [](const Pending& p) { return p.Reading(); });
    hooks_.Progress(oldest->reader->Percent());
    hooks_.Yield();
    return true;
}

void RipRun::EndReading(Pending& track, Pending::Show show, const std::string& text) {
    track.reader.reset();
    track.waiting = Pending::Waiting::Nothing;
    track.show = show;
    track.text = text;
    if (current_ == &track)
        current_ = nullptr;
}

// The user's stop: every track being read is dropped and shows "Abbruch".
void RipRun::StopReading() {
    for (Pending& p : pending_) {
        if (!p.Reading())
            continue;
        if (p.encoder)
            p.encoder->Cancel();
        EndReading(p, Pending::Show::Text, kTextAborted);
    }
    Relay();
    hooks_.Yield();
}

void RipRun::Relay() {
    while (!pending_.empty()) {
        Pending& front = pending_.front();
        if (front.Reading() || front.Encoding())
            return;
        if (front.show == Pending::Show::EncoderResult)
            SetText(front.row, front.encoder->Result());
        else if (front.show == Pending::Show::Text)
            SetText(front.row, front.text);
        pending_.pop_front();
    }
}

size_t RipRun::Running() {
    return static_cast<size_t>(
        std::count_if(pending_.begin(), pending_.end(), [](Pending& p) { return p.Encoding(); }));
}

// One poll: the first track being read waits up to 50 ms for room to change to it, else the
// first unfinished encoder gets as long to end; then the window has its turn.
void RipRun::PollOnce() {
    for (Pending& p : pending_) {
        if (p.Reading() && p.encoder) {
            p.encoder->WaitForRoom(kSwitchRoom, kPollPeriod);
            break;
        }
        if (p.Encoding()) {
            p.encoder->WaitFor(kPollPeriod);
            break;
        }
    }
    Relay();
    hooks_.Yield();
}

void RipRun::WaitForAll() {
    Relay();
    while (!pending_.empty())
        PollOnce();
}

}  // namespace

std::string TrackFileName(const RipJobParams& params, size_t row, int filesStarted) {
    const int number = params.runningNumber ? filesStarted : params.rows[row].trackNumber;
    const std::string text = NumberText(number);
    return params.numberFirst ? text + params.namePrefix : params.namePrefix + text;
}

size_t EncoderLimit() {
    return std::max(1u, std::thread::hardware_concurrency());
}

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
