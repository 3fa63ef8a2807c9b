#include "FolderListing.h"

#include <fnmatch.h>

#include <string_view>

#include "FolderReader.h"

namespace plattmix::authoring {

namespace {

void AddSlash(std::string& folder) {
    if (folder.empty() || folder.back() != '/')
        folder += '/';
}

// "*.*" means every name, with or without a dot.
bool Matches(const char* name, const std::string& pattern) {
    return pattern == "*.*" || pattern == "*" || fnmatch(pattern.c_str(), name, 0) == 0;
}

void AddFile(const std::string& path, int64_t size, FolderListing& listing) {
    listing.ListTotal += size;
    if (size >= kLargeFileSize)
        listing.ListHasLargeFile = true;
    listing.ListFiles.push_back(path);
}

// Every entry of folder in reading order: Escape stops the walk (and every level above it), the
// window gets a yield before each entry. A failure (out of memory, a hook that threw) keeps what
// was listed so far.
template <typename VisitFn>
void WalkFolder(const std::string& folder, FolderListing& listing, const ScanHooks& hooks,
                VisitFn visit) {
    try {
        FolderReader reader(folder);
        while (const dirent* entry = reader.Next()) {
            if (listing.ListAborted)
                return;
            if (EscapePressed(hooks)) {
                listing.ListAborted = true;
                return;
            }
            YieldToWindow(hooks);
            visit(reader, *entry);
        }
    } catch (...) {
    }
}

}  // namespace

void ListOrdnerDateien(std::string folder, const std::string& pattern, FolderListing& listing,
                       const ScanHooks& hooks) {
    AddSlash(folder);
    WalkFolder(folder, listing, hooks, [&](FolderReader& reader, const dirent& entry) {
        const char* name = entry.d_name;
        if (name[0] == '\0' || !Matches(name, pattern))
            return;
        const EntryKind kind = reader.Kind(entry);
        int64_t size = 0;
        if (kind == EntryKind::Link)
            listing.ListLinks.push_back(folder + name);
        else if (kind == EntryKind::File && reader.Size(name, size))
            AddFile(folder + name, size, listing);
    });
}

void ListUnterordner(std::string folder, const std::string& pattern, FolderListing& listing,
                     const ScanHooks& hooks) {
    AddSlash(folder);
    WalkFolder(folder, listing, hooks, [&](FolderReader& reader, const dirent& entry) {
        const char* name = entry.d_name;
        if (IsDotEntry(name) || reader.Kind(entry) != EntryKind::Folder || !Matches(name, pattern))
            return;
        const std::string sub = folder + name;
        listing.ListFolders.push_back(sub);
        ListOrdnerDateien(sub, "*.*", listing, hooks);
        ListUnterordner(sub, "*.*", listing, hooks);
    });
}

std::string ShowOrdnerInhalt(const std::string& folder, FolderListing& listing,
                             const ScanHooks& hooks, const NumberFormat& format) {
    listing = FolderListing{};
    ListOrdnerDateien(folder, "*.*", listing, hooks);
    ListUnterordner(folder, "*.*", listing, hooks);
    listing.ListFolders.shrink_to_fit();
    listing.ListFiles.shrink_to_fit();
    listing.ListLinks.shrink_to_fit();
    return FormatGroesse(listing.ListTotal, format);
}

}  // namespace plattmix::authoring
