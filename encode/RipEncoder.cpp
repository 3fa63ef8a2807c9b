#include "RipEncoder.h"

#include <atomic>
#include <future>
#include <memory>
#include <thread>

#include "ConvertAudioStream.h"
#include "OutputFormats.h"
#include "RipTrack.h"

namespace plattmix::encode {

using audiocd::ByteQueue;
using audiocd::CdText;
using audiocd::EncodeFn;
using audiocd::RipJobParams;
using audiocd::TrackEncode;

namespace {

std::string Lookup(const std::map<int, std::string>& texts, int track) {
    const auto it = texts.find(track);
    return it == texts.end() ? std::string() : it->second;
}

AudioTags TagsFor(const RipJobParams& params, const std::optional<CdText>& cdText, size_t row) {
    AudioTags tags;
    tags.track = params.rows[row].trackNumber;
    tags.trackCount = static_cast<int>(params.rows.size());
    if (cdText) {
        tags.album = cdText->albumTitle;
        tags.albumArtist = cdText->albumPerformer;
        tags.title = Lookup(cdText->titles, tags.track);
        tags.artist = Lookup(cdText->performers, tags.track);
        if (tags.artist.empty())
            tags.artist = cdText->albumPerformer;
    }
    return tags;
}

// One track's encoder on its own thread, fed through a bounded queue.
class StreamingTrack final : public TrackEncode {
  public:
    StreamingTrack(const std::string& basePath, std::string doneText, int formatIndex,
                   const AudioTags& tags)
        : doneText_(std::move(doneText)) {
        std::packaged_task<bool()> job([this, basePath, formatIndex, tags] {
            return EncodeStream(queue_, basePath, formatIndex, tags, stop_);
        });
        result_ = job.get_future();
        worker_ = std::jthread(std::move(job));
    }
    ~StreamingTrack() override { Cancel(); }
    StreamingTrack(const StreamingTrack&) = delete;
    StreamingTrack& operator=(const StreamingTrack&) = delete;

    ByteQueue::PushResult Push(std::span<const uint8_t> bytes,
                               std::chrono::milliseconds wait) override {
        return queue_.Push(bytes, wait);
    }
    size_t Room() override { return queue_.Room(); }
    bool WaitForRoom(size_t bytes, std::chrono::milliseconds wait) override {
        return queue_.WaitForRoom(bytes, wait);
    }
    void Finish() override { queue_.Finish(); }
    void Cancel() override {
        stop_.store(true);
        queue_.Abort();
    }
    bool WaitFor(std::chrono::milliseconds wait) override {
        return result_.wait_for(wait) == std::future_status::ready;
    }
    std::string Result() override {
        return result_.get() && !stop_.load() ? doneText_ : std::string(audiocd::kTextTrackFailed);
    }

  private:
    ByteQueue queue_{audiocd::kStreamQueueBytes};
    std::atomic<bool> stop_{false};
    std::string doneText_;
    std::shared_future<bool> result_;
    std::jthread worker_;  // last: joined before the queue goes
};

}  // namespace

EncodeFn MakeRipEncoder(const RipJobParams& params, const std::optional<CdText>& cdText) {
    return [params, cdText](const std::string& basePath, const std::string& fileName,
                            size_t row) -> std::unique_ptr<TrackEncode> {
        const std::string done =
            fileName + std::string(FormatAt(params.formatIndex).extension) + audiocd::kTextDone;
        return std::make_unique<StreamingTrack>(basePath, done, params.formatIndex,
                                                TagsFor(params, cdText, row));
    };
}

}  // namespace plattmix::encode
