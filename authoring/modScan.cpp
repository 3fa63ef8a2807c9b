#include "modScan.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string_view>

#include "FolderReader.h"

namespace plattmix::authoring {

namespace {

void AddSlash(std::string& path) {
    if (path.empty() || path.back() != '/')
        path += '/';
}

std::string Abort(ScanState& state) {
    state.ScanTotal = 0;
    return kScanAborted;
}

bool SkippedFolder(std::string_view name) {
    return IsDotEntry(name.data()) || (!name.empty() && name.back() == '\x7f');
}

std::string ScanFolder(FolderReader& folder, ScanState& state, const ScanHooks& hooks);

// The sub-folder name of an open folder, walked as OrdnerGroesse walks a folder given by path.
// It is opened relative to its parent, which saves building and resolving its full path.
std::string ScanSubFolder(const FolderReader& parent, const char* name, ScanState& state,
                          const ScanHooks& hooks) {
    if (EscapePressed(hooks))
        return Abort(state);
    FolderReader sub(parent, name);
    if (!sub.ok())
        return kScanNoAccess;
    return ScanFolder(sub, state, hooks);
}

// One level of the walk.
std::string ScanFolder(FolderReader& folder, ScanState& state, const ScanHooks& hooks) {
    while (const dirent* entry = folder.Next()) {
        const std::string_view name(entry->d_name);
        const EntryKind kind = folder.Kind(*entry);
        if (kind == EntryKind::Link)
            continue;
        if (kind == EntryKind::Folder) {
            if (SkippedFolder(name))
                continue;
            YieldToWindow(hooks);
            if (EscapePressed(hooks))
                return Abort(state);
            // The sub-folder's result is dropped: an abort there ends that level only.
            ScanSubFolder(folder, entry->d_name, state, hooks);
            continue;
        }
        if (EscapePressed(hooks))
            return Abort(state);
        YieldToWindow(hooks);
        int64_t size = 0;
        if (folder.Size(entry->d_name, size))
            state.ScanTotal += size;
    }
    return "";
}

}  // namespace

std::string OrdnerGroesse(std::string& path, ScanState& state, const ScanHooks& hooks) {
    try {
        if (EscapePressed(hooks))
            return Abort(state);
        AddSlash(path);
        FolderReader folder(path);
        if (!folder.ok())
            return kScanNoAccess;
        return ScanFolder(folder, state, hooks);
    } catch (...) {
        // Out of memory or a hook that threw: the folder could not be searched to its end.
        return kScanNoAccess;
    }
}

int64_t DateiGroesse(const std::string& path) {
    // Non-blocking so that a named pipe does not hold the caller up.
    const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return -1;
    struct stat info {};
    int64_t size = 0;
    if (fstat(fd, &info) == 0) {
        size = S_ISDIR(info.st_mode) ? -1 : static_cast<int64_t>(info.st_size);
    }
    close(fd);
    return size;
}

}  // namespace plattmix::authoring
