// Shared by the ISO image tests: building an image of a folder, and both trees (the source on
// disk, the image read back) in one comparable form.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "FolderListing.h"
#include "IsoImage.h"
#include "IsoTreeReader.h"

namespace plattmix::authoring::isocheck {

namespace fs = std::filesystem;

// One entry as "path kind size link-target".
inline std::string Line(const std::string& path, IsoEntryKind kind, int64_t size,
                        const std::string& target = "") {
    return path + ' ' + std::to_string(static_cast<int>(kind)) + ' ' + std::to_string(size) + ' ' +
           target;
}

// Every folder, file and link below root, links not followed, sorted.
inline std::vector<std::string> SourceTree(const fs::path& root) {
    std::vector<std::string> lines;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        const std::string path = entry.path().lexically_relative(root).string();
        if (entry.is_symlink())
            lines.push_back(
                Line(path, IsoEntryKind::Link, 0, fs::read_symlink(entry.path()).string()));
        else if (entry.is_directory())
            lines.push_back(Line(path, IsoEntryKind::Folder, 0));
        else
            lines.push_back(
                Line(path, IsoEntryKind::File, static_cast<int64_t>(entry.file_size())));
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

inline std::vector<std::string> ImageTree(const IsoTreeReader& reader) {
    std::vector<std::string> lines;
    for (const IsoTreeEntry& entry : reader.Entries())
        lines.push_back(Line(entry.path, entry.kind, entry.size, entry.linkTarget));
    std::sort(lines.begin(), lines.end());
    return lines;
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
