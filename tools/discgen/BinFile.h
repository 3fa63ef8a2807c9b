// One BIN file being written: buffers the bytes, keeps their count and CRC-32. Opened without
// a path it writes nothing and only counts, which lets a disc be described without files.
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "Crc32.h"

namespace plattmix::discgen {

class BinFile {
  public:
    BinFile() = default;
    BinFile(const BinFile&) = delete;
    BinFile& operator=(const BinFile&) = delete;
    ~BinFile();

    // Starts a new file (truncating an old one); an empty path only counts. Empty on success.
    std::string Open(const std::filesystem::path& path);
    // Empty on success; after a failure the file stays failed until the next Open.
    std::string Write(std::span<const uint8_t> bytes);
    // Flushes and closes; empty on success.
    std::string Close();

    int64_t Bytes() const { return bytes_; }
    uint32_t Crc() const { return crc_.Value(); }

  private:
    std::string Flush();

    std::FILE* file_ = nullptr;
    std::filesystem::path path_;
    std::vector<uint8_t> buffer_;
    std::string error_;
    int64_t bytes_ = 0;
    audiocd::Crc32 crc_;
};

}  // namespace plattmix::discgen
