#include "FileIo.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <system_error>

namespace plattmix::shell {

namespace {

// Closes the descriptor when the scope ends.
class Descriptor {
  public:
    explicit Descriptor(int fd) : fd_(fd) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { Close(); }
    int Get() const { return fd_; }
    bool Valid() const { return fd_ >= 0; }
    bool Close() {
        if (fd_ < 0) {
            return true;
        }
        const int result = ::close(fd_);
        fd_ = -1;
        return result == 0;
    }

  private:
    int fd_;
};

bool WriteAll(int fd, std::string_view bytes) {
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t written = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        done += static_cast<size_t>(written);
    }
    return true;
}

// A link is followed so that the file it points to is replaced, not the link.
std::string ResolveTarget(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_symlink(path, error)) {
        return path;
    }
    const auto resolved = std::filesystem::weakly_canonical(path, error);
    return error ? path : resolved.string();
}

// A name beside target that no one else uses; created empty with the user's default mode.
int CreateTemporary(const std::string& target, std::string& tempPath) {
    static std::atomic<unsigned> counter{0};
    for (int attempt = 0; attempt < 100; ++attempt) {
        tempPath = target + ".tmp" + std::to_string(::getpid()) + "-" + std::to_string(++counter);
        const int fd = ::open(tempPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd >= 0 || errno != EEXIST) {
            return fd;
        }
    }
    return -1;
}

}  // namespace

bool RegularFileExists(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

std::optional<uint64_t> RegularFileSize(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) {
        return std::nullopt;
    }
    return static_cast<uint64_t>(info.st_size);
}

std::optional<std::string> ReadWholeFile(const std::string& path) {
    Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat info {};
    if (!file.Valid() || ::fstat(file.Get(), &info) != 0 || !S_ISREG(info.st_mode)) {
        return std::nullopt;
    }
    std::string bytes;
    bytes.reserve(static_cast<size_t>(info.st_size));
    char chunk[65536];
    for (;;) {
        const ssize_t got = ::read(file.Get(), chunk, sizeof chunk);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            return std::nullopt;
        }
        if (got == 0) {
            return bytes;
        }
        bytes.append(chunk, static_cast<size_t>(got));
    }
}

bool WriteFileAtomically(const std::string& path, std::string_view bytes) {
    const std::string target = ResolveTarget(path);
    struct stat existing {};
    const bool exists = ::stat(target.c_str(), &existing) == 0;
    // A file the user may not write stays as it is, although the folder would allow a rename.
    if (exists && (!S_ISREG(existing.st_mode) || ::access(target.c_str(), W_OK) != 0)) {
        return false;
    }
    std::string tempPath;
    Descriptor temp(CreateTemporary(target, tempPath));
    if (!temp.Valid()) {
        return false;
    }
    bool ok = WriteAll(temp.Get(), bytes);
    if (ok && exists) {
        ok = ::fchmod(temp.Get(), existing.st_mode & 07777) == 0;
    }
    ok = ok && ::fsync(temp.Get()) == 0;
    ok = temp.Close() && ok;
    ok = ok && ::rename(tempPath.c_str(), target.c_str()) == 0;
    if (!ok) {
        ::unlink(tempPath.c_str());
    }
    return ok;
}

}  // namespace plattmix::shell
