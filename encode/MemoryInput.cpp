#include "MemoryInput.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace plattmix::encode {
namespace {

constexpr int kIoBufferBytes = 64 * 1024;

}  // namespace

const AVInputFormat* DemuxerForContentType(const std::string& contentType) {
    // The program hands over its own WAV images only; a content type nobody asked for is not
    // guessed at.
    if (contentType == "audio/wav")
        return av_find_input_format("wav");
    return nullptr;
}

std::unique_ptr<MemoryInput> MemoryInput::Open(std::span<const uint8_t> image,
                                               const std::string& contentType) {
    const AVInputFormat* demuxer = DemuxerForContentType(contentType);
    if (demuxer == nullptr || image.empty())
        return nullptr;
    std::unique_ptr<MemoryInput> input(new MemoryInput(image, nullptr));
    return input->Attach(demuxer) ? std::move(input) : nullptr;
}

std::unique_ptr<MemoryInput> MemoryInput::OpenStream(audiocd::ByteQueue& queue,
                                                     const std::string& contentType) {
    const AVInputFormat* demuxer = DemuxerForContentType(contentType);
    if (demuxer == nullptr)
        return nullptr;
    std::unique_ptr<MemoryInput> input(new MemoryInput({}, &queue));
    return input->Attach(demuxer) ? std::move(input) : nullptr;
}

bool MemoryInput::Attach(const AVInputFormat* demuxer) {
    auto* buffer = static_cast<unsigned char*>(av_malloc(kIoBufferBytes));
    if (buffer == nullptr)
        return false;
    // A stream has no seek: the demuxer then reads the header and goes straight on.
    io_ = queue_ != nullptr ? avio_alloc_context(buffer, kIoBufferBytes, 0, this,
                                                 &MemoryInput::ReadQueue, nullptr, nullptr)
                            : avio_alloc_context(buffer, kIoBufferBytes, 0, this,
                                                 &MemoryInput::Read, nullptr, &MemoryInput::Seek);
    if (io_ == nullptr) {
        av_free(buffer);
        return false;
    }

    AVFormatContext* format = avformat_alloc_context();
    if (format == nullptr)
        return false;
    format->pb = io_;
    format->flags |= AVFMT_FLAG_CUSTOM_IO;
    // On failure avformat_open_input frees the context itself.
    if (avformat_open_input(&format, nullptr, demuxer, nullptr) < 0)
        return false;
    format_.reset(format);
    if (avformat_find_stream_info(format, nullptr) < 0)
        return false;

    const int audio = av_find_best_stream(format, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (audio < 0)
        return false;
    const AVCodecParameters* parameters = format->streams[audio]->codecpar;
    if (parameters->sample_rate <= 0 || parameters->ch_layout.nb_channels <= 0)
        return false;
    audioIndex_ = static_cast<unsigned>(audio);
    return true;
}

MemoryInput::~MemoryInput() {
    format_.reset();  // the demuxer first: it may still read through the I/O context
    if (io_ != nullptr) {
        av_freep(&io_->buffer);
        avio_context_free(&io_);
    }
}

int MemoryInput::Read(void* opaque, uint8_t* buffer, int size) {
    auto* self = static_cast<MemoryInput*>(opaque);
    if (size <= 0)
        return 0;
    const size_t left = self->image_.size() - self->position_;
    if (left == 0)
        return AVERROR_EOF;
    const size_t count = std::min(left, static_cast<size_t>(size));
    std::memcpy(buffer, self->image_.data() + self->position_, count);
    self->position_ += count;
    return static_cast<int>(count);
}

int MemoryInput::ReadQueue(void* opaque, uint8_t* buffer, int size) {
    auto* self = static_cast<MemoryInput*>(opaque);
    if (size <= 0)
        return 0;
    const long count = self->queue_->Pop(buffer, static_cast<size_t>(size));
    if (count < 0)
        return AVERROR_EXIT;  // the track's reading was given up
    return count == 0 ? AVERROR_EOF : static_cast<int>(count);
}

int64_t MemoryInput::Seek(void* opaque, int64_t offset, int whence) {
    auto* self = static_cast<MemoryInput*>(opaque);
    const auto size = static_cast<int64_t>(self->image_.size());
    if ((whence & AVSEEK_SIZE) != 0)
        return size;
    int64_t target = 0;
    switch (whence & ~AVSEEK_FORCE) {
        case SEEK_SET:
            target = offset;
            break;
        case SEEK_CUR:
            target = static_cast<int64_t>(self->position_) + offset;
            break;
        case SEEK_END:
            target = size + offset;
            break;
        default:
            return AVERROR(EINVAL);
    }
    if (target < 0 || target > size)
        return AVERROR(EINVAL);
    self->position_ = static_cast<size_t>(target);
    return target;
}

}  // namespace plattmix::encode
