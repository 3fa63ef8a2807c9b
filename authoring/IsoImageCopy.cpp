#include "IsoImageCopy.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "IsofsLibrary.h"

namespace plattmix::authoring {

namespace {

// The image file being written; closes on every way out.
class OutputFile {
  public:
    explicit OutputFile(const std::string& path)
        : path_(path), fd_(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644)) {}
    ~OutputFile() {
        if (fd_ >= 0)
            close(fd_);
    }

    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    bool ok() const { return fd_ >= 0; }

    // 0 when all of data was written, the errno otherwise.
    int Write(const unsigned char* data, size_t size) {
        while (size > 0) {
            const ssize_t n = write(fd_, data, size);
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0)
                return n < 0 ? errno : EIO;
            data += n;
            size -= static_cast<size_t>(n);
        }
        return 0;
    }

    // 0 when the data reached the disk and the file was closed, the errno otherwise. Devices
    // that cannot sync (EINVAL: /dev/null, a pipe) count as synced.
    int SyncAndClose() {
        int error = 0;
        if (fsync(fd_) != 0 && errno != EINVAL && errno != EROFS)
            error = errno;
        if (close(fd_) != 0 && error == 0)
            error = errno;
        fd_ = -1;
        return error;
    }

    // A cancelled image is no image: a regular file is removed, a device is left alone.
    void Remove() {
        struct stat info {};
        const bool regular = fstat(fd_, &info) == 0 && S_ISREG(info.st_mode);
        close(fd_);
        fd_ = -1;
        if (regular)
            unlink(path_.c_str());
    }

  private:
    std::string path_;
    int fd_;
};

bool Cancelled(const IsoJobHooks& hooks) {
    return (hooks.cancelled && hooks.cancelled()) || EscapePressed(hooks.scan);
}

void Report(const IsoJobHooks& hooks, int percent) {
    if (hooks.progress)
        hooks.progress(percent);
}

int ReadChunk(burn_source* source, unsigned char* buffer, size_t size) {
    const int count = static_cast<int>(size);
    return source->read_xt != nullptr ? source->read_xt(source, buffer, count)
                                      : source->read(source, buffer, count);
}

IsoImageResult Failed(std::string detail) {
    return {IsoOutcome::Failed, std::move(detail), 0};
}

std::string ErrnoText(const std::string& what, const std::string& path, int error) {
    return what + path + " (" + std::strerror(error) + ")";
}

// Why the image stream ended early: a source file first, else what libisofs said.
std::string StreamEndedText(const IsoFileStreamFaults& faults) {
    if (faults.Any())
        return faults.First();
    const std::string message = IsofsLibrary::TakeMessages();
    return message.empty() ? "Das Image konnte nicht vollständig erzeugt werden." : message;
}

}  // namespace

IsoImageResult CopyIsoImage(BurnSourceOwner& source, const std::string& outputPath,
                            const IsoJobHooks& hooks, const IsoFileStreamFaults& faults) {
    const int64_t size = static_cast<int64_t>(source.get()->get_size(source.get()));
    OutputFile output(outputPath);
    if (!output.ok()) {
        source.Release();
        return Failed(ErrnoText("Die Zieldatei kann nicht angelegt werden: ", outputPath, errno));
    }
    std::vector<unsigned char> chunk(kIsoCopyChunk);
    int64_t copied = 0;
    while (copied < size) {
        if (Cancelled(hooks)) {
            source.Release();
            output.Remove();
            return {IsoOutcome::Aborted, "", 0};
        }
        // A read beyond the end of the stream delivers nothing: ask for what is left at most.
        const size_t want = static_cast<size_t>(std::min<int64_t>(kIsoCopyChunk, size - copied));
        if (ReadChunk(source.get(), chunk.data(), want) != static_cast<int>(want)) {
            source.Release();
            return Failed(StreamEndedText(faults));
        }
        if (const int error = output.Write(chunk.data(), want)) {
            source.Release();
            return Failed(ErrnoText("Fehler beim Schreiben von ", outputPath, error));
        }
        copied += static_cast<int64_t>(want);
        Report(hooks, static_cast<int>(copied * 100 / size));
        YieldToWindow(hooks.scan);
        if (faults.Any()) {
            source.Release();
            return Failed(faults.First());
        }
    }
    // The thread reads the last file's end after its bytes went out: wait for it, then look.
    source.MarkComplete();
    source.Release();
    if (faults.Any())
        return Failed(faults.First());
    if (const int error = output.SyncAndClose())
        return Failed(ErrnoText("Fehler beim Abschließen von ", outputPath, error));
    if (size == 0)
        Report(hooks, 100);
    return {IsoOutcome::Done, "", size};
}

}  // namespace plattmix::authoring
