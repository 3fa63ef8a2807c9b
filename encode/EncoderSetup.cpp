#include "EncoderSetup.h"

#include <string>

namespace plattmix::encode {

ff::CodecContext OpenEncoder(const OutputFormat& format, bool globalHeader) {
    if (format.codec.empty())
        return nullptr;
    const AVCodec* codec = avcodec_find_encoder_by_name(std::string(format.codec).c_str());
    if (codec == nullptr)
        return nullptr;
    ff::CodecContext context(avcodec_alloc_context3(codec));
    if (!context)
        return nullptr;

    const AVSampleFormat sampleFormat = av_get_sample_fmt(std::string(format.sampleFormat).c_str());
    if (sampleFormat == AV_SAMPLE_FMT_NONE)
        return nullptr;
    context->sample_fmt = sampleFormat;
    context->sample_rate = format.sampleRate;
    av_channel_layout_default(&context->ch_layout, format.channels);
    context->time_base = AVRational{1, format.sampleRate};
    if (format.bitRate > 0)
        context->bit_rate = format.bitRate;
    // The declared width goes into both fields: FLAC's stream info takes the raw one, the
    // ASF header's WAVEFORMATEX the coded one.
    if (format.bitsPerSample > 0) {
        context->bits_per_raw_sample = format.bitsPerSample;
        context->bits_per_coded_sample = format.bitsPerSample;
    }
    if (format.profile >= 0)
        context->profile = format.profile;
    if (globalHeader)
        context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;

    if (avcodec_open2(context.get(), codec, nullptr) < 0)
        return nullptr;
    return context;
}

}  // namespace plattmix::encode
