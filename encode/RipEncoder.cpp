#include "RipEncoder.h"

#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <future>
#include <memory>
#include <thread>

#include "ConvertAudioStream.h"
#include "OutputFormats.h"
#include "RipTrack.h"

namespace plattmix::encode {

using audiocd::ByteQueue;
using audiocd::DiscTitles;
using audiocd::EncodeFn;
using audiocd::RipJobParams;
using audiocd::TrackEncode;

namespace {

constexpr int kEncoderNice = 5;

AudioTags TagsFor(const RipJobParams& params, const std::optional<DiscTitles>& titles, size_t row) {
    AudioTags tags;
    tags.track = params.rows[row].trackNumber;
    tags.trackCount = static_cast<int>(params.rows.size());
    if (titles) {
        tags.album = titles->album;
        tags.albumArtist = titles->albumArtist;
        tags.title = titles->TitleOf(tags.track);
        tags.artist = titles->ArtistOf(tags.track);
        tags.date = titles->date;
        tags.disc = titles->discNumber;
        tags.discCount = titles->discCount;
        tags.releaseId = titles->releaseId;
        if (const auto it = titles->tracks.find(tags.track); it != titles->tracks.end())
            tags.recordingId = it->second.recordingId;
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
            // Behind the drive and the window: the reading keeps its pace, the encoder catches
            // up from its queue.
            setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), kEncoderNice);
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

EncodeFn MakeRipEncoder(const RipJobParams& params, const std::optional<DiscTitles>& titles) {
    return [params, titles](const std::string& basePath, const std::string& fileName,
                            size_t row) -> std::unique_ptr<TrackEncode> {
        const std::string done =
            fileName + std::string(FormatAt(params.formatIndex).extension) + audiocd::kTextDone;
        return std::make_unique<StreamingTrack>(basePath, done, params.formatIndex,
                                                TagsFor(params, titles, row));
    };
}

}  // namespace plattmix::encode
