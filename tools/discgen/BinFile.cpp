#include "BinFile.h"

#include <cerrno>
#include <cstring>

namespace plattmix::discgen {
namespace {

constexpr size_t kBufferBytes = 1 << 20;

std::string SystemError(const std::string& what, const std::filesystem::path& path) {
    return what + " " + path.string() + ": " + std::strerror(errno);
}

}  // namespace

BinFile::~BinFile() {
    if (file_ != nullptr) {
        std::fclose(file_);
    }
}

std::string BinFile::Open(const std::filesystem::path& path) {
    if (file_ != nullptr) {
        std::fclose(file_);
        file_ = nullptr;
    }
    path_ = path;
    bytes_ = 0;
    crc_ = audiocd::Crc32{};
    error_.clear();
    buffer_.clear();
    if (path.empty()) {
        return "";
    }
    file_ = std::fopen(path.c_str(), "wb");
    if (file_ == nullptr) {
        error_ = SystemError("Kann nicht angelegt werden:", path);
        return error_;
    }
    buffer_.reserve(kBufferBytes);
    return "";
}

std::string BinFile::Write(std::span<const uint8_t> bytes) {
    if (!error_.empty()) {
        return error_;
    }
    crc_.Update(bytes);
    bytes_ += static_cast<int64_t>(bytes.size());
    if (file_ == nullptr) {
        return "";
    }
    if (buffer_.size() + bytes.size() > kBufferBytes) {
        if (std::string why = Flush(); !why.empty()) {
            return why;
        }
    }
    buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
    return "";
}

std::string BinFile::Flush() {
    if (file_ != nullptr && !buffer_.empty() &&
        std::fwrite(buffer_.data(), 1, buffer_.size(), file_) != buffer_.size()) {
        error_ = SystemError("Schreiben fehlgeschlagen:", path_);
    }
    buffer_.clear();
    return error_;
}

std::string BinFile::Close() {
    std::string why = Flush();
    if (file_ != nullptr) {
        if (std::fclose(file_) != 0 && why.empty()) {
            why = SystemError("Schliessen fehlgeschlagen:", path_);
        }
        file_ = nullptr;
    }
    return why;
}

}  // namespace plattmix::discgen
