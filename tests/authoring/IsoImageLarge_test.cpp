// Files the image must carry in more than one piece, and files that change while they are read.
#include <gtest/gtest.h>
#include <unistd.h>

#include <fcntl.h>

#include "FileContent.h"
#include "IsoImage.h"
#include "IsoImageCheck.h"
#include "LargeTrees.h"
#include "common/ScratchFolder.h"

namespace plattmix::authoring {
namespace {

using namespace isocheck;

// The bytes at offset .. offset + size of a file, read straight from the image through its
// extents.
std::string BytesThroughExtents(const fs::path& image, const IsoTreeEntry& entry, int64_t offset,
                                int64_t size) {
    std::string bytes(static_cast<size_t>(size), '\0');
    const int fd = open(image.c_str(), O_RDONLY | O_CLOEXEC);
    int64_t start = 0;  // the file offset where the current extent begins
    for (const IsoExtent& extent : entry.extents) {
        const int64_t from = std::max(offset, start);
        const int64_t to = std::min(offset + size, start + extent.size);
        if (from < to) {
            const auto count = static_cast<size_t>(to - from);
            EXPECT_EQ(pread(fd, &bytes[static_cast<size_t>(from - offset)], count,
                            static_cast<off_t>(extent.offset + from - start)),
                      static_cast<ssize_t>(count));
        }
        start += extent.size;
    }
    close(fd);
    return bytes;
}

// 5 GiB: ISO level 3 splits the file into extents of less than 4 GiB; the image holds every byte
// (the test writes it, then checks the marked places and a hole between them).
TEST(IsoImageLarge, SparseFileBeyondFourGiB) {
    const fs::path scratch = plattmix::test::ScratchFolder("iso");
    const fs::path image = scratch / "gross.iso";
    treegen::MakeSparseLargeFile(scratch / "quelle");
    const ImageRun run = BuildImage(scratch / "quelle", image);
    fs::remove_all(scratch / "quelle");
    ASSERT_EQ(run.result.outcome, IsoOutcome::Done) << run.result.detail;
    ASSERT_TRUE(run.listing.ListHasLargeFile);
    ExpectProgressComplete(run.progress);
    EXPECT_GT(run.result.imageBytes, treegen::kFiveGiB);

    const IsoTreeReader reader(image.string());
    ASSERT_TRUE(reader.ok()) << reader.error();
    const IsoTreeEntry* file = reader.Find(treegen::kSparseFileName);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->size, treegen::kFiveGiB);
    ASSERT_GE(file->extents.size(), 2u);
    int64_t total = 0;
    for (const IsoExtent& extent : file->extents) {
        EXPECT_LT(extent.size, int64_t{4} << 30);
        total += extent.size;
    }
    EXPECT_EQ(total, treegen::kFiveGiB);
    for (const treegen::Marker& marker : treegen::SparseMarkers(treegen::kFiveGiB)) {
        const std::string expected =
            treegen::ContentAt(treegen::kSparseSeed, static_cast<uint64_t>(marker.offset),
                               static_cast<size_t>(marker.size));
        EXPECT_EQ(BytesThroughExtents(image, *file, marker.offset, marker.size), expected)
            << marker.offset;
    }
    const int64_t hole = (int64_t{4} << 30) - 100;  // across the first extent's end
    EXPECT_EQ(BytesThroughExtents(image, *file, hole, 200), std::string(200, '\0'));

    const IsoTreeReader joliet(image.string(), IsoTreeView::Joliet);
    ASSERT_NE(joliet.Find(std::string(treegen::kSparseFileName) + ";1"), nullptr);
    EXPECT_EQ(joliet.Find(std::string(treegen::kSparseFileName) + ";1")->size, treegen::kFiveGiB);
    fs::remove(image);
}

// A file changed while the image thread reads it. The thread runs at most its buffer (a few MiB)
// ahead of the copy, so at the first chunk it is still inside a 32 MiB file.
TEST(IsoImageLarge, FileChangedWhileItIsReadFails) {
    const fs::path scratch = plattmix::test::ScratchFolder("iso");
    const fs::path big = scratch / "quelle" / "gross.bin";
    const std::vector<std::pair<const char*, std::function<void()>>> changes = {
        {"verlängert", [&] { std::ofstream(big, std::ios::app) << "mehr"; }},
        {"gekürzt", [&] { fs::resize_file(big, 1 << 20); }},
    };
    for (const auto& [name, change] : changes) {
        SCOPED_TRACE(name);
        treegen::WriteContentFile(big, 32 << 20, 7);
        bool changed = false;
        IsoJobHooks hooks;
        hooks.progress = [&](int percent) {
            if (percent > 0 && !changed) {
                changed = true;
                change();
            }
        };
        const ImageRun run = BuildImage(scratch / "quelle", scratch / "bild.iso", "", hooks);
        EXPECT_TRUE(changed);
        EXPECT_EQ(run.result.outcome, IsoOutcome::Failed);
        EXPECT_NE(run.result.detail.find(big.string()), std::string::npos) << run.result.detail;
    }
}

}  // namespace
}  // namespace plattmix::authoring
