// The content of an ISO source folder: every file and sub-folder below it in two name tables,
// with one running total, and the symbolic links met on the way. Files of each level come before
// its sub-folders, depth first.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ScanHooks.h"
#include "SizeFormat.h"

namespace plattmix::authoring {

// Files from this size on need more than a 32-bit signed size field.
inline constexpr int64_t kLargeFileSize = 2147483648;

// Kept by the caller until the next listing; the ISO page reads it.
struct FolderListing {
    int64_t ListTotal = 0;
    std::vector<std::string> ListFolders;  // full paths, no trailing "/"
    std::vector<std::string> ListFiles;    // full paths
    // Full paths of the symbolic links of every level, to files and folders alike (dangling ones
    // too); never followed, not in ListFiles and not counted in ListTotal.
    std::vector<std::string> ListLinks;
    bool ListHasLargeFile = false;
    // Escape stopped the walk: the tables hold only part of the tree and make no image.
    bool ListAborted = false;
};

// Adds the files of folder (not of its sub-folders) whose names match pattern to ListFiles and
// their sizes to ListTotal, and its symbolic links whose names match to ListLinks. Escape stops
// it and sets ListAborted; a listing once aborted adds nothing more.
void ListOrdnerDateien(std::string folder, const std::string& pattern, FolderListing& listing,
                       const ScanHooks& hooks);

// Adds each sub-folder of folder whose name matches pattern to ListFolders, then lists its files
// and its own sub-folders. Symbolic links to folders are not followed. Escape stops the whole
// walk, as in ListOrdnerDateien.
void ListUnterordner(std::string folder, const std::string& pattern, FolderListing& listing,
                     const ScanHooks& hooks);

// Empties listing, lists everything below folder and returns the total as text.
std::string ShowOrdnerInhalt(const std::string& folder, FolderListing& listing,
                             const ScanHooks& hooks,
                             const NumberFormat& format = SystemNumberFormat());

}  // namespace plattmix::authoring
