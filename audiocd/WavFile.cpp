#include "WavFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace plattmix::audiocd {
namespace {

std::string SystemError(int error) {
    return std::generic_category().message(error);
}

}  // namespace

WavFile::WavFile(std::string path, bool truncate) : path_(std::move(path)) {
    fd_ = ::open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | (truncate ? O_TRUNC : 0), 0666);
    if (fd_ < 0)
        error_ = "Die Datei " + path_ + " kann nicht geöffnet werden: " + SystemError(errno);
}

bool WavFile::Append(std::span<const uint8_t> bytes) {
    return Put(bytes, -1);
}

bool WavFile::WriteAt(int64_t offset, std::span<const uint8_t> bytes) {
    return Put(bytes, offset);
}

bool WavFile::Put(std::span<const uint8_t> bytes, int64_t offset) {
    while (!bytes.empty()) {
        const ssize_t written = offset < 0 ? ::write(fd_, bytes.data(), bytes.size())
                                           : ::pwrite(fd_, bytes.data(), bytes.size(), offset);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0) {
            Failed(written < 0 ? errno : ENOSPC);
            return false;
        }
        bytes = bytes.subspan(static_cast<size_t>(written));
        if (offset >= 0)
            offset += written;
    }
    return true;
}

bool WavFile::ReadAt(int64_t offset, std::span<uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t got = ::pread(fd_, bytes.data(), bytes.size(), offset);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0) {
            error_ = "Die Datei " + path_ +
                     " kann nicht gelesen werden: " + SystemError(got < 0 ? errno : EIO);
            return false;
        }
        bytes = bytes.subspan(static_cast<size_t>(got));
        offset += got;
    }
    return true;
}

bool WavFile::Close() {
    if (fd_ < 0)
        return error_.empty();
    const int result = ::close(fd_);
    fd_ = -1;
    if (result != 0 && error_.empty())
        Failed(errno);
    return error_.empty();
}

void WavFile::Remove() {
    Close();
    ::unlink(path_.c_str());
}

void WavFile::Failed(int error) {
    error_ = "Fehler beim Schreiben der Datei " + path_ + ": " + SystemError(error);
}

}  // namespace plattmix::audiocd
