// One open folder read entry by entry, for the walks of modScan and the folder listing.
// Symbolic links are reported as links and never followed.
#pragma once

#include <dirent.h>

#include <cstdint>
#include <string>

namespace plattmix::authoring {

enum class EntryKind { Link, Folder, File };

class FolderReader {
  public:
    // Opens a folder by path; a symbolic link given here is followed (the user chose it).
    explicit FolderReader(const std::string& path);
    // Opens the sub-folder name of an open folder; a symbolic link there is not followed.
    FolderReader(const FolderReader& parent, const char* name);
    ~FolderReader();

    FolderReader(const FolderReader&) = delete;
    FolderReader& operator=(const FolderReader&) = delete;

    bool ok() const { return dir_ != nullptr; }

    // The next entry, "." and ".." included; nullptr at the end or on a read error.
    const dirent* Next();

    EntryKind Kind(const dirent& entry) const;

    // Size in bytes of the entry name (not following a link); false when it cannot be read.
    bool Size(const char* name, int64_t& size) const;

  private:
    DIR* dir_ = nullptr;
};

inline bool IsDotEntry(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

}  // namespace plattmix::authoring
