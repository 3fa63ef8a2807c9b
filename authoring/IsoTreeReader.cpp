#include "IsoTreeReader.h"

#include <filesystem>
#include <map>

#include "IsofsLibrary.h"
#include "IsofsOwners.h"

namespace plattmix::authoring {

namespace {

constexpr int64_t kBlockSize = 2048;
constexpr size_t kReadPiece = 65536;

// libisofs nodes are C structs that begin with their IsoNode part.
template <typename T>
T* NodeAs(IsoNode* node) {
    return static_cast<T*>(static_cast<void*>(node));
}

std::string ErrorText(const std::string& what, int code) {
    const std::string message = IsofsLibrary::TakeMessages();
    return what + ": " + (message.empty() ? iso_error_to_msg(code) : message);
}

IsoReadOptsPtr MakeReadOptions(IsoTreeView view) {
    IsoReadOpts* raw = nullptr;
    if (iso_read_opts_new(&raw, 0) < 0)
        return nullptr;
    IsoReadOptsPtr opts(raw);
    iso_read_opts_set_no_iso1999(raw, 1);
    iso_read_opts_set_no_aaip(raw, 1);
    iso_read_opts_set_no_md5(raw, 1);
    iso_read_opts_set_ecma119_map(raw, 0);
    iso_read_opts_set_joliet_map(raw, 0);
    if (view != IsoTreeView::RockRidge)
        iso_read_opts_set_no_rockridge(raw, 1);
    if (view == IsoTreeView::Joliet)
        iso_read_opts_set_preferjoliet(raw, 1);
    if (view == IsoTreeView::Iso9660)
        iso_read_opts_set_no_joliet(raw, 1);
    return opts;
}

std::vector<IsoExtent> ExtentsOf(IsoFile* file) {
    int count = 0;
    iso_file_section* raw = nullptr;
    std::vector<IsoExtent> extents;
    if (iso_file_get_old_image_sections(file, &count, &raw, 0) <= 0 || count <= 0)
        return extents;
    const MallocPtr<iso_file_section> sections(raw);
    for (int i = 0; i < count; ++i)
        extents.push_back(
            {static_cast<int64_t>(raw[i].block) * kBlockSize, static_cast<int64_t>(raw[i].size)});
    return extents;
}

}  // namespace

struct IsoTreeReader::Impl {
    IsofsLibrary library;  // first in, last out
    IsoImagePtr image;
    std::string error;
    std::string volumeId;
    std::vector<IsoTreeEntry> entries;
    std::map<std::string, size_t> index;  // entries by path
    std::map<std::string, IsoFile*> files;

    void Load(const std::string& imagePath, IsoTreeView view);
    void Take(IsoImage* loaded);
    void Walk(IsoDir* folder, const std::string& prefix);
    void Add(IsoNode* node, const std::string& path);
};

void IsoTreeReader::Impl::Load(const std::string& imagePath, IsoTreeView view) {
    if (!library.ok()) {
        error = "libisofs lässt sich nicht starten.";
        return;
    }
    IsoImage* rawImage = nullptr;
    if (const int code = iso_image_new("reader", &rawImage); code < 0) {
        error = ErrorText("iso_image_new", code);
        return;
    }
    image.reset(rawImage);
    IsoDataSource* rawSource = nullptr;
    const std::string absolute = std::filesystem::absolute(imagePath).string();
    if (const int code = iso_data_source_new_from_file(absolute.c_str(), &rawSource); code < 0) {
        error = ErrorText(imagePath, code);
        return;
    }
    const IsoDataSourcePtr source(rawSource);
    const IsoReadOptsPtr opts = MakeReadOptions(view);
    if (!opts) {
        error = "Keine Leseoptionen.";
        return;
    }
    if (const int code = iso_image_import(image.get(), source.get(), opts.get(), nullptr);
        code < 0) {
        error = ErrorText(imagePath, code);
        return;
    }
    Take(image.release());
}

void IsoTreeReader::Impl::Take(IsoImage* loaded) {
    image.reset(loaded);
    const char* volume = iso_image_get_volume_id(loaded);
    volumeId = volume != nullptr ? volume : "";
    Walk(iso_image_get_root(loaded), "");
}

void IsoTreeReader::Impl::Walk(IsoDir* folder, const std::string& prefix) {
    IsoDirIter* rawIter = nullptr;
    if (iso_dir_get_children(folder, &rawIter) < 0)
        return;
    const IsoDirIterPtr iter(rawIter);
    IsoNode* node = nullptr;
    while (iso_dir_iter_next(iter.get(), &node) == 1) {
        const std::string path = prefix + iso_node_get_name(node);
        Add(node, path);
        if (iso_node_get_type(node) == LIBISO_DIR)
            Walk(NodeAs<IsoDir>(node), path + "/");
    }
}

void IsoTreeReader::Impl::Add(IsoNode* node, const std::string& path) {
    IsoTreeEntry entry;
    entry.path = path;
    entry.mode = iso_node_get_permissions(node);
    entry.mtime = iso_node_get_mtime(node);
    switch (iso_node_get_type(node)) {
        case LIBISO_DIR:
            entry.kind = IsoEntryKind::Folder;
            break;
        case LIBISO_FILE: {
            auto* file = NodeAs<IsoFile>(node);
            entry.kind = IsoEntryKind::File;
            entry.size = iso_stream_get_size(iso_file_get_stream(file));
            entry.extents = ExtentsOf(file);
            files[path] = file;
            break;
        }
        case LIBISO_SYMLINK:
            entry.kind = IsoEntryKind::Link;
            entry.linkTarget = iso_symlink_get_dest(NodeAs<IsoSymlink>(node));
            break;
        default:
            return;  // devices, boot catalogs: not written by this program
    }
    index[path] = entries.size();
    entries.push_back(std::move(entry));
}

IsoTreeReader::IsoTreeReader(const std::string& imagePath, IsoTreeView view)
    : impl_(std::make_unique<Impl>()) {
    impl_->Load(imagePath, view);
}

IsoTreeReader::IsoTreeReader(Iso_Image& image) : impl_(std::make_unique<Impl>()) {
    iso_image_ref(&image);
    impl_->Take(&image);
}

IsoTreeReader::~IsoTreeReader() = default;

bool IsoTreeReader::ok() const {
    return impl_->error.empty();
}

const std::string& IsoTreeReader::error() const {
    return impl_->error;
}

const std::string& IsoTreeReader::VolumeId() const {
    return impl_->volumeId;
}

const std::vector<IsoTreeEntry>& IsoTreeReader::Entries() const {
    return impl_->entries;
}

const IsoTreeEntry* IsoTreeReader::Find(const std::string& path) const {
    const auto found = impl_->index.find(path);
    return found == impl_->index.end() ? nullptr : &impl_->entries[found->second];
}

bool IsoTreeReader::ReadFile(const std::string& path, const Sink& sink) const {
    const auto found = impl_->files.find(path);
    if (found == impl_->files.end())
        return false;
    IsoStream* stream = iso_file_get_stream(found->second);
    if (iso_stream_open(stream) < 0)
        return false;
    std::vector<char> piece(kReadPiece);
    bool ok = true;
    for (;;) {
        const int n = iso_stream_read(stream, piece.data(), piece.size());
        if (n <= 0) {
            ok = n == 0;
            break;
        }
        if (!sink(piece.data(), static_cast<size_t>(n))) {
            ok = false;
            break;
        }
    }
    iso_stream_close(stream);
    return ok;
}

}  // namespace plattmix::authoring
