#include "FolderListing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
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
    fs::create_symlink("nowhere", root / "a" / "b" / "dangling");

    EXPECT_EQ(Show(), "6 KB");  // 6234 bytes
    EXPECT_EQ(listing.ListTotal, 6234);
    // The links are listed apart, neither followed nor counted.
    Names links = listing.ListLinks;
    std::sort(links.begin(), links.end());
    EXPECT_EQ(links, (Names{base + "a-link", base + "a/b/dangling", base + "f1-link"}));
    // "a" and "c" come in the order the folder is read; the links are no files or folders.
    const bool aFirst = IndexOf(test::ReadOrder(root), "a") < IndexOf(test::ReadOrder(root), "c");
    const Names a = {base + "a/f2", base + "a/b/f3"}, c = {base + "c/f4"};
    Names files = {base + "f1"};
    for (const Names* part : aFirst ? std::array{&a, &c} : std::array{&c, &a})
        files.insert(files.end(), part->begin(), part->end());
    EXPECT_EQ(listing.ListFiles, files);
    EXPECT_EQ(listing.ListFolders, aFirst ? (Names{base + "a", base + "a/b", base + "c"})
                                          : (Names{base + "c", base + "a", base + "a/b"}));
}

// Escape pressed once stops the whole walk: the levels above ask no more. (That such a listing
// makes no image is the image page's test in the window.)
TEST_F(FolderListingTest, EscapePressedOnceEndsTheListing) {
    MakeFile(root / "a", 10);
    MakeFile(root / "b", 10);
    MakeFile(root / "c" / "d", 10);
    int asked = 0;
    Show({[&asked] { return ++asked == 2; }, nullptr});
    EXPECT_TRUE(listing.ListAborted);
    EXPECT_EQ(asked, 2);
}

}  // namespace
}  // namespace plattmix::authoring
