#include "IsoFileCheck.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace plattmix::authoring {

namespace {

constexpr int64_t kBlock = 2048;
constexpr int64_t kDescriptorOffset = 16 * kBlock;

class ReadOnlyFile {
  public:
    explicit ReadOnlyFile(const std::string& path)
        : fd_(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
    ~ReadOnlyFile() {
        if (fd_ >= 0)
            close(fd_);
    }
    ReadOnlyFile(const ReadOnlyFile&) = delete;
    ReadOnlyFile& operator=(const ReadOnlyFile&) = delete;

    int fd() const { return fd_; }

  private:
    int fd_;
};

IsoFileCheckResult Refused(std::string error) {
    return {false, 0, std::move(error)};
}

uint32_t LittleEndian32(const unsigned char* bytes) {
    return static_cast<uint32_t>(bytes[0]) | static_cast<uint32_t>(bytes[1]) << 8 |
           static_cast<uint32_t>(bytes[2]) << 16 | static_cast<uint32_t>(bytes[3]) << 24;
}

}  // namespace

IsoFileCheckResult CheckIsoFile(const std::string& path) {
    const ReadOnlyFile file(path);
    struct stat info {};
    if (file.fd() < 0 || fstat(file.fd(), &info) != 0)
        return Refused("Die ISO-Datei kann nicht geöffnet werden: " + path + " (" +
                       std::strerror(errno) + ")");
    const std::string notAnImage = "Die Datei ist kein ISO-9660-Image: " + path;
    if (!S_ISREG(info.st_mode) || info.st_size < kDescriptorOffset + kBlock)
        return Refused(notAnImage);
    std::array<unsigned char, kBlock> descriptor{};
    if (pread(file.fd(), descriptor.data(), descriptor.size(), kDescriptorOffset) != kBlock)
        return Refused(notAnImage);
    // Type 1 (primary), "CD001", version 1.
    if (descriptor[0] != 1 || std::memcmp(&descriptor[1], "CD001", 5) != 0 || descriptor[6] != 1)
        return Refused(notAnImage);
    const int64_t volumeBlocks = LittleEndian32(&descriptor[80]);
    if (info.st_size % kBlock != 0 || volumeBlocks * kBlock > info.st_size)
        return Refused("Das ISO-Image ist unvollständig: " + path);
    return {true, info.st_size, ""};
}

}  // namespace plattmix::authoring
