// The image's tree from a folder listing: folders, files and symbolic links at their paths below
// the source folder, with the modes, owners and times the source has (Rock Ridge keeps them).
// Files are added as IsoFileStreams, so a file that changes before it is written is noticed.
#pragma once

#include <sys/types.h>

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "FolderListing.h"
#include "IsoFileStreamFaults.h"
#include "IsoImage.h"
#include "IsofsOwners.h"

namespace plattmix::authoring {

class IsoTreeBuilder {
  public:
    IsoTreeBuilder(IsoImage& image, const std::string& sourceFolder,
                   std::shared_ptr<IsoFileStreamFaults> faults);

    // The image file itself must not go into the image when it lies in the source.
    void ExcludeOutput(const std::string& outputPath);

    // For adding to a tree the image already holds (a further session, the rows of a
    // compilation): the root keeps its attributes, a folder already at an entry's place is
    // joined, anything else there is replaced.
    void JoinExisting() { join_ = true; }

    // Adds every entry of listing: the folders in their order (parents come first), then the
    // files, then the links. The job can be cancelled before each entry; the window gets a yield
    // after each one. Done when everything was added, Aborted with the reason otherwise.
    IsoImageResult AddAll(const FolderListing& listing, const IsoJobHooks& hooks);

  private:
    struct Place {
        IsoDir* folder;
        std::string name;
    };

    // Each returns the reason when the entry could not be added, empty on success.
    std::string AddRoot();
    std::string AddFolder(const std::string& path);
    std::string AddFile(const std::string& path);
    std::string AddLink(const std::string& path);

    // The folder node that takes path and the name it gets there.
    std::optional<Place> PlaceOf(const std::string& path, std::string& error) const;
    // When joining: the folder already at place (kept when a folder is wanted), or nullptr
    // after anything else there was removed.
    IsoDir* MakeRoom(const Place& place, bool wantFolder);

    IsoImage& image_;
    std::string base_;  // the source folder with a trailing "/"
    std::shared_ptr<IsoFileStreamFaults> faults_;
    std::unordered_map<std::string, IsoDir*> folders_;  // by path relative to the source
    std::optional<std::pair<dev_t, ino_t>> output_;
    bool join_ = false;
};

}  // namespace plattmix::authoring
