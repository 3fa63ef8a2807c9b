#include "Transcoder.h"

#include <algorithm>

#include "EncoderSetup.h"
#include "OutputFile.h"

namespace plattmix::encode {
namespace {

// Encoders that take frames of any length get them this long.
constexpr int kVariableFrameSize = 4096;

// The layout of a source that names none (a plain WAV header does not): the usual one for its
// channel count.
AVChannelLayout SourceLayout(const AVCodecContext& decoder) {
    AVChannelLayout layout{};
    if (decoder.ch_layout.order == AV_CHANNEL_ORDER_UNSPEC)
        av_channel_layout_default(&layout, decoder.ch_layout.nb_channels);
    else
        av_channel_layout_copy(&layout, &decoder.ch_layout);
    return layout;
}

}  // namespace

bool Transcoder::Run(const std::string& path, const AudioTags& tags) {
    if (!OpenDecoder())
        return false;
    output_ = OutputFile::Prepare(path, std::string(format_.muxer));
    if (!output_)
        return false;
    encoder_ = OpenEncoder(format_, output_->WantsGlobalHeader());
    if (!encoder_ || !OpenResampler())
        return false;
    frameSize_ = encoder_->frame_size > 0 ? encoder_->frame_size : kVariableFrameSize;
    fifo_.reset(
        av_audio_fifo_alloc(encoder_->sample_fmt, encoder_->ch_layout.nb_channels, frameSize_ * 2));
    decoded_.reset(av_frame_alloc());
    converted_.reset(av_frame_alloc());
    packet_.reset(av_packet_alloc());
    if (!fifo_ || !decoded_ || !converted_ || !packet_)
        return false;
    if (!output_->Open(*encoder_, tags))
        return false;

    ff::Packet read(av_packet_alloc());
    if (!read)
        return false;
    for (;;) {
        if (stop_.load())
            return false;
        const int status = av_read_frame(input_.Format(), read.get());
        if (status == AVERROR_EOF)
            break;
        if (status < 0)
            return false;
        const bool ours = read->stream_index == input_.AudioIndex();
        const bool ok = !ours || DecodePacket(read.get());
        av_packet_unref(read.get());
        if (!ok)
            return false;
        ReportProgress();
    }
    if (!DecodePacket(nullptr) || !Convert(nullptr) || !EncodeQueued(true) || !EncodeFrame(nullptr))
        return false;
    if (!output_->Finish())
        return false;
    progress_.store(100);
    return true;
}

bool Transcoder::OpenDecoder() {
    const AVCodecParameters* parameters = input_.Audio()->codecpar;
    const AVCodec* codec = avcodec_find_decoder(parameters->codec_id);
    if (codec == nullptr)
        return false;
    decoder_.reset(avcodec_alloc_context3(codec));
    if (!decoder_ || avcodec_parameters_to_context(decoder_.get(), parameters) < 0 ||
        avcodec_open2(decoder_.get(), codec, nullptr) < 0)
        return false;

    const AVStream* stream = input_.Audio();
    if (stream->duration > 0)
        samplesTotal_ = av_rescale_q(stream->duration, stream->time_base,
                                     AVRational{1, parameters->sample_rate});
    return true;
}

bool Transcoder::OpenResampler() {
    AVChannelLayout source = SourceLayout(*decoder_);
    SwrContext* resampler = nullptr;
    const int status = swr_alloc_set_opts2(&resampler, &encoder_->ch_layout, encoder_->sample_fmt,
                                           encoder_->sample_rate, &source, decoder_->sample_fmt,
                                           decoder_->sample_rate, 0, nullptr);
    av_channel_layout_uninit(&source);
    resampler_.reset(resampler);
    return status >= 0 && resampler_ && swr_init(resampler_.get()) >= 0;
}

bool Transcoder::DecodePacket(const AVPacket* packet) {
    if (avcodec_send_packet(decoder_.get(), packet) < 0)
        return false;
    for (;;) {
        const int status = avcodec_receive_frame(decoder_.get(), decoded_.get());
        if (status == AVERROR(EAGAIN) || status == AVERROR_EOF)
            return true;
        if (status < 0)
            return false;
        samplesIn_ += decoded_->nb_samples;
        const bool ok = Convert(decoded_.get()) && EncodeQueued(false);
        av_frame_unref(decoded_.get());
        if (!ok)
            return false;
    }
}

bool Transcoder::Convert(const AVFrame* decoded) {
    const int inCount = decoded != nullptr ? decoded->nb_samples : 0;
    const int room = swr_get_out_samples(resampler_.get(), inCount);
    if (room < 0)
        return false;
    if (room == 0)
        return true;
    if (converted_->nb_samples < room) {
        av_frame_unref(converted_.get());
        converted_->format = encoder_->sample_fmt;
        converted_->nb_samples = room;
        converted_->sample_rate = encoder_->sample_rate;
        if (av_channel_layout_copy(&converted_->ch_layout, &encoder_->ch_layout) < 0 ||
            av_frame_get_buffer(converted_.get(), 0) < 0)
            return false;
    }
    const uint8_t** in =
        decoded != nullptr ? const_cast<const uint8_t**>(decoded->extended_data) : nullptr;
    const int made = swr_convert(resampler_.get(), converted_->extended_data, room, in, inCount);
    if (made < 0)
        return false;
    if (made == 0)
        return true;
    return av_audio_fifo_write(fifo_.get(), reinterpret_cast<void**>(converted_->extended_data),
                               made) == made;
}

bool Transcoder::EncodeQueued(bool all) {
    while (av_audio_fifo_size(fifo_.get()) >= frameSize_ ||
           (all && av_audio_fifo_size(fifo_.get()) > 0)) {
        const int count = std::min(av_audio_fifo_size(fifo_.get()), frameSize_);
        ff::Frame frame(av_frame_alloc());
        if (!frame)
            return false;
        frame->format = encoder_->sample_fmt;
        frame->nb_samples = count;
        frame->sample_rate = encoder_->sample_rate;
        if (av_channel_layout_copy(&frame->ch_layout, &encoder_->ch_layout) < 0 ||
            av_frame_get_buffer(frame.get(), 0) < 0)
            return false;
        if (av_audio_fifo_read(fifo_.get(), reinterpret_cast<void**>(frame->extended_data),
                               count) != count)
            return false;
        frame->pts = nextPts_;
        nextPts_ += count;
        if (!EncodeFrame(frame.get()))
            return false;
    }
    return true;
}

bool Transcoder::EncodeFrame(const AVFrame* frame) {
    if (avcodec_send_frame(encoder_.get(), frame) < 0)
        return false;
    for (;;) {
        const int status = avcodec_receive_packet(encoder_.get(), packet_.get());
        if (status == AVERROR(EAGAIN) || status == AVERROR_EOF)
            return true;
        if (status < 0)
            return false;
        const bool ok = output_->Write(*packet_, encoder_->time_base);
        av_packet_unref(packet_.get());
        if (!ok)
            return false;
    }
}

void Transcoder::ReportProgress() {
    if (samplesTotal_ <= 0)
        return;
    const int64_t percent = std::clamp<int64_t>(samplesIn_ * 100 / samplesTotal_, 0, 99);
    progress_.store(static_cast<int>(percent));
}

}  // namespace plattmix::encode
