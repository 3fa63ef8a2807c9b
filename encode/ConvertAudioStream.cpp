#include "ConvertAudioStream.h"

#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include "FfmpegOwners.h"
#include "MemoryInput.h"
#include "OutputFormats.h"
#include "Transcoder.h"

namespace plattmix::encode {
namespace {

constexpr auto kPollPeriod = std::chrono::milliseconds(50);

// FFmpeg's own chatter stays off the terminal; errors still show.
void QuietLibraries() {
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_level(AV_LOG_ERROR); });
}

// The worker's whole job; never throws.
bool Encode(std::span<const uint8_t> wav, const std::string& contentType, const std::string& path,
            const OutputFormat& format, const AudioTags& tags, const std::atomic<bool>& stop,
            std::atomic<int>& progress) noexcept {
    try {
        std::unique_ptr<MemoryInput> input = MemoryInput::Open(wav, contentType);
        if (!input)
            return false;
        Transcoder transcoder(*input, format, stop, progress);
        return transcoder.Run(path, tags);
    } catch (...) {
        return false;
    }
}

}  // namespace

bool ConvertAudioStream(std::span<const uint8_t> wav, const std::string& contentType,
                        const std::string& basePath, int formatIndex, const AudioTags& tags,
                        const ConvertHooks& hooks) {
    // A content type without a demuxer ends here, before any thread or file.
    if (DemuxerForContentType(contentType) == nullptr)
        return false;
    QuietLibraries();
    try {
        const OutputFormat& format = EncodedFormatAt(formatIndex);
        const std::string path = basePath + std::string(format.extension);

        std::atomic<bool> stop{false};
        std::atomic<int> progress{0};
        std::packaged_task<bool()> job(
            [&] { return Encode(wav, contentType, path, format, tags, stop, progress); });
        std::future<bool> result = job.get_future();
        std::jthread worker(std::move(job));

        int reported = -1;
        while (result.wait_for(kPollPeriod) != std::future_status::ready) {
            if (hooks.yield)
                hooks.yield();
            const int now = progress.load();
            if (hooks.progress && now != reported) {
                hooks.progress(now);
                reported = now;
            }
            if (!stop.load() && hooks.aborted && hooks.aborted())
                stop.store(true);
        }
        worker.join();
        const bool written = result.get();
        if (written && hooks.progress && reported != 100)
            hooks.progress(100);
        return written && !stop.load();
    } catch (...) {
        return false;
    }
}

bool EncodeStream(audiocd::ByteQueue& queue, const std::string& basePath, int formatIndex,
                  const AudioTags& tags, const std::atomic<bool>& stop) noexcept {
    bool written = false;
    try {
        QuietLibraries();
        const OutputFormat& format = EncodedFormatAt(formatIndex);
        std::atomic<int> progress{0};
        if (auto input = MemoryInput::OpenStream(queue, "audio/wav")) {
            Transcoder transcoder(*input, format, stop, progress);
            written = transcoder.Run(basePath + std::string(format.extension), tags);
        }
    } catch (...) {
        written = false;
    }
    queue.Close();
    return written;
}

}  // namespace plattmix::encode
