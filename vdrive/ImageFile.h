// An ISO image opened read-only for attaching: the open file, and its path as the kernel and
// udisks report backing files (absolute, links resolved).
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace plattmix::vdrive {

class ImageFile {
  public:
    // Opens the file. Nothing when it cannot be opened for reading, is no regular file or (with
    // needVolume) holds no ISO 9660 or UDF volume; why then tells the reason.
    static std::optional<ImageFile> Open(const std::string& path, std::string& why,
                                         bool needVolume = true);

    ~ImageFile();
    ImageFile(ImageFile&& other) noexcept;
    ImageFile& operator=(ImageFile&& other) noexcept;
    ImageFile(const ImageFile&) = delete;
    ImageFile& operator=(const ImageFile&) = delete;

    int fd() const { return fd_; }
    const std::string& path() const { return path_; }          // as the user gave it
    const std::string& realPath() const { return realPath_; }  // absolute, links resolved
    dev_t device() const { return device_; }                   // the file's own device and inode
    ino_t inode() const { return inode_; }

  private:
    ImageFile(int fd, std::string path, std::string realPath, dev_t device, ino_t inode);

    int fd_ = -1;
    std::string path_;
    std::string realPath_;
    dev_t device_ = 0;
    ino_t inode_ = 0;
};

}  // namespace plattmix::vdrive
