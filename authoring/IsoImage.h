// An ISO 9660 image (with Joliet and Rock Ridge, ISO level 3 for files of 4 GiB and more) of a
// folder tree, written into one file in fixed chunks while the caller's progress bar follows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "FolderListing.h"
#include "ScanHooks.h"

namespace plattmix::authoring {

inline constexpr const char* kDefaultVolumeName = "PlattmixDisk";
inline constexpr size_t kIsoCopyChunk = 131072;

// The status texts the job leaves in the list view.
inline constexpr const char* kIsoDone = "Fertig";
inline constexpr const char* kIsoFailed = "Fehler!";
inline constexpr const char* kIsoAborted = "Abbruch";

// File systems as the image service numbers them.
enum FileSystem : int { kFsIso9660 = 1, kFsJoliet = 2, kFsUdf = 4 };
// No UDF writer exists here; large files go into ISO 9660 and Joliet through level 3.
inline constexpr int kFileSystemsSupported = kFsIso9660 | kFsJoliet;

// ISO 9660 + Joliet; UDF alone when a file of 2 GiB or more is listed and UDF is supported.
int FileSystemsToCreate(int supported, bool hasLargeFile);

// "Keine Datei in dem Quellpfad: " CR LF source " gefunden!"
std::string NoFilesMessage(const std::string& source);

enum class IsoOutcome {
    NoFiles,  // nothing was written; the caller shows NoFilesMessage
    Done,     // "Fertig"
    Aborted,  // "Abbruch": a file could not be added, or the user stopped the job
    Failed,   // "Fehler!": writing failed, or a file changed or vanished while it was read
};

const char* IsoStatusText(IsoOutcome outcome);

struct IsoImageParams {
    std::string sourceFolder;  // the folder whose tree the image shows
    std::string volumeName;    // empty: "PlattmixDisk"
    std::string outputPath;
};

struct IsoJobHooks {
    ScanHooks scan;                     // Escape and the message loop
    std::function<void(int)> progress;  // 0..100; reaches exactly 100 when done
    std::function<bool()> cancelled;    // the window's Abbort flag
};

struct IsoImageResult {
    IsoOutcome outcome = IsoOutcome::Failed;
    std::string detail;      // what went wrong, for the command line and the logs
    int64_t imageBytes = 0;  // the image's size once it was built
};

// Builds the image of listing (made by ShowOrdnerInhalt of params.sourceFolder) into
// params.outputPath. The file tree below the source keeps its relative layout; symbolic links
// are stored as links. Nothing is written unless the tree was added completely, nor for a
// listing that Escape stopped (Aborted).
// Hooks: progress(0) first; while the tree is added, cancel is asked before each entry and the
// window gets a yield after each one (folders, then files, then links, in the listing's order);
// while the image is copied, cancel is asked before each chunk, progress and a yield follow it.
// A cancelled copy removes the unfinished output; a failed one leaves it.
IsoImageResult CreateIsoImage(const IsoImageParams& params, const FolderListing& listing,
                              const IsoJobHooks& hooks);

}  // namespace plattmix::authoring
