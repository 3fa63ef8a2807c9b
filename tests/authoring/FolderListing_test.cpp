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

const NumberFormat kGerman{".", ","};

long IndexOf(const std::vector<std::string>& names, const std::string& name) {
    const auto it = std::find(names.begin(), names.end(), name);
    return it == names.end() ? -1 : it - names.begin();
}

class FolderListingTest : public ::testing::Test {
  protected:
    fs::path root = test::ScratchFolder("authoring");
    std::string base = root.string() + "/";
    FolderListing listing;

    std::string Show(const ScanHooks& hooks = {}) {
        return ShowOrdnerInhalt(root.string(), listing, hooks, kGerman);
    }
};

TEST_F(FolderListingTest, FilesOfEachLevelComeBeforeItsSubFoldersDepthFirst) {
    MakeFile(root / "f1", 1000);
    MakeFile(root / "a" / "f2", 200);
    MakeFile(root / "a" / "b" / "f3", 30);
    MakeFile(root / "a" / "b" / "f4", 4);
    MakeFile(root / "c" / "f5", 5000);
    fs::create_directory_symlink(root / "a", root / "a-link");
    fs::create_symlink(root / "f1", root / "f1-link");

    EXPECT_EQ(Show(), "6 KB");  // 6234 bytes
    EXPECT_EQ(listing.ListTotal, 6234);
    EXPECT_FALSE(listing.ListHasLargeFile);

    const std::set<std::string> files(listing.ListFiles.begin(), listing.ListFiles.end());
    EXPECT_EQ(files, (std::set<std::string>{base + "f1", base + "a/f2", base + "a/b/f3",
                                            base + "a/b/f4", base + "c/f5"}));
    EXPECT_EQ(listing.ListFiles.size(), 5u);
    EXPECT_EQ(IndexOf(listing.ListFiles, base + "f1"), 0);
    EXPECT_LT(IndexOf(listing.ListFiles, base + "a/f2"),
              IndexOf(listing.ListFiles, base + "a/b/f3"));

    const std::set<std::string> folders(listing.ListFolders.begin(), listing.ListFolders.end());
    EXPECT_EQ(folders, (std::set<std::string>{base + "a", base + "a/b", base + "c"}));
    EXPECT_EQ(listing.ListFolders.size(), 3u);
    EXPECT_EQ(IndexOf(listing.ListFolders, base + "a/b"),
              IndexOf(listing.ListFolders, base + "a") + 1);
}

TEST_F(FolderListingTest, LargeFileFromTwoGiBOnAndANewListingStartsEmpty) {
    MakeFile(root / "big", kLargeFileSize);
    EXPECT_EQ(Show(), "2,00 GB");
    EXPECT_TRUE(listing.ListHasLargeFile);

    MakeFile(root / "big", kLargeFileSize - 1);
    MakeFile(root / "sub" / "small", 1);
    EXPECT_EQ(Show(), "2,00 GB");
    EXPECT_FALSE(listing.ListHasLargeFile);
    EXPECT_EQ(listing.ListTotal, kLargeFileSize);
    EXPECT_EQ(listing.ListFiles.size(), 2u);
    EXPECT_EQ(listing.ListFolders, std::vector<std::string>{base + "sub"});
}

TEST_F(FolderListingTest, EscapeStopsTheListing) {
    MakeFile(root / "f", 10);
    MakeFile(root / "sub" / "g", 20);
    int yields = 0;
    EXPECT_EQ(Show({[] { return true; }, [&] { ++yields; }}), "0 Byte");
    EXPECT_TRUE(listing.ListFiles.empty());
    EXPECT_TRUE(listing.ListFolders.empty());
    EXPECT_EQ(yields, 0);
}

TEST_F(FolderListingTest, WorkersTakeAPatternAndAddToWhatIsThere) {
    MakeFile(root / "a.txt", 1);
    MakeFile(root / "b.iso", 2);
    MakeFile(root / "c", 4);
    listing.ListTotal = 100;
    ListOrdnerDateien(base, "*.txt", listing, {});
    EXPECT_EQ(listing.ListFiles, std::vector<std::string>{base + "a.txt"});
    EXPECT_EQ(listing.ListTotal, 101);
    ListOrdnerDateien(root.string(), "*.*", listing, {});
    EXPECT_EQ(listing.ListFiles.size(), 4u);
    EXPECT_EQ(listing.ListTotal, 108);

    ListOrdnerDateien((root / "missing").string(), "*.*", listing, {});
    ListUnterordner((root / "missing").string(), "*.*", listing, {});
    EXPECT_EQ(listing.ListFiles.size(), 4u);
    EXPECT_TRUE(listing.ListFolders.empty());
}

}  // namespace
}  // namespace plattmix::authoring
