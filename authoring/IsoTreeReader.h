// An ISO image read back with libisofs: its volume id and one of its directory trees (Rock Ridge,
// Joliet or plain ISO 9660), with each file's bytes on demand. Tests and benchmarks read image
// files with it, the verify after a burn the tree a drive read back.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

struct Iso_Image;

namespace plattmix::authoring {

enum class IsoTreeView {
    RockRidge,  // the real names, modes and links
    Joliet,     // names as the Joliet records hold them (";1" included)
    Iso9660,    // names as the plain ISO 9660 records hold them (";1" included)
};

enum class IsoEntryKind { Folder, File, Link };

// Where a piece of a file lies in the image file, in bytes.
struct IsoExtent {
    int64_t offset = 0;
    int64_t size = 0;
};

struct IsoTreeEntry {
    std::string path;  // relative to the image's root, "/"-separated
    IsoEntryKind kind = IsoEntryKind::File;
    int64_t size = 0;                // files
    std::string linkTarget;          // links
    unsigned mode = 0;               // permission bits
    int64_t mtime = 0;               // seconds since 1970
    std::vector<IsoExtent> extents;  // files: one, or several from 4 GiB on
};

class IsoTreeReader {
  public:
    explicit IsoTreeReader(const std::string& imagePath, IsoTreeView view = IsoTreeView::RockRidge);
    // The tree of an image libisofs holds already (taking a reference of its own); its files are
    // read from wherever the image reads them.
    explicit IsoTreeReader(Iso_Image& image);
    ~IsoTreeReader();

    IsoTreeReader(const IsoTreeReader&) = delete;
    IsoTreeReader& operator=(const IsoTreeReader&) = delete;

    bool ok() const;
    const std::string& error() const;  // why the image could not be read

    const std::string& VolumeId() const;
    // Depth first, each folder before its content, names in the image's order.
    const std::vector<IsoTreeEntry>& Entries() const;
    // The entry at path, nullptr when there is none.
    const IsoTreeEntry* Find(const std::string& path) const;

    using Sink = std::function<bool(const char* data, size_t size)>;
    // Hands the bytes of the file at path to sink piece by piece. False when path is no file,
    // reading fails, or sink returned false.
    bool ReadFile(const std::string& path, const Sink& sink) const;

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace plattmix::authoring
