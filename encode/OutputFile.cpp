#include "OutputFile.h"

#include <cstdio>
#include <filesystem>
#include <system_error>

#include "Mp4FreeformTags.h"

namespace plattmix::encode {
namespace {

void SetTag(AVDictionary** metadata, const char* key, const std::string& value) {
    if (!value.empty())
        av_dict_set(metadata, key, value.c_str(), 0);
}

// "n/N" when the count is known, else "n"; nothing for 0.
void SetNumber(AVDictionary** metadata, const char* key, int number, int count) {
    if (number <= 0)
        return;
    char text[32];
    if (count > 0)
        std::snprintf(text, sizeof text, "%d/%d", number, count);
    else
        std::snprintf(text, sizeof text, "%d", number);
    av_dict_set(metadata, key, text, 0);
}

void SetTags(AVDictionary** metadata, const AudioTags& tags) {
    SetTag(metadata, "title", tags.title);
    SetTag(metadata, "artist", tags.artist);
    SetTag(metadata, "album", tags.album);
    SetTag(metadata, "album_artist", tags.albumArtist);
    SetTag(metadata, "date", tags.date);
    SetNumber(metadata, "track", tags.track, tags.trackCount);
    SetNumber(metadata, "disc", tags.disc, tags.discCount);
}

// The MusicBrainz IDs under the names each container's taggers use for them: ID3 TXXX frames,
// Vorbis comments, ASF attributes; MP4's free-form entries come after the file is written.
struct IdNames {
    const char* muxer;
    const char* release;
    const char* recording;
};
constexpr IdNames kIdNames[] = {
    {"mp3", "MusicBrainz Album Id", "MusicBrainz Track Id"},
    {"flac", "MUSICBRAINZ_ALBUMID", "MUSICBRAINZ_TRACKID"},
    {"asf", "MusicBrainz/Album Id", "MusicBrainz/Track Id"},
    {"mp4", "MusicBrainz Album Id", "MusicBrainz Track Id"},
};

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
    SetIdTags(tags);

    if (avio_open(&format_->pb, path_.c_str(), AVIO_FLAG_WRITE) < 0)
        return false;
    created_ = true;
    return avformat_write_header(format_.get(), nullptr) >= 0;
}

void OutputFile::SetIdTags(const AudioTags& tags) {
    const std::string muxer = format_->oformat->name;
    for (const IdNames& names : kIdNames) {
        if (muxer != names.muxer)
            continue;
        for (const auto& [key, value] : {std::pair{names.release, tags.releaseId},
                                         std::pair{names.recording, tags.recordingId}}) {
            if (value.empty())
                continue;
            if (muxer == "mp4")
                freeformTags_.emplace_back(key, value);
            else
                av_dict_set(&format_->metadata, key, value.c_str(), 0);
        }
    }
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
    // Without them the file is still whole: the IDs are left out.
    if (!freeformTags_.empty())
        AddMp4FreeformTags(path_, freeformTags_);
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
