#include "FileContent.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace plattmix::treegen {

namespace {

uint64_t Mix(uint64_t x) {
    x += 0x9E3779B97F4A7C15ull;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
    return x ^ (x >> 31);
}

// The 8 bytes of the content's word at index (byte offset / 8).
uint64_t Word(uint64_t seed, uint64_t index) {
    return Mix(Mix(seed) ^ index);
}

class FileDescriptor {
  public:
    explicit FileDescriptor(const std::filesystem::path& path)
        : path_(path), fd_(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644)) {
        if (fd_ < 0)
            Throw("kann nicht angelegt werden");
    }
    ~FileDescriptor() {
        if (fd_ >= 0)
            close(fd_);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    void WriteAll(const char* data, size_t size) {
        while (size > 0) {
            const ssize_t n = write(fd_, data, size);
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0)
                Throw("kann nicht geschrieben werden");
            data += n;
            size -= static_cast<size_t>(n);
        }
    }

  private:
    [[noreturn]] void Throw(const char* what) const {
        throw std::runtime_error(path_.string() + " " + what + ": " + std::strerror(errno));
    }

    std::filesystem::path path_;
    int fd_;
};

}  // namespace

void FillContent(uint64_t seed, uint64_t offset, char* data, size_t size) {
    for (size_t i = 0; i < size;) {
        const uint64_t position = offset + i;
        const uint64_t word = Word(seed, position / 8);
        for (uint64_t byte = position % 8; byte < 8 && i < size; ++byte, ++i)
            data[i] = static_cast<char>((word >> (8 * byte)) & 0xFF);
    }
}

std::string ContentAt(uint64_t seed, uint64_t offset, size_t size) {
    std::string text(size, '\0');
    FillContent(seed, offset, text.data(), size);
    return text;
}

void WriteContentFile(const std::filesystem::path& path, int64_t size, uint64_t seed) {
    if (path.has_parent_path())
        std::filesystem::create_directories(path.parent_path());
    FileDescriptor file(path);
    constexpr size_t kBlock = 1 << 20;
    std::vector<char> block(static_cast<size_t>(std::min<int64_t>(size, kBlock)));
    for (int64_t at = 0; at < size;) {
        const size_t piece = static_cast<size_t>(std::min<int64_t>(size - at, kBlock));
        FillContent(seed, static_cast<uint64_t>(at), block.data(), piece);
        file.WriteAll(block.data(), piece);
        at += static_cast<int64_t>(piece);
    }
}

}  // namespace plattmix::treegen
