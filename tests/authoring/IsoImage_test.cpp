// Images of the quirk trees read back: the same tree, the same bytes, the right names.
#include "IsoImage.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <set>

#include "IsoImageCheck.h"
#include "QuirkTrees.h"
#include "common/ScratchFolder.h"

namespace plattmix::authoring {
namespace {

using namespace isocheck;
using plattmix::test::ScratchFolder;
using treegen::MadeTree;

TEST(IsoImageRules, FileSystemsToCreate) {
    // ISO 9660 + Joliet unless a large file meets a writer that has UDF.
    EXPECT_EQ(FileSystemsToCreate(kFileSystemsSupported, false), kFsIso9660 | kFsJoliet);
    EXPECT_EQ(FileSystemsToCreate(kFileSystemsSupported, true), kFsIso9660 | kFsJoliet);
    EXPECT_EQ(FileSystemsToCreate(7, false), kFsIso9660 | kFsJoliet);
    EXPECT_EQ(FileSystemsToCreate(7, true), kFsUdf);
}

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
// ISO 9660 hold every folder and file too.
TEST(IsoImage, QuirkTreeComesBackWhole) {
    const fs::path scratch = ScratchFolder("iso");
    const fs::path source = scratch / "quelle";
    const MadeTree made = treegen::MakeAllQuirks(source);
    const fs::path image = scratch / "bild.iso";
    const ImageRun run = BuildImage(source, image);
    ASSERT_EQ(run.result.outcome, IsoOutcome::Done) << run.result.detail;
    EXPECT_EQ(run.result.imageBytes, static_cast<int64_t>(fs::file_size(image)));
    EXPECT_EQ(run.result.imageBytes % 2048, 0);
    ExpectProgressComplete(run.progress);

    const IsoTreeReader reader(image.string());
    ASSERT_TRUE(reader.ok()) << reader.error();
    EXPECT_EQ(ImageTree(reader), SourceTree(source));
    for (const IsoTreeEntry& entry : reader.Entries()) {
        struct stat info {};
        ASSERT_EQ(lstat((source / entry.path).c_str(), &info), 0) << entry.path;
        EXPECT_EQ(entry.mode, info.st_mode & 07777) << entry.path;
        EXPECT_EQ(entry.mtime, info.st_mtime) << entry.path;
        if (entry.kind == IsoEntryKind::File) {
            EXPECT_EQ(ImageBytes(reader, entry.path), FileBytes(source / entry.path)) << entry.path;
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

TEST(IsoVolumeName, GivenOrDefault) {
    const fs::path scratch = ScratchFolder("iso");
    treegen::MakeEmptyFolders(scratch / "quelle");
    ASSERT_EQ(BuildImage(scratch / "quelle", scratch / "a.iso", "Meine Daten").result.outcome,
              IsoOutcome::Done);
    // The source given with a trailing "/" makes the same tree.
    ASSERT_EQ(BuildImage(scratch / "quelle/", scratch / "b.iso").result.outcome, IsoOutcome::Done);
    const IsoTreeReader named((scratch / "a.iso").string());
    const IsoTreeReader unnamed((scratch / "b.iso").string());
    EXPECT_EQ(named.VolumeId(), "Meine Daten");
    EXPECT_EQ(unnamed.VolumeId(), kDefaultVolumeName);
    EXPECT_EQ(ImageTree(named), ImageTree(unnamed));
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

}  // namespace
}  // namespace plattmix::authoring
