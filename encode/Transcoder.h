// One conversion from start to end on the thread that runs it: the WAV stream decoded, brought
// to the encoder's rate and sample format, encoded and written packet by packet.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "ConvertAudioStream.h"
#include "FfmpegOwners.h"
#include "MemoryInput.h"
#include "OutputFile.h"
#include "OutputFormats.h"

namespace plattmix::encode {

class Transcoder {
  public:
    // stop is read before every packet; progress receives 0..100 of the source decoded.
    Transcoder(MemoryInput& input, const OutputFormat& format, const std::atomic<bool>& stop,
               std::atomic<int>& progress)
        : input_(input), format_(format), stop_(stop), progress_(progress) {}

    // Writes path whole and answers true, or leaves no file and answers false.
    bool Run(const std::string& path, const AudioTags& tags);

  private:
    bool OpenDecoder();
    bool OpenResampler();
    bool DecodePacket(const AVPacket* packet);  // nullptr drains the decoder
    bool Convert(const AVFrame* decoded);       // nullptr drains the resampler
    bool EncodeQueued(bool all);                // all: the short last frame too
    bool EncodeFrame(const AVFrame* frame);     // nullptr drains the encoder
    void ReportProgress();

    MemoryInput& input_;
    const OutputFormat& format_;
    const std::atomic<bool>& stop_;
    std::atomic<int>& progress_;

    ff::CodecContext decoder_;
    ff::CodecContext encoder_;
    ff::Resampler resampler_;
    ff::Fifo fifo_;
    ff::Frame decoded_;
    ff::Frame converted_;  // the resampler's output, grown as needed
    ff::Packet packet_;
    std::unique_ptr<OutputFile> output_;  // goes first: the file is closed before the codecs
    int frameSize_ = 0;
    int64_t nextPts_ = 0;
    int64_t samplesIn_ = 0;
    int64_t samplesTotal_ = 0;
};

}  // namespace plattmix::encode
