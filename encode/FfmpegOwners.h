// Owners for the FFmpeg objects one conversion holds: each frees its object the way FFmpeg
// wants it freed, so an early return anywhere leaves nothing behind. Only the encoding sources
// include this; FFmpeg's headers stay out of the rest of the program.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/audio_fifo.h>
#include <libswresample/swresample.h>
}

#include <memory>

namespace plattmix::encode::ff {

struct CodecContextFree {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FrameFree {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct PacketFree {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct ResamplerFree {
    void operator()(SwrContext* resampler) const { swr_free(&resampler); }
};
struct FifoFree {
    void operator()(AVAudioFifo* fifo) const { av_audio_fifo_free(fifo); }
};
// A demuxer's context from avformat_open_input.
struct InputFormatClose {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
// A muxer's context; its file is closed by OutputFile before this runs.
struct OutputFormatFree {
    void operator()(AVFormatContext* context) const { avformat_free_context(context); }
};

using CodecContext = std::unique_ptr<AVCodecContext, CodecContextFree>;
using Frame = std::unique_ptr<AVFrame, FrameFree>;
using Packet = std::unique_ptr<AVPacket, PacketFree>;
using Resampler = std::unique_ptr<SwrContext, ResamplerFree>;
using Fifo = std::unique_ptr<AVAudioFifo, FifoFree>;
using InputFormat = std::unique_ptr<AVFormatContext, InputFormatClose>;
using OutputFormat = std::unique_ptr<AVFormatContext, OutputFormatFree>;

}  // namespace plattmix::encode::ff
