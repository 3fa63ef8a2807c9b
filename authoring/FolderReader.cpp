#include "FolderReader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace plattmix::authoring {

namespace {

DIR* OpenFd(int fd) {
    if (fd < 0)
        return nullptr;
    DIR* dir = fdopendir(fd);
    if (dir == nullptr)
        close(fd);
    return dir;
}

}  // namespace

FolderReader::FolderReader(const std::string& path)
    : dir_(OpenFd(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))) {}

FolderReader::FolderReader(const FolderReader& parent, const char* name)
    : dir_(parent.ok() ? OpenFd(openat(dirfd(parent.dir_), name,
                                       O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC))
                       : nullptr) {}

FolderReader::~FolderReader() {
    if (dir_ != nullptr)
        closedir(dir_);
}

const dirent* FolderReader::Next() {
    return dir_ != nullptr ? readdir(dir_) : nullptr;
}

EntryKind FolderReader::Kind(const dirent& entry) const {
    switch (entry.d_type) {
        case DT_LNK:
            return EntryKind::Link;
        case DT_DIR:
            return EntryKind::Folder;
        case DT_UNKNOWN:
            break;
        default:
            return EntryKind::File;
    }
    // Some file systems leave the type open: ask the inode.
    struct stat info {};
    if (fstatat(dirfd(dir_), entry.d_name, &info, AT_SYMLINK_NOFOLLOW) != 0)
        return EntryKind::File;
    if (S_ISLNK(info.st_mode))
        return EntryKind::Link;
    return S_ISDIR(info.st_mode) ? EntryKind::Folder : EntryKind::File;
}

bool FolderReader::Size(const char* name, int64_t& size) const {
    struct stat info {};
    if (dir_ == nullptr || fstatat(dirfd(dir_), name, &info, AT_SYMLINK_NOFOLLOW) != 0)
        return false;
    size = static_cast<int64_t>(info.st_size);
    return true;
}

}  // namespace plattmix::authoring
