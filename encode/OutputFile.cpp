#include "OutputFile.h"

#include <cstdio>
#include <filesystem>
#include <system_error>

namespace plattmix::encode {
namespace {

void SetTag(AVDictionary** metadata, const char* key, const std::string& value) {
    if (!value.empty())
        av_dict_set(metadata, key, value.c_str(), 0);
}

void SetTags(AVDictionary** metadata, const AudioTags& tags) {
    SetTag(metadata, "title", tags.title);
    SetTag(metadata, "artist", tags.artist);
    SetTag(metadata, "album", tags.album);
    SetTag(metadata, "album_artist", tags.albumArtist);
    if (tags.track > 0) {
        // "n/N" when the disc's track count is known, else "n".
        char track[32];
        if (tags.trackCount > 0)
            std::snprintf(track, sizeof track, "%d/%d", tags.track, tags.trackCount);
        else
            std::snprintf(track, sizeof track, "%d", tags.track);
        av_dict_set(metadata, "track", track, 0);
    }
}

}  // namespace

std::unique_ptr<OutputFile> OutputFile::Prepare(const std::string& path, const std::string& muxer) {
    std::unique_ptr<OutputFile> file(new OutputFile(path));
    AVFormatContext* format = nullptr;
    if (avformat_alloc_output_context2(&format, nullptr, muxer.c_str(), path.c_str()) < 0 ||
        format == nullptr)
        return nullptr;
    file->format_.reset(format);
    return file;
}

OutputFile::~OutputFile() {
    if (!finished_)
        Discard();
}

bool OutputFile::WantsGlobalHeader() const {
    return (format_->oformat->flags & AVFMT_GLOBALHEADER) != 0;
}

bool OutputFile::Open(const AVCodecContext& encoder, const AudioTags& tags) {
    stream_ = avformat_new_stream(format_.get(), nullptr);
    if (stream_ == nullptr)
        return false;
    if (avcodec_parameters_from_context(stream_->codecpar, &encoder) < 0)
        return false;
    stream_->time_base = encoder.time_base;
    SetTags(&format_->metadata, tags);

    if (avio_open(&format_->pb, path_.c_str(), AVIO_FLAG_WRITE) < 0)
        return false;
    created_ = true;
    return avformat_write_header(format_.get(), nullptr) >= 0;
}

bool OutputFile::Write(AVPacket& packet, AVRational encoderTimeBase) {
    packet.stream_index = stream_->index;
    av_packet_rescale_ts(&packet, encoderTimeBase, stream_->time_base);
    if (av_interleaved_write_frame(format_.get(), &packet) < 0)
        return false;
    return format_->pb->error == 0;
}

bool OutputFile::Finish() {
    const bool trailer = av_write_trailer(format_.get()) >= 0;
    const bool closed = CloseFile();
    if (!trailer || !closed)
        return false;
    finished_ = true;
    return true;
}

bool OutputFile::CloseFile() {
    if (format_ == nullptr || format_->pb == nullptr)
        return true;
    avio_flush(format_->pb);
    const bool clean = format_->pb->error == 0;
    return avio_closep(&format_->pb) >= 0 && clean;
}

void OutputFile::Discard() {
    CloseFile();
    if (created_) {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
}

}  // namespace plattmix::encode
