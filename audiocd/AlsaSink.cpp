#include "AlsaSink.h"

#include <alsa/asoundlib.h>

#include <cerrno>
#include <mutex>

namespace plattmix::audiocd {

namespace {

constexpr unsigned kLatencyMicroseconds = 250000;

// ALSA prints its own diagnostics to stderr; the sink reports failures in its own words.
extern "C" void QuietAlsa(const char*, int, const char*, int, const char*, ...) {}

void SilenceAlsaOnce() {
    static std::once_flag once;
    std::call_once(once, [] { snd_lib_error_set_handler(QuietAlsa); });
}

class AlsaSink final : public IAudioSink {
  public:
    explicit AlsaSink(std::string device) : device_(std::move(device)) {}
    ~AlsaSink() override {
        if (pcm_ != nullptr)
            snd_pcm_close(pcm_);
    }
    AlsaSink(const AlsaSink&) = delete;
    AlsaSink& operator=(const AlsaSink&) = delete;

    std::string Open() override {
        SilenceAlsaOnce();
        if (pcm_ != nullptr)
            return {};
        int rc = snd_pcm_open(&pcm_, device_.c_str(), SND_PCM_STREAM_PLAYBACK, 0);
        if (rc < 0) {
            pcm_ = nullptr;
            return Reason(rc);
        }
        rc = snd_pcm_set_params(pcm_, SND_PCM_FORMAT_S16_LE, SND_PCM_ACCESS_RW_INTERLEAVED,
                                kCdChannels, kCdSampleRate, 1, kLatencyMicroseconds);
        if (rc < 0) {
            snd_pcm_close(pcm_);
            pcm_ = nullptr;
            return Reason(rc);
        }
        return {};
    }

    // The player hands over a few sectors at a time, so a blocking write returns within that
    // much sound and the stop is seen by the player itself.
    std::string Write(std::span<const uint8_t> bytes, std::stop_token) override {
        if (pcm_ == nullptr)
            return Reason(-EBADF);
        auto frames = static_cast<snd_pcm_uframes_t>(bytes.size() / kCdFrameBytes);
        const uint8_t* at = bytes.data();
        while (frames > 0) {
            snd_pcm_sframes_t written = snd_pcm_writei(pcm_, at, frames);
            if (written < 0) {
                // An underrun or a suspend: recovered once, then the same frames again.
                const int rc = snd_pcm_recover(pcm_, static_cast<int>(written), 1);
                if (rc < 0)
                    return Reason(rc);
                continue;
            }
            frames -= static_cast<snd_pcm_uframes_t>(written);
            at += static_cast<size_t>(written) * kCdFrameBytes;
        }
        return {};
    }

    void Drain() override {
        if (pcm_ != nullptr)
            snd_pcm_drain(pcm_);
    }

    void Drop() override {
        if (pcm_ != nullptr)
            snd_pcm_drop(pcm_);
    }

  private:
    std::string Reason(int rc) const {
        return "(ALSA-Gerät " + device_ + ": " + snd_strerror(rc) + ")";
    }

    std::string device_;
    snd_pcm_t* pcm_ = nullptr;
};

}  // namespace

std::unique_ptr<IAudioSink> CreateAlsaSink(const std::string& device) {
    return std::make_unique<AlsaSink>(device);
}

AudioSinkFactory AlsaSinkFactory(const std::string& device) {
    return [device] { return CreateAlsaSink(device); };
}

}  // namespace plattmix::audiocd
