#include "IsoFileStream.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <vector>

namespace plattmix::authoring {

namespace {

// libisofs declares struct iso_stream for C only (a member is named "class"); this is the same
// memory layout under other names, as the library's header advises.
struct StreamRecord {
    IsoStreamIface* iface;
    int refcount;
    void* data;
};

// Our own file-system id for get_id(): two streams over one inode (hard links) share content.
constexpr unsigned int kPlattmixFsId = 0x504d5846;  // "PMXF"
constexpr size_t kReadAhead = 262144;

int IsoError(unsigned int code) {
    return static_cast<int>(code);
}

bool SameTime(const timespec& a, const timespec& b) {
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

// One source file as added: what it must still be when libisofs reads it.
class SourceFile {
  public:
    SourceFile(std::string path, const struct stat& info,
               std::shared_ptr<IsoFileStreamFaults> faults)
        : path_(std::move(path)),
          size_(info.st_size),
          mtime_(info.st_mtim),
          dev_(info.st_dev),
          ino_(info.st_ino),
          faults_(std::move(faults)) {}
    ~SourceFile() { CloseFd(); }

    SourceFile(const SourceFile&) = delete;
    SourceFile& operator=(const SourceFile&) = delete;

    off_t Size() const { return size_; }
    dev_t Dev() const { return dev_; }
    ino_t Ino() const { return ino_; }

    int Open() {
        if (fd_ >= 0)
            return IsoError(ISO_FILE_ALREADY_OPENED);
        delivered_ = 0;
        fileOffset_ = 0;
        pending_.clear();
        taken_ = 0;
        failed_ = false;
        fd_ = open(path_.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        if (fd_ < 0)
            return Fault(errno == ENOENT ? "Die Datei ist verschwunden: " + path_
                                         : ReadErrorText(errno));
        struct stat now {};
        if (fstat(fd_, &now) != 0)
            return Fault(ReadErrorText(errno));
        if (!S_ISREG(now.st_mode))
            return Fault("Die Datei ist keine reguläre Datei mehr: " + path_);
        if (now.st_size != size_)
            return Fault("Die Datei hat ihre Größe geändert: " + path_ + " (" +
                         std::to_string(now.st_size) + " statt " + std::to_string(size_) +
                         " Bytes)");
        if (!SameTime(now.st_mtim, mtime_))
            return Fault("Die Datei wurde geändert: " + path_);
        posix_fadvise(fd_, 0, 0, POSIX_FADV_SEQUENTIAL);
        return 1;
    }

    int Close() {
        if (fd_ < 0)
            return IsoError(ISO_FILE_NOT_OPENED);
        if (!failed_ && delivered_ == size_)
            CheckUnchangedAfterReading();
        CloseFd();
        return 1;
    }

    // Delivers exactly count bytes unless the end of the size given at adding comes first.
    int Read(char* buffer, size_t count) {
        if (fd_ < 0)
            return IsoError(ISO_FILE_NOT_OPENED);
        if (failed_)
            return IsoError(ISO_FILE_READ_ERROR);
        count = static_cast<size_t>(std::min<off_t>(static_cast<off_t>(count), size_ - delivered_));
        size_t done = 0;
        while (done < count) {
            if (taken_ == pending_.size() && !Refill())
                return IsoError(ISO_FILE_READ_ERROR);
            const size_t piece = std::min(count - done, pending_.size() - taken_);
            std::memcpy(buffer + done, pending_.data() + taken_, piece);
            taken_ += piece;
            done += piece;
        }
        delivered_ += static_cast<off_t>(done);
        return static_cast<int>(done);
    }

    // The size given at adding still holds, unless the caller asks for the current one.
    void UpdateSize() {
        struct stat now {};
        if (stat(path_.c_str(), &now) == 0) {
            size_ = now.st_size;
            mtime_ = now.st_mtim;
        }
    }

  private:
    // Reads the next piece of the file, never past the size given at adding.
    bool Refill() {
        const size_t want = static_cast<size_t>(
            std::min<off_t>(static_cast<off_t>(kReadAhead), size_ - fileOffset_));
        pending_.resize(want);
        taken_ = 0;
        size_t got = 0;
        while (got < want) {
            const ssize_t n = pread(fd_, pending_.data() + got, want - got,
                                    fileOffset_ + static_cast<off_t>(got));
            if (n < 0 && errno == EINTR)
                continue;
            if (n < 0) {
                Fault(ReadErrorText(errno));
                return false;
            }
            if (n == 0) {
                Fault("Die Datei ist beim Lesen kürzer geworden: " + path_);
                return false;
            }
            got += static_cast<size_t>(n);
        }
        fileOffset_ += static_cast<off_t>(got);
        return true;
    }

    // The whole size was read: nothing may follow it, and the file must not have been touched.
    void CheckUnchangedAfterReading() {
        char extra = 0;
        struct stat now {};
        if (fstat(fd_, &now) != 0)
            Fault(ReadErrorText(errno));
        else if (now.st_size < size_)
            Fault("Die Datei ist beim Lesen kürzer geworden: " + path_);
        else if (now.st_size > size_ || pread(fd_, &extra, 1, size_) > 0)
            Fault("Die Datei ist beim Lesen größer geworden: " + path_);
        else if (!SameTime(now.st_mtim, mtime_))
            Fault("Die Datei wurde beim Lesen geändert: " + path_);
    }

    std::string ReadErrorText(int error) const {
        return "Die Datei kann nicht gelesen werden: " + path_ + " (" + std::strerror(error) + ")";
    }

    int Fault(const std::string& text) {
        failed_ = true;
        faults_->Record(text);
        return IsoError(ISO_FILE_READ_ERROR);
    }

    void CloseFd() {
        if (fd_ >= 0)
            close(fd_);
        fd_ = -1;
        std::vector<char>().swap(pending_);
    }

    std::string path_;
    off_t size_;
    timespec mtime_;
    dev_t dev_;
    ino_t ino_;
    std::shared_ptr<IsoFileStreamFaults> faults_;
    int fd_ = -1;
    off_t delivered_ = 0;   // handed to libisofs
    off_t fileOffset_ = 0;  // read from the file
    std::vector<char> pending_;
    size_t taken_ = 0;
    bool failed_ = false;
};

SourceFile& Source(IsoStream* stream) {
    return *static_cast<SourceFile*>(reinterpret_cast<StreamRecord*>(stream)->data);
}

int StreamOpen(IsoStream* stream) {
    return Source(stream).Open();
}

int StreamClose(IsoStream* stream) {
    return Source(stream).Close();
}

off_t StreamSize(IsoStream* stream) {
    return Source(stream).Size();
}

int StreamRead(IsoStream* stream, void* buffer, size_t count) {
    return Source(stream).Read(static_cast<char*>(buffer), count);
}

int StreamRepeatable(IsoStream*) {
    return 1;
}

void StreamId(IsoStream* stream, unsigned int* fsId, dev_t* devId, ino_t* inoId) {
    *fsId = kPlattmixFsId;
    *devId = Source(stream).Dev();
    *inoId = Source(stream).Ino();
}

void StreamFree(IsoStream* stream) {
    delete &Source(stream);
}

int StreamUpdateSize(IsoStream* stream) {
    Source(stream).UpdateSize();
    return 1;
}

IsoStreamIface fileStreamIface = {
    1,  // version: up to update_size()
    {'u', 's', 'e', 'r'},
    StreamOpen,
    StreamClose,
    StreamSize,
    StreamRead,
    StreamRepeatable,
    StreamId,
    StreamFree,
    StreamUpdateSize,
    nullptr,
    nullptr,
    nullptr,
};

}  // namespace

IsoStreamPtr NewIsoFileStream(const std::string& path, const struct stat& info,
                              std::shared_ptr<IsoFileStreamFaults> faults) {
    // libisofs frees the record itself (free()) after StreamFree, so it comes from malloc.
    auto* record = static_cast<StreamRecord*>(std::malloc(sizeof(StreamRecord)));
    if (record == nullptr)
        return nullptr;
    auto* source = new (std::nothrow) SourceFile(path, info, std::move(faults));
    if (source == nullptr) {
        std::free(record);
        return nullptr;
    }
    *record = StreamRecord{&fileStreamIface, 1, source};
    return IsoStreamPtr(reinterpret_cast<IsoStream*>(record));
}

}  // namespace plattmix::authoring
