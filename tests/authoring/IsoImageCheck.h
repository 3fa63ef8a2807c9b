// Shared by the ISO image tests: building an image of a folder, and both trees (the source on
// disk, the image read back) in one comparable form.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "FolderListing.h"
#include "IsoImage.h"
#include "IsoTreeReader.h"

namespace plattmix::authoring::isocheck {

namespace fs = std::filesystem;

struct Node {
    std::string path;
    IsoEntryKind kind;
    int64_t size;
    std::string target;
    bool operator==(const Node&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Node& node) {
    return out << static_cast<int>(node.kind) << ' ' << node.path << ' ' << node.size << ' '
               << node.target;
}

// Every folder, file and link below root, links not followed, sorted by path.
inline std::vector<Node> SourceTree(const fs::path& root) {
    std::vector<Node> nodes;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        const std::string path = entry.path().lexically_relative(root).string();
        if (entry.is_symlink())
            nodes.push_back({path, IsoEntryKind::Link, 0, fs::read_symlink(entry.path()).string()});
        else if (entry.is_directory())
            nodes.push_back({path, IsoEntryKind::Folder, 0, ""});
        else
            nodes.push_back(
                {path, IsoEntryKind::File, static_cast<int64_t>(entry.file_size()), ""});
    }
    std::sort(nodes.begin(), nodes.end(), [](auto& a, auto& b) { return a.path < b.path; });
    return nodes;
}

inline std::vector<Node> ImageTree(const IsoTreeReader& reader) {
    std::vector<Node> nodes;
    for (const IsoTreeEntry& entry : reader.Entries())
        nodes.push_back({entry.path, entry.kind, entry.size, entry.linkTarget});
    std::sort(nodes.begin(), nodes.end(), [](auto& a, auto& b) { return a.path < b.path; });
    return nodes;
}

inline std::string FileBytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline std::string ImageBytes(const IsoTreeReader& reader, const std::string& path) {
    std::string bytes;
    EXPECT_TRUE(reader.ReadFile(path, [&](const char* data, size_t size) {
        bytes.append(data, size);
        return true;
    })) << path;
    return bytes;
}

// Lists source as the window does and writes its image to output.
struct ImageRun {
    FolderListing listing;
    IsoImageResult result;
    std::vector<int> progress;
};

inline ImageRun BuildImage(const fs::path& source, const fs::path& output,
                           const std::string& volume = "", IsoJobHooks hooks = {}) {
    ImageRun run;
    ShowOrdnerInhalt(source.string(), run.listing, {});
    if (!hooks.progress)
        hooks.progress = [&run](int percent) { run.progress.push_back(percent); };
    run.result = CreateIsoImage({source.string(), volume, output.string()}, run.listing, hooks);
    return run;
}

// Starts at 0, never goes back, ends at exactly 100.
inline void ExpectProgressComplete(const std::vector<int>& progress) {
    ASSERT_FALSE(progress.empty());
    EXPECT_EQ(progress.front(), 0);
    EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));
    EXPECT_EQ(progress.back(), 100);
}

}  // namespace plattmix::authoring::isocheck
