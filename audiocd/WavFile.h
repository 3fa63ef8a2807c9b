// The file a track is written to. Any failure is kept as a German text naming the file and the
// reason.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace plattmix::audiocd {

class WavFile {
  public:
    // Opened for reading and writing; truncate false keeps what lies beyond the bytes written
    // now (as the design's extraction does), true empties the file first.
    WavFile(std::string path, bool truncate);
    WavFile(const WavFile&) = delete;
    WavFile& operator=(const WavFile&) = delete;
    ~WavFile() { Close(); }

    bool IsOpen() const { return fd_ >= 0; }
    const std::string& Error() const { return error_; }

    // Appends at the current position (the start, right after opening).
    bool Append(std::span<const uint8_t> bytes);
    // Overwrites bytes at offset, leaving the current position as it is.
    bool WriteAt(int64_t offset, std::span<const uint8_t> bytes);
    // Fills bytes from offset; false when the file is shorter or cannot be read.
    bool ReadAt(int64_t offset, std::span<uint8_t> bytes);
    bool Close();
    // Closes the file and removes it.
    void Remove();

  private:
    // At offset, or at the current position when offset is negative.
    bool Put(std::span<const uint8_t> bytes, int64_t offset);
    void Failed(int error);

    std::string path_;
    int fd_ = -1;
    std::string error_;
};

}  // namespace plattmix::audiocd
