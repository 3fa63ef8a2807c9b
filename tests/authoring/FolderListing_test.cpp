#include "FolderListing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "ScanTree.h"
#include "common/ScratchFolder.h"

namespace plattmix::authoring {
namespace {

namespace fs = std::filesystem;
using test::MakeFile;
using Names = std::vector<std::string>;

long IndexOf(const Names& names, const std::string& name) {
    const auto it = std::find(names.begin(), names.end(), name);
    return it == names.end() ? -1 : it - names.begin();
}

class FolderListingTest : public ::testing::Test {
  protected:
    fs::path root = test::ScratchFolder("authoring");
    std::string base = root.string() + "/";
    FolderListing listing;

    std::string Show(const ScanHooks& hooks = {}) {
        return ShowOrdnerInhalt(root.string(), listing, hooks, {".", ","});
    }
};

TEST_F(FolderListingTest, FilesOfEachLevelBeforeItsSubFoldersDepthFirst) {
    MakeFile(root / "f1", 1000);
    MakeFile(root / "a" / "f2", 200);
    MakeFile(root / "a" / "b" / "f3", 34);
    MakeFile(root / "c" / "f4", 5000);
    fs::create_directory_symlink(root / "a", root / "a-link");
    fs::create_symlink(root / "f1", root / "f1-link");

    EXPECT_EQ(Show(), "6 KB");  // 6234 bytes
    EXPECT_EQ(listing.ListTotal, 6234);
    const Names& files = listing.ListFiles;
    EXPECT_EQ(std::set<std::string>(files.begin(), files.end()),
              (std::set<std::string>{base + "f1", base + "a/f2", base + "a/b/f3", base + "c/f4"}));
    EXPECT_EQ(files.size(), 4u);
    EXPECT_EQ(IndexOf(files, base + "f1"), 0);
    EXPECT_EQ(IndexOf(files, base + "a/b/f3"), IndexOf(files, base + "a/f2") + 1);

    const Names& folders = listing.ListFolders;
    EXPECT_EQ(std::set<std::string>(folders.begin(), folders.end()),
              (std::set<std::string>{base + "a", base + "a/b", base + "c"}));
    EXPECT_EQ(folders.size(), 3u);
    EXPECT_EQ(IndexOf(folders, base + "a/b"), IndexOf(folders, base + "a") + 1);
}

TEST_F(FolderListingTest, LargeFileFromTwoGiBOnEscapeAndPatterns) {
    MakeFile(root / "big", kLargeFileSize);
    EXPECT_EQ(Show(), "2,00 GB");
    EXPECT_TRUE(listing.ListHasLargeFile);

    MakeFile(root / "big", kLargeFileSize - 1);
    MakeFile(root / "sub" / "small", 1);
    EXPECT_EQ(Show(), "2,00 GB");
    EXPECT_FALSE(listing.ListHasLargeFile);
    EXPECT_EQ(listing.ListTotal, kLargeFileSize);
    EXPECT_EQ(listing.ListFiles.size(), 2u);
    EXPECT_EQ(listing.ListFolders, Names{base + "sub"});

    EXPECT_EQ(Show({[] { return true; }, nullptr}), "0 Byte");  // Escape
    EXPECT_TRUE(listing.ListFiles.empty() && listing.ListFolders.empty());
    ListOrdnerDateien(base, "*.txt", listing, {});
    ListOrdnerDateien(base, "b*", listing, {});
    EXPECT_EQ(listing.ListFiles, Names{base + "big"});
}

}  // namespace
}  // namespace plattmix::authoring
