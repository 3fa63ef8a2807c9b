#include "CompilationImage.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "IsoTreeBuilder.h"
#include "IsofsLibrary.h"
#include "IsofsOwners.h"

namespace plattmix::authoring {

namespace {

std::string WithoutTrailingSlash(std::string path) {
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

// The row split at its last "/" into parent folder and name.
std::pair<std::string, std::string> SplitRow(const std::string& path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return {".", path};
    return {slash == 0 ? "/" : path.substr(0, slash), path.substr(slash + 1)};
}

// The row's own listing: a folder comes first, then its content; a file or a link alone.
bool ListRow(CompilationRow& row, const struct stat& info, const ScanHooks& hooks) {
    if (!row.folder) {
        (S_ISLNK(info.st_mode) ? row.listing.ListLinks : row.listing.ListFiles).push_back(row.path);
        row.listing.ListTotal = S_ISLNK(info.st_mode) ? 0 : info.st_size;
        return true;
    }
    ShowOrdnerInhalt(row.path, row.listing, hooks);
    // The row's own folder goes first: its parents come before its children.
    auto& folders = row.listing.ListFolders;
    std::string own = row.path;
    folders.emplace_back(std::move(own));
    std::rotate(folders.begin(), folders.end() - 1, folders.end());
    return !row.listing.ListAborted;
}

}  // namespace

CompilationListing ListCompilation(const std::vector<std::string>& paths, const ScanHooks& hooks) {
    CompilationListing result;
    std::set<std::string> names;
    for (const std::string& chosen : paths) {
        CompilationRow row;
        std::error_code error;
        const std::filesystem::path absolute = std::filesystem::absolute(chosen, error);
        row.path = WithoutTrailingSlash(error ? chosen : absolute.lexically_normal().string());
        const auto [parent, name] = SplitRow(row.path);
        row.parent = parent;
        struct stat info {};
        if (lstat(row.path.c_str(), &info) != 0) {
            result.outcome = IsoOutcome::Aborted;
            result.detail = "Nicht gefunden: " + chosen;
            return result;
        }
        if (!names.insert(name).second) {
            result.outcome = IsoOutcome::Aborted;
            result.detail = "Zwei Einträge heißen auf der Disk gleich: " + name;
            return result;
        }
        row.folder = S_ISDIR(info.st_mode);
        if (!ListRow(row, info, hooks)) {
            result.outcome = IsoOutcome::Aborted;
            return result;
        }
        result.totalBytes += row.listing.ListTotal;
        result.fileCount += row.listing.ListFiles.size();
        result.rows.push_back(std::move(row));
    }
    if (result.fileCount == 0)
        result.outcome = IsoOutcome::NoFiles;
    return result;
}

IsoImageResult AddCompilation(Iso_Image& image, const CompilationListing& listing,
                              const std::string& volumeName, const std::string& excludedFile,
                              std::shared_ptr<IsoFileStreamFaults> faults,
                              const IsoJobHooks& hooks) {
    for (const CompilationRow& row : listing.rows) {
        IsoTreeBuilder builder(image, row.parent, faults);
        builder.JoinExisting();
        if (!excludedFile.empty())
            builder.ExcludeOutput(excludedFile);
        IsoImageResult added = builder.AddAll(row.listing, hooks);
        if (added.outcome != IsoOutcome::Done)
            return added;
    }
    const std::string volume = volumeName.empty() ? kDefaultVolumeName : volumeName;
    iso_image_set_volume_id(&image, volume.c_str());
    return {IsoOutcome::Done, "", 0};
}

std::shared_ptr<Iso_Image> NewEmptyIsoImage(const std::string& volumeName) {
    const IsofsLibrary library;
    IsoImage* image = nullptr;
    if (!library.ok() || iso_image_new(volumeName.c_str(), &image) < 0)
        return nullptr;
    return std::shared_ptr<Iso_Image>(image, IsoImageRelease());
}

}  // namespace plattmix::authoring
