// A WAV image in memory as a demuxer's input: a custom I/O context reads (and seeks) in a span,
// or reads a stream from a byte queue as the drive delivers it, so the image is never written
// to a file. The span or queue must outlive the input.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "ByteQueue.h"
#include "FfmpegOwners.h"

namespace plattmix::encode {

class MemoryInput {
  public:
    // Opens the image with the demuxer that belongs to the content type ("audio/wav": FFmpeg's
    // "wav"); nothing for another content type or an image the demuxer rejects.
    static std::unique_ptr<MemoryInput> Open(std::span<const uint8_t> image,
                                             const std::string& contentType);
    // The same over a stream that cannot seek: the demuxer reads it once, front to back.
    static std::unique_ptr<MemoryInput> OpenStream(audiocd::ByteQueue& queue,
                                                   const std::string& contentType);

    ~MemoryInput();
    MemoryInput(const MemoryInput&) = delete;
    MemoryInput& operator=(const MemoryInput&) = delete;

    AVFormatContext* Format() const { return format_.get(); }
    AVStream* Audio() const { return format_->streams[audioIndex_]; }
    int AudioIndex() const { return static_cast<int>(audioIndex_); }

  private:
    MemoryInput(std::span<const uint8_t> image, audiocd::ByteQueue* queue)
        : image_(image), queue_(queue) {}

    // The I/O context and the demuxer on it; false when either fails.
    bool Attach(const AVInputFormat* demuxer);

    static int Read(void* opaque, uint8_t* buffer, int size);
    static int ReadQueue(void* opaque, uint8_t* buffer, int size);
    static int64_t Seek(void* opaque, int64_t offset, int whence);

    std::span<const uint8_t> image_;
    audiocd::ByteQueue* queue_ = nullptr;  // the stream, when there is no image
    size_t position_ = 0;
    AVIOContext* io_ = nullptr;  // freed after the demuxer, with its buffer
    ff::InputFormat format_;
    unsigned audioIndex_ = 0;
};

// The demuxer FFmpeg knows by the content type, or nullptr.
const AVInputFormat* DemuxerForContentType(const std::string& contentType);

}  // namespace plattmix::encode
