#include "ImageFile.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

namespace plattmix::vdrive {

namespace {

constexpr off_t kBlock = 2048;
// Volume descriptors start at block 16: "CD001" for ISO 9660, "BEA01" opening a UDF sequence.
constexpr off_t kFirstDescriptor = 16;
constexpr int kDescriptorsLooked = 4;

bool HoldsVolume(int fd) {
    for (int i = 0; i < kDescriptorsLooked; ++i) {
        std::array<char, 6> head{};
        const off_t at = (kFirstDescriptor + i) * kBlock;
        if (pread(fd, head.data(), head.size(), at) != static_cast<ssize_t>(head.size()))
            return false;
        const std::string_view id(head.data() + 1, 5);
        if (id == "CD001" || id == "BEA01")
            return true;
    }
    return false;
}

}  // namespace

std::optional<ImageFile> ImageFile::Open(const std::string& path, std::string& why,
                                         bool needVolume) {
    if (path.empty()) {
        why = "no file given";
        return std::nullopt;
    }
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        why = path + ": " + std::strerror(errno);
        return std::nullopt;
    }
    ImageFile file(fd, path, "", 0, 0);  // closes fd on every way out
    struct stat info {};
    if (fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        why = path + ": not a file";
        return std::nullopt;
    }
    if (needVolume && !HoldsVolume(fd)) {
        why = path + ": no ISO 9660 or UDF volume";
        return std::nullopt;
    }
    const std::unique_ptr<char, decltype(&free)> real(realpath(path.c_str(), nullptr), &free);
    if (!real) {
        why = path + ": " + std::strerror(errno);
        return std::nullopt;
    }
    file.realPath_ = real.get();
    file.device_ = info.st_dev;
    file.inode_ = info.st_ino;
    return file;
}

ImageFile::ImageFile(int fd, std::string path, std::string realPath, dev_t device, ino_t inode)
    : fd_(fd),
      path_(std::move(path)),
      realPath_(std::move(realPath)),
      device_(device),
      inode_(inode) {}

ImageFile::~ImageFile() {
    if (fd_ >= 0)
        close(fd_);
}

ImageFile::ImageFile(ImageFile&& other) noexcept
    : fd_(std::exchange(other.fd_, -1)),
      path_(std::move(other.path_)),
      realPath_(std::move(other.realPath_)),
      device_(other.device_),
      inode_(other.inode_) {}

ImageFile& ImageFile::operator=(ImageFile&& other) noexcept {
    if (this != &other) {
        if (fd_ >= 0)
            close(fd_);
        fd_ = std::exchange(other.fd_, -1);
        path_ = std::move(other.path_);
        realPath_ = std::move(other.realPath_);
        device_ = other.device_;
        inode_ = other.inode_;
    }
    return *this;
}

}  // namespace plattmix::vdrive
