#include "SecureRipJob.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <deque>
#include <future>
#include <thread>
#include <vector>

#include "AccurateRipFetch.h"
#include "AccurateRipIds.h"
#include "DiscSubchannel.h"
#include "RipCue.h"
#include "RipLog.h"
#include "SecureTrack.h"
#include "SessionToc.h"
#include "SpooledEncode.h"
#include "TrackReader.h"
#include "modMMC.h"

namespace plattmix::audiocd {
namespace {

constexpr auto kPollPeriod = std::chrono::milliseconds(50);
constexpr const char* kSpoolSuffix = ".plattmix.wav";

// A track read and judged; its row's text waits for its encoding, which waits for a free core.
struct Finished {
    size_t row = 0;
    std::string text;      // the row's text, when it does not come from an encoder
    std::string wavPath;   // to encode, when not empty
    std::string basePath;  // the encoder's file without extension
    std::string name;
    std::unique_ptr<SpooledEncode> encode;
    std::string suffix;  // " (AccurateRip: …)" after the encoder's text
    bool Waiting() const { return !wavPath.empty() && !encode; }
};

class SecureRun {
  public:
    SecureRun(scsi::ISCSI& transport, const SecureRipParams& params, const JobHooks& hooks,
              const RowTextFn& rowText, const EncodeFn& encode)
        : transport_(transport),
          params_(params),
          hooks_(hooks),
          rowText_(rowText),
          encode_(encode) {}

    SecureRipResult Run();

  private:
    void SetText(size_t row, const std::string& text) const {
        if (rowText_)
            rowText_(row, text);
    }
    void FetchRecord();
    bool RipRow(size_t row, const std::string& name);
    void StartEncoders();
    void Relay(bool wait);
    void RecordTrack(size_t row, const std::string& fileName, const ExactTrackBounds& bounds,
                     const SecureTrackResult& ripped);
    void WriteReports();
    size_t FirstAudio() const;
    size_t LastAudio() const;

    scsi::ISCSI& transport_;
    const SecureRipParams& params_;
    const JobHooks& hooks_;
    const RowTextFn& rowText_;
    const EncodeFn& encode_;
    std::string handle_;
    SessionToc toc_;
    bool c2_ = false;
    AccurateRipIds ids_;
    AccurateRipRecord record_;
    RipLog log_;
    RipCue cue_;
    DiscSubchannel subchannel_;
    std::deque<Finished> finished_;
    SecureRipResult result_;
};

// The record's IDs from the audio tracks and the whole disc's lead-out.
AccurateRipIds IdsOf(const SessionToc& toc) {
    std::vector<int32_t> audio, all;
    for (const TocTrack& track : toc.tracks) {
        all.push_back(track.startLba);
        if (!track.data)
            audio.push_back(track.startLba);
    }
    return ComputeAccurateRipIds(audio, all, toc.leadOutLba);
}

// The record is fetched beside the job's thread, so that the window stays alive meanwhile.
void SecureRun::FetchRecord() {
    ids_ = IdsOf(toc_);
    log_.accurateRipId = AccurateRipIdText(ids_);
    if (!params_.httpGet) {
        record_.error = "AccurateRip wurde nicht gefragt.";
        return;
    }
    std::atomic<bool> stop{false};
    auto fetched = std::async(std::launch::async, [&] {
        return FetchAccurateRipRecord(params_.accurateRipServer, ids_, params_.httpGet,
                                      [&stop] { return stop.load(); });
    });
    while (fetched.wait_for(kPollPeriod) != std::future_status::ready) {
        hooks_.Yield();
        if (hooks_.Aborted())
            stop = true;
    }
    record_ = fetched.get();
}

// Starts the encoders of tracks waiting for one, while cores are free.
void SecureRun::StartEncoders() {
    size_t running = 0;
    for (Finished& f : finished_) {
        if (f.encode && !f.encode->WaitFor(std::chrono::milliseconds(0)))
            ++running;
    }
    for (Finished& f : finished_) {
        if (running >= EncoderLimit())
            return;
        if (!f.Waiting())
            continue;
        auto encoder = encode_ ? encode_(f.basePath, f.name, f.row) : nullptr;
        if (!encoder) {
            std::remove(f.wavPath.c_str());
            f.wavPath.clear();
            f.text = kTextTrackFailed;
            continue;
        }
        f.encode = std::make_unique<SpooledEncode>(f.wavPath, std::move(encoder));
        ++running;
    }
}

// Shows the results of the tracks whose encoders have ended, in track order; with wait, waits
// for all of them.
void SecureRun::Relay(bool wait) {
    StartEncoders();
    while (!finished_.empty()) {
        Finished& front = finished_.front();
        if (front.Waiting() ||
            (front.encode && !front.encode->WaitFor(std::chrono::milliseconds(0)))) {
            if (!wait)
                return;
            if (front.encode)
                front.encode->WaitFor(kPollPeriod);
            hooks_.Yield();
            StartEncoders();
            continue;
        }
        SetText(front.row, front.encode ? front.encode->Result() + front.suffix : front.text);
        finished_.pop_front();
        StartEncoders();
    }
}

// False when the user stopped the job.
bool SecureRun::RipRow(size_t row, const std::string& name) {
    const auto bounds = ExactBoundsOf(toc_, static_cast<int>(row + 1));
    if (!bounds)
        return true;  // the row keeps its "Schreibe..."
    const bool wav = params_.rip.formatIndex == kWavFormatIndex;
    const std::string base = params_.rip.targetFolder + name;
    const std::string fileName = name + (wav ? std::string(".wav") : params_.extension);
    // Other formats: the proven track waits beside its file-to-be, hidden, for its encoder.
    const std::string wavPath =
        wav ? base + ".wav" : params_.rip.targetFolder + "." + name + kSpoolSuffix;
    SecureTrackParams track;
    track.span = {bounds->firstLba, bounds->lastLba + 1};
    track.firstAudio = row == FirstAudio();
    track.lastAudio = row == LastAudio();
    track.recordPosition = static_cast<int>(row + 1);
    track.record = record_.Found() ? &record_ : nullptr;
    SecureReader reader(transport_, handle_, toc_.SessionOf(row).leadOutLba, params_.offset, c2_);
    const SecureTrackResult ripped = RipSecureTrack(reader, track, wavPath, hooks_);
    RecordTrack(row, fileName, *bounds, ripped);

    Finished done;
    done.row = row;
    switch (ripped.end) {
        case SecureTrackResult::End::Stopped:
            done.text = kTextAborted;
            break;
        case SecureTrackResult::End::ReadFailed:  // the row keeps its "Schreibe..."
            hooks_.Warn(ReadErrorText(reader.FailedLba(), reader.FailedEnd()));
            Relay(false);
            return true;
        case SecureTrackResult::End::FileFailed:
            hooks_.Warn(ripped.fileError);
            done.text = kTextTrackFailed;
            break;
        case SecureTrackResult::End::Done:
            done.suffix = " (" + ripped.verdict.RowText() + ")";
            if (wav) {
                done.text = fileName + kTextDone + done.suffix;
            } else {
                done.wavPath = wavPath;
                done.basePath = base;
                done.name = name;
            }
            break;
    }
    finished_.push_back(std::move(done));
    Relay(false);
    return ripped.end != SecureTrackResult::End::Stopped;
}

size_t SecureRun::FirstAudio() const {
    for (size_t i = 0; i < toc_.tracks.size(); ++i)
        if (!toc_.tracks[i].data)
            return i;
    return SIZE_MAX;
}

// The last audio track of the first session that has audio: an Enhanced CD's data session
// comes after it.
size_t SecureRun::LastAudio() const {
    const size_t first = FirstAudio();
    if (first == SIZE_MAX)
        return SIZE_MAX;
    const TocSession& session = toc_.SessionOf(first);
    size_t last = first;
    for (size_t i = first; i <= session.lastTrack && i < toc_.tracks.size(); ++i)
        if (!toc_.tracks[i].data)
            last = i;
    return last;
}

void SecureRun::RecordTrack(size_t row, const std::string& fileName, const ExactTrackBounds& bounds,
                            const SecureTrackResult& ripped) {
    RipLogTrack track;
    track.number = toc_.tracks[row].number;
    track.fileName = fileName;
    track.proof = ripped.end == SecureTrackResult::End::Done ? ripped.proof : RipProof::None;
    track.passCrcs = ripped.passCrcs;
    track.rereadSectors = ripped.rereadSectors;
    track.accurateRipV1 = ripped.v1;
    track.accurateRipV2 = ripped.v2;
    track.verdict = ripped.verdict;
    track.problem = ripped.problem;
    if (ripped.end == SecureTrackResult::End::ReadFailed)
        track.problem = "Lesefehler.";
    else if (ripped.end == SecureTrackResult::End::FileFailed)
        track.problem = "Die Datei konnte nicht geschrieben werden.";
    else if (ripped.end == SecureTrackResult::End::Stopped)
        track.problem = "Abgebrochen.";
    log_.tracks.push_back(track);

    RipCueTrack cue;
    cue.number = track.number;
    cue.fileName = fileName;
    cue.sectors = bounds.Sectors();
    cue_.tracks.push_back(cue);
}

void SecureRun::WriteReports() {
    log_.drive = params_.driveName;
    log_.offset = params_.offset;
    log_.secure = true;
    log_.accurateRipStatus = record_.error;
    cue_.cdText = params_.cdText;
    ApplyDiscSubchannel(subchannel_, cue_);
    result_.logError = WriteRipLog(params_.rip.targetFolder, log_);
    if (result_.logError.empty())
        result_.logError = WriteRipCue(params_.rip.targetFolder, cue_);
    if (!result_.logError.empty())
        hooks_.Warn(result_.logError);
}

SecureRipResult SecureRun::Run() {
    handle_ = params_.rip.handle;
    hooks_.Progress(0);
    hooks_.Yield();
    auto toc = ReadSessionToc(transport_, handle_);
    if (!toc) {
        hooks_.Warn(kTextTocFailed);
        return result_;
    }
    toc_ = std::move(*toc);
    c2_ = modMMC::DriveReportsC2(transport_, handle_);
    subchannel_ = ReadDiscSubchannel(transport_, handle_, toc_, [this] { hooks_.Yield(); });
    FetchRecord();
    result_.accurateRipStatus = record_.error;
    for (size_t row = 0; row < params_.rip.rows.size() && row < toc_.tracks.size(); ++row) {
        if (!params_.rip.rows[row].checked)
            continue;
        SetText(row, kTextWriting);
        hooks_.Yield();
        if (hooks_.Aborted()) {
            Relay(true);
            SetText(row, kTextAborted);
            result_.aborted = true;
            break;
        }
        ++result_.filesStarted;
        if (!RipRow(row, TrackFileName(params_.rip, row, result_.filesStarted))) {
            result_.aborted = true;
            break;
        }
    }
    Relay(true);
    result_.allProven = !result_.aborted && log_.AllProven();
    if (result_.filesStarted > 0)
        WriteReports();
    return result_;
}

}  // namespace

SecureRipResult RunSecureRipJob(scsi::ISCSI& transport, const SecureRipParams& params,
                                const JobHooks& hooks, const RowTextFn& rowText,
                                const EncodeFn& encode) {
    return SecureRun(transport, params, hooks, rowText, encode).Run();
}

}  // namespace plattmix::audiocd
