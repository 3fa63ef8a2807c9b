#include "IsoTreeBuilder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <vector>

#include "IsoFileStream.h"

namespace plattmix::authoring {

namespace {

IsoNode* AsNode(void* node) {
    return static_cast<IsoNode*>(node);
}

// What libisofs takes from a local file when it adds one itself.
void ApplyStat(IsoNode* node, const struct stat& info) {
    iso_node_set_permissions(node, info.st_mode & 07777);
    iso_node_set_uid(node, info.st_uid);
    iso_node_set_gid(node, info.st_gid);
    iso_node_set_atime(node, info.st_atime);
    iso_node_set_mtime(node, info.st_mtime);
    iso_node_set_ctime(node, info.st_ctime);
}

std::string ErrnoText(const std::string& what, const std::string& path, int error) {
    return what + path + " (" + std::strerror(error) + ")";
}

std::string RefusedText(const std::string& path, int code) {
    return "libisofs nimmt " + path + " nicht an: " + iso_error_to_msg(code);
}

// The target of a symbolic link, unchanged; nullopt with errno set when it cannot be read.
std::optional<std::string> LinkTarget(const std::string& path) {
    std::vector<char> buffer(256);
    for (;;) {
        const ssize_t n = readlink(path.c_str(), buffer.data(), buffer.size());
        if (n < 0)
            return std::nullopt;
        if (static_cast<size_t>(n) < buffer.size())
            return std::string(buffer.data(), static_cast<size_t>(n));
        buffer.resize(buffer.size() * 2);
    }
}

bool Cancelled(const IsoJobHooks& hooks) {
    return (hooks.cancelled && hooks.cancelled()) || EscapePressed(hooks.scan);
}

}  // namespace

IsoTreeBuilder::IsoTreeBuilder(IsoImage& image, const std::string& sourceFolder,
                               std::shared_ptr<IsoFileStreamFaults> faults)
    : image_(image), base_(sourceFolder), faults_(std::move(faults)) {
    if (base_.empty() || base_.back() != '/')
        base_ += '/';
}

void IsoTreeBuilder::ExcludeOutput(const std::string& outputPath) {
    struct stat info {};
    if (stat(outputPath.c_str(), &info) == 0)
        output_ = std::pair{info.st_dev, info.st_ino};
}

IsoImageResult IsoTreeBuilder::AddAll(const FolderListing& listing, const IsoJobHooks& hooks) {
    IsoImageResult result;
    result.outcome = IsoOutcome::Aborted;
    result.detail = AddRoot();
    if (!result.detail.empty())
        return result;
    using AddFn = std::string (IsoTreeBuilder::*)(const std::string&);
    const std::pair<const std::vector<std::string>*, AddFn> parts[] = {
        {&listing.ListFolders, &IsoTreeBuilder::AddFolder},
        {&listing.ListFiles, &IsoTreeBuilder::AddFile},
        {&listing.ListLinks, &IsoTreeBuilder::AddLink},
    };
    for (const auto& [paths, add] : parts) {
        for (const std::string& path : *paths) {
            if (Cancelled(hooks))
                return result;
            result.detail = (this->*add)(path);
            if (!result.detail.empty())
                return result;
            YieldToWindow(hooks.scan);
        }
    }
    result.outcome = IsoOutcome::Done;
    return result;
}

std::string IsoTreeBuilder::AddRoot() {
    IsoDir* root = iso_image_get_root(&image_);
    struct stat info {};
    if (stat(base_.c_str(), &info) != 0)
        return ErrnoText("Der Quellordner kann nicht gelesen werden: ", base_, errno);
    if (!join_)
        ApplyStat(AsNode(root), info);
    folders_[""] = root;
    return {};
}

std::string IsoTreeBuilder::AddFolder(const std::string& path) {
    std::string error;
    const auto place = PlaceOf(path, error);
    if (!place)
        return error;
    struct stat info {};
    if (lstat(path.c_str(), &info) != 0)
        return ErrnoText("Der Ordner kann nicht hinzugefügt werden: ", path, errno);
    if (!S_ISDIR(info.st_mode))
        return "Das ist kein Ordner mehr: " + path;
    IsoDir* folder = MakeRoom(*place, true);
    if (folder == nullptr) {
        const int added =
            iso_image_add_new_dir(&image_, place->folder, place->name.c_str(), &folder);
        if (added < 0)
            return RefusedText(path, added);
    }
    ApplyStat(AsNode(folder), info);
    folders_[path.substr(base_.size())] = folder;
    return {};
}

std::string IsoTreeBuilder::AddFile(const std::string& path) {
    std::string error;
    const auto place = PlaceOf(path, error);
    if (!place)
        return error;
    // Opening proves the file is there and readable; O_NONBLOCK keeps a FIFO from waiting.
    const int fd = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return ErrnoText("Die Datei kann nicht hinzugefügt werden: ", path, errno);
    struct stat info {};
    const bool statted = fstat(fd, &info) == 0;
    const int statError = errno;
    close(fd);
    if (!statted)
        return ErrnoText("Die Datei kann nicht hinzugefügt werden: ", path, statError);
    if (!S_ISREG(info.st_mode))
        return "Keine reguläre Datei: " + path;
    if (output_ && info.st_dev == output_->first && info.st_ino == output_->second)
        return "Die Zieldatei liegt im Quellordner: " + path;
    IsoStreamPtr stream = NewIsoFileStream(path, info, faults_);
    if (!stream)
        return "Zu wenig Speicher für " + path;
    MakeRoom(*place, false);
    IsoFile* file = nullptr;
    const int added =
        iso_image_add_new_file(&image_, place->folder, place->name.c_str(), stream.get(), &file);
    if (added < 0)
        return RefusedText(path, added);
    stream.release();  // the file node owns the stream now
    ApplyStat(AsNode(file), info);
    return {};
}

std::string IsoTreeBuilder::AddLink(const std::string& path) {
    std::string error;
    const auto place = PlaceOf(path, error);
    if (!place)
        return error;
    struct stat info {};
    if (lstat(path.c_str(), &info) != 0)
        return ErrnoText("Die Verknüpfung kann nicht hinzugefügt werden: ", path, errno);
    if (!S_ISLNK(info.st_mode))
        return "Das ist keine Verknüpfung mehr: " + path;
    const auto target = LinkTarget(path);
    if (!target)
        return ErrnoText("Die Verknüpfung kann nicht gelesen werden: ", path, errno);
    MakeRoom(*place, false);
    IsoSymlink* link = nullptr;
    const int added = iso_image_add_new_symlink(&image_, place->folder, place->name.c_str(),
                                                target->c_str(), &link);
    if (added < 0)
        return RefusedText(path, added);
    ApplyStat(AsNode(link), info);
    return {};
}

IsoDir* IsoTreeBuilder::MakeRoom(const Place& place, bool wantFolder) {
    IsoNode* node = nullptr;
    if (!join_ ||
        iso_image_dir_get_node(&image_, place.folder, place.name.c_str(), &node, 0) != 1 ||
        node == nullptr)
        return nullptr;
    if (wantFolder && iso_node_get_type(node) == LIBISO_DIR)
        return static_cast<IsoDir*>(static_cast<void*>(node));
    iso_node_remove_tree(node, nullptr);
    return nullptr;
}

std::optional<IsoTreeBuilder::Place> IsoTreeBuilder::PlaceOf(const std::string& path,
                                                             std::string& error) const {
    if (path.size() <= base_.size() || path.compare(0, base_.size(), base_) != 0) {
        error = "Liegt nicht im Quellordner " + base_ + ": " + path;
        return std::nullopt;
    }
    const std::string relative = path.substr(base_.size());
    const size_t slash = relative.rfind('/');
    const std::string parent = slash == std::string::npos ? "" : relative.substr(0, slash);
    const auto found = folders_.find(parent);
    if (found == folders_.end()) {
        error = "Der Ordner fehlt im Image: " + base_ + parent;
        return std::nullopt;
    }
    return Place{found->second, relative.substr(slash == std::string::npos ? 0 : slash + 1)};
}

}  // namespace plattmix::authoring
