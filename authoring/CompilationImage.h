// The checked rows of a compilation as the tree of a disc: a folder's content in a folder of its
// own name at the root, a file at the root. Listed first (sizes and names checked), then added
// to an image that may already hold the tree of an earlier session.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "FolderListing.h"
#include "IsoFileStreamFaults.h"
#include "IsoImage.h"
#include "ScanHooks.h"

struct Iso_Image;

namespace plattmix::authoring {

struct CompilationRow {
    std::string path;     // as checked, without a trailing "/"
    std::string parent;   // the folder the row lies in
    bool folder = false;  // a folder with its listing; else a file or a symbolic link
    FolderListing listing;
};

struct CompilationListing {
    IsoOutcome outcome = IsoOutcome::Done;  // Done, NoFiles, Aborted (Escape or a bad row)
    std::string detail;                     // why a row was refused
    std::vector<CompilationRow> rows;
    int64_t totalBytes = 0;  // all files of all rows
    size_t fileCount = 0;
};

// Lists the rows' trees (Escape stops). Refused: a path that does not exist, and two rows of the
// same name, which would meet at the disc's root.
CompilationListing ListCompilation(const std::vector<std::string>& paths, const ScanHooks& hooks);

// Adds every listed row to image's root, joining what the image holds already (files of the same
// name replaced, folders joined), and names the volume. excludedFile (the target of a "stdio:"
// drive) never goes in. Files are read through streams that report into faults. Done, or Aborted
// with the reason (empty: cancelled).
IsoImageResult AddCompilation(Iso_Image& image, const CompilationListing& listing,
                              const std::string& volumeName, const std::string& excludedFile,
                              std::shared_ptr<IsoFileStreamFaults> faults,
                              const IsoJobHooks& hooks);

// A new image without files, for jobs that are handed an image by a scripted recorder.
std::shared_ptr<Iso_Image> NewEmptyIsoImage(const std::string& volumeName);

}  // namespace plattmix::authoring
