// The compressed file being written: the muxer, its one audio stream, the tags and the file on
// disk. A file that was not finished whole is removed again.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ConvertAudioStream.h"
#include "FfmpegOwners.h"

namespace plattmix::encode {

class OutputFile {
  public:
    // The muxer for path; the file itself is not created yet. Nothing when FFmpeg lacks it.
    static std::unique_ptr<OutputFile> Prepare(const std::string& path, const std::string& muxer);

    ~OutputFile();  // removes the file unless Finish succeeded
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    // Whether the encoder must put its set-up into the container's header.
    bool WantsGlobalHeader() const;

    // Creates the file with one stream for the opened encoder and the tags, and writes the
    // container's header. False when the file cannot be created or the header not written.
    bool Open(const AVCodecContext& encoder, const AudioTags& tags);

    // One encoded packet, in the encoder's time base.
    bool Write(AVPacket& packet, AVRational encoderTimeBase);

    // The trailer, then the file closed. True when every byte reached the disk.
    bool Finish();

  private:
    explicit OutputFile(std::string path) : path_(std::move(path)) {}
    bool CloseFile();
    void SetIdTags(const AudioTags& tags);
    void Discard();

    std::string path_;
    ff::OutputFormat format_;
    AVStream* stream_ = nullptr;
    bool created_ = false;                                           // the file exists on disk
    bool finished_ = false;                                          // written whole and closed
    std::vector<std::pair<std::string, std::string>> freeformTags_;  // MP4's, added at the end
};

}  // namespace plattmix::encode
