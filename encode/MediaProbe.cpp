#include "MediaProbe.h"

#include <cctype>

#include "FfmpegOwners.h"

namespace plattmix::encode {
namespace {

std::string Lower(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

void CollectTags(const AVDictionary* metadata, std::map<std::string, std::string>& tags) {
    const AVDictionaryEntry* entry = nullptr;
    while ((entry = av_dict_get(metadata, "", entry, AV_DICT_IGNORE_SUFFIX)) != nullptr)
        tags.emplace(Lower(entry->key), entry->value);
}

// Appends a decoded frame as interleaved left-justified 32-bit integers.
void KeepSamples(const AVFrame& frame, std::vector<int32_t>& pcm) {
    const auto format = static_cast<AVSampleFormat>(frame.format);
    const AVSampleFormat packed = av_get_packed_sample_fmt(format);
    if (packed != AV_SAMPLE_FMT_S16 && packed != AV_SAMPLE_FMT_S32)
        return;
    const bool planar = av_sample_fmt_is_planar(format) != 0;
    const int channels = frame.ch_layout.nb_channels;
    for (int i = 0; i < frame.nb_samples; ++i) {
        for (int c = 0; c < channels; ++c) {
            const int plane = planar ? c : 0;
            const int at = planar ? i : i * channels + c;
            const uint8_t* data = frame.extended_data[plane];
            if (packed == AV_SAMPLE_FMT_S16) {
                const auto value = reinterpret_cast<const int16_t*>(data)[at];
                pcm.push_back(static_cast<int32_t>(static_cast<uint32_t>(value) << 16));
            } else {
                pcm.push_back(reinterpret_cast<const int32_t*>(data)[at]);
            }
        }
    }
}

}  // namespace

std::optional<ProbedAudio> ProbeAudioFile(const std::string& path, bool keepSamples) {
    AVFormatContext* opened = nullptr;
    if (avformat_open_input(&opened, path.c_str(), nullptr, nullptr) < 0)
        return std::nullopt;
    ff::InputFormat format(opened);
    if (avformat_find_stream_info(format.get(), nullptr) < 0)
        return std::nullopt;
    const AVCodec* codec = nullptr;
    const int index = av_find_best_stream(format.get(), AVMEDIA_TYPE_AUDIO, -1, -1, &codec, 0);
    if (index < 0 || codec == nullptr)
        return std::nullopt;
    const AVStream* stream = format->streams[index];

    ff::CodecContext decoder(avcodec_alloc_context3(codec));
    if (!decoder || avcodec_parameters_to_context(decoder.get(), stream->codecpar) < 0 ||
        avcodec_open2(decoder.get(), codec, nullptr) < 0)
        return std::nullopt;

    ProbedAudio audio;
    audio.container = format->iformat->name;
    audio.codec = avcodec_get_name(stream->codecpar->codec_id);
    audio.sampleRate = stream->codecpar->sample_rate;
    audio.channels = stream->codecpar->ch_layout.nb_channels;
    audio.bitsPerRawSample = stream->codecpar->bits_per_raw_sample;
    audio.bitsPerCodedSample = stream->codecpar->bits_per_coded_sample;
    audio.frameSize = stream->codecpar->frame_size;
    CollectTags(format->metadata, audio.tags);
    CollectTags(stream->metadata, audio.tags);

    ff::Packet packet(av_packet_alloc());
    ff::Frame frame(av_frame_alloc());
    if (!packet || !frame)
        return std::nullopt;
    auto drain = [&]() -> bool {
        for (;;) {
            const int status = avcodec_receive_frame(decoder.get(), frame.get());
            if (status == AVERROR(EAGAIN) || status == AVERROR_EOF)
                return true;
            if (status < 0)
                return false;
            audio.samples += frame->nb_samples;
            if (keepSamples)
                KeepSamples(*frame, audio.pcm);
            av_frame_unref(frame.get());
        }
    };
    while (av_read_frame(format.get(), packet.get()) >= 0) {
        bool ok = true;
        if (packet->stream_index == index)
            ok = avcodec_send_packet(decoder.get(), packet.get()) >= 0 && drain();
        av_packet_unref(packet.get());
        if (!ok)
            return std::nullopt;
    }
    if (avcodec_send_packet(decoder.get(), nullptr) < 0 || !drain())
        return std::nullopt;
    return audio;
}

}  // namespace plattmix::encode
