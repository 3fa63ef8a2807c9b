// Images read back: the quirk trees with the same tree, the same bytes and the right names; files
// the image must carry in more than one piece; files that change while they are read.
#include "IsoImage.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <set>

#include "FileContent.h"
#include "IsoImageCheck.h"
#include "LargeTrees.h"
#include "QuirkTrees.h"
#include "common/ScratchFolder.h"

namespace plattmix::authoring {
namespace {

using namespace isocheck;
using plattmix::test::ScratchFolder;
using treegen::MadeTree;

// The names Joliet records in folder, without the version ";1" of files.
std::vector<std::string> JolietNames(const IsoTreeReader& reader, const std::string& folder) {
    std::vector<std::string> names;
    for (const IsoTreeEntry& entry : reader.Entries()) {
        if (entry.path.rfind(folder, 0) != 0 ||
            entry.path.find('/', folder.size()) != std::string::npos)
            continue;
        std::string name = entry.path.substr(folder.size());
        if (entry.kind == IsoEntryKind::File && name.ends_with(";1"))
            name.resize(name.size() - 2);
        names.push_back(name);
    }
    return names;
}

bool Contains(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// Deep folders, non-ASCII, empty folders, long names, links. Rock Ridge shows the source exactly:
// folders, files with their bytes, modes and times, links with their targets. Joliet and plain
// ISO 9660 hold every folder and file too. The source is given with a trailing "/", the volume
// without a name.
TEST(IsoImage, QuirkTreeComesBackWhole) {
    const fs::path scratch = ScratchFolder("iso");
    const fs::path source = scratch / "quelle";
    const MadeTree made = treegen::MakeAllQuirks(source);
    const fs::path image = scratch / "bild.iso";
    const ImageRun run = BuildImage(source / "", image);
    ASSERT_EQ(run.result.outcome, IsoOutcome::Done) << run.result.detail;
    EXPECT_EQ(run.result.imageBytes, static_cast<int64_t>(fs::file_size(image)));
    ExpectProgressComplete(run.progress);

    const IsoTreeReader reader(image.string());
    ASSERT_TRUE(reader.ok()) << reader.error();
    EXPECT_EQ(reader.VolumeId(), kDefaultVolumeName);
    EXPECT_EQ(ImageTree(reader), SourceTree(source));
    for (const IsoTreeEntry& entry : reader.Entries()) {
        struct stat info {};
        ASSERT_EQ(lstat((source / entry.path).c_str(), &info), 0) << entry.path;
        EXPECT_EQ(entry.mode, info.st_mode & 07777) << entry.path;
        EXPECT_EQ(entry.mtime, info.st_mtime) << entry.path;
        if (entry.kind == IsoEntryKind::File) {
            EXPECT_EQ(ImageBytes(reader, entry.path), test::WholeFile(source / entry.path))
                << entry.path;
        }
    }

    // Joliet leaves the links out; plain ISO 9660 records them as empty files.
    for (const IsoTreeView view : {IsoTreeView::Joliet, IsoTreeView::Iso9660}) {
        const IsoTreeReader other(image.string(), view);
        ASSERT_TRUE(other.ok()) << other.error();
        size_t folders = 0, files = 0;
        for (const IsoTreeEntry& entry : other.Entries()) {
            folders += entry.kind == IsoEntryKind::Folder;
            files += entry.kind == IsoEntryKind::File;
        }
        const size_t links = view == IsoTreeView::Iso9660 ? made.links.size() : 0;
        EXPECT_EQ(folders, made.folders.size()) << static_cast<int>(view);
        EXPECT_EQ(files, made.files.size() + links) << static_cast<int>(view);
    }

    const IsoTreeReader joliet(image.string(), IsoTreeView::Joliet);
    // Up to 103 characters a name stays whole (64 is only Joliet's original limit).
    const treegen::LongNames names = treegen::LongNameSet();
    const std::vector<std::string> lang = JolietNames(joliet, "lang/");
    for (const std::string* whole :
         {&names.len64, &names.len65, &names.len103, &names.twin80a, &names.twin80b})
        EXPECT_TRUE(Contains(lang, *whole)) << *whole;
    // Longer ones are cut, keeping their start and extension; the twins stay two.
    const auto startingWith = [&lang](const std::string& start) {
        return std::count_if(lang.begin(), lang.end(),
                             [&](const std::string& name) { return name.rfind(start, 0) == 0; });
    };
    EXPECT_EQ(startingWith(names.len150.substr(0, 90)), 1);
    EXPECT_EQ(startingWith(names.twin120a.substr(0, 90)), 2);
    for (const std::string& name : lang) {
        EXPECT_LE(name.size(), 104u) << name;
        EXPECT_TRUE(name.ends_with(".txt") || name == names.folder120.substr(0, 103)) << name;
    }
    EXPECT_EQ(std::set<std::string>(lang.begin(), lang.end()).size(), lang.size());
    EXPECT_TRUE(Contains(lang, names.folder120.substr(0, 103)));

    // UTF-16 keeps umlauts, ß, Cyrillic letters and emoji.
    const std::vector<std::string> umlaute = JolietNames(joliet, "umlaute/");
    for (const char* name : {"Größe.txt", "Übermaß äöü ÄÖÜ ß.txt", "Кириллица.txt",
                             "Musik 🎵 und Spaß 😀.txt", "Ordner 📁", "Straße", "папка"})
        EXPECT_TRUE(Contains(umlaute, name)) << name;
    EXPECT_EQ(JolietNames(joliet, "links/"), (std::vector<std::string>{"ordner", "ziel.txt"}));
}

TEST(IsoNoFiles, FoldersAloneWriteNothing) {
    const fs::path scratch = ScratchFolder("iso");
    fs::create_directories(scratch / "quelle" / "a" / "b");
    fs::create_directories(scratch / "quelle" / "c");
    fs::create_symlink("a", scratch / "quelle" / "link");
    const ImageRun run = BuildImage(scratch / "quelle", scratch / "bild.iso");
    EXPECT_EQ(run.result.outcome, IsoOutcome::NoFiles);
    EXPECT_FALSE(fs::exists(scratch / "bild.iso"));
    EXPECT_TRUE(run.progress.empty());
}

// The bytes at offset .. offset + size of a file, read straight from the image through its
// extents.
std::string BytesThroughExtents(const fs::path& image, const IsoTreeEntry& entry, int64_t offset,
                                int64_t size) {
    std::string bytes(static_cast<size_t>(size), '\0');
    std::ifstream in(image, std::ios::binary);
    int64_t start = 0;  // the file offset where the current extent begins
    for (const IsoExtent& extent : entry.extents) {
        const int64_t from = std::max(offset, start);
        const int64_t to = std::min(offset + size, start + extent.size);
        if (from < to) {
            in.seekg(extent.offset + from - start);
            EXPECT_TRUE(in.read(&bytes[static_cast<size_t>(from - offset)], to - from).good());
        }
        start += extent.size;
    }
    return bytes;
}

// 5 GiB: ISO level 3 splits the file into extents of less than 4 GiB; the image holds every byte
// (the test writes it, then checks the marked places and a hole between them).
TEST(IsoImageLarge, SparseFileBeyondFourGiB) {
    const fs::path scratch = ScratchFolder("iso");
    const fs::path image = scratch / "gross.iso";
    treegen::MakeSparseLargeFile(scratch / "quelle");
    const ImageRun run = BuildImage(scratch / "quelle", image);
    fs::remove_all(scratch / "quelle");
    ASSERT_EQ(run.result.outcome, IsoOutcome::Done) << run.result.detail;
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

// A file cut short while the image thread reads it (growing files are the fault and burn tests').
// The thread runs at most its buffer (a few MiB) ahead of the copy, so at the first chunk it is
// still inside a 32 MiB file.
TEST(IsoImageLarge, FileCutShortWhileItIsReadFails) {
    const fs::path scratch = ScratchFolder("iso");
    const fs::path big = scratch / "quelle" / "gross.bin";
    treegen::WriteContentFile(big, 32 << 20, 7);
    bool changed = false;
    IsoJobHooks hooks;
    hooks.progress = [&](int percent) {
        if (percent > 0 && !changed) {
            changed = true;
            fs::resize_file(big, 1 << 20);
        }
    };
    const ImageRun run = BuildImage(scratch / "quelle", scratch / "bild.iso", "", hooks);
    EXPECT_TRUE(changed);
    EXPECT_EQ(run.result.outcome, IsoOutcome::Failed);
    EXPECT_NE(run.result.detail.find(big.string()), std::string::npos) << run.result.detail;
}

}  // namespace
}  // namespace plattmix::authoring
