#include "modScan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "ScanTree.h"
#include "common/ScratchFolder.h"

namespace plattmix::authoring {
namespace {

namespace fs = std::filesystem;
using test::kGiB;
using test::MakeFile;

class OrdnerGroesseTest : public ::testing::Test {
  protected:
    fs::path root = test::ScratchFolder("authoring");
    ScanState state;
    int escapeQueries = 0;
    int yields = 0;
    ScanHooks counting{[this] { return ++escapeQueries < 0; }, [this] { ++yields; }};

    std::string Scan(std::string path) { return OrdnerGroesse(path, state, counting); }
};

TEST_F(OrdnerGroesseTest, SumsTheTreeWithOrWithoutSlashAndPollsBeforeEachEntry) {
    MakeFile(root / "a", 100);
    MakeFile(root / ".hidden", 7);
    MakeFile(root / "sub" / "b", 2000);
    MakeFile(root / "sub" / "deeper" / "c", 30000);
    fs::create_directories(root / "empty");

    std::string path = root.string();
    EXPECT_EQ(OrdnerGroesse(path, state, counting), "");
    EXPECT_EQ(path, root.string() + "/");
    EXPECT_EQ(state.ScanTotal, 32107);
    EXPECT_EQ(yields, 7);  // the window's turn before each of the 4 files and 3 folders
    EXPECT_GT(escapeQueries, 7);

    EXPECT_EQ(OrdnerGroesse(path, state, {}), "");  // no hooks, path already with its slash
    EXPECT_EQ(state.ScanTotal, 2 * 32107);
}

TEST_F(OrdnerGroesseTest, LeavesOutLinksAndFoldersEndingInDel) {
    const fs::path outside = test::FreshFolder("authoring", "outside");
    MakeFile(outside / "big", 5 * kGiB);
    MakeFile(outside / "behind-link" / "x", 999);
    MakeFile(root / "real" / "f", 10);
    MakeFile(root / "skip\x7f" / "g", 50);
    MakeFile(root / "h\x7f", 3);  // a file with that ending counts
    fs::create_directory_symlink("..", root / "real" / "loop");
    fs::create_symlink(outside / "big", root / "big-link");
    fs::create_directory_symlink(outside / "behind-link", root / "folder-link");
    fs::create_symlink(root / "nowhere", root / "dangling");

    EXPECT_EQ(Scan(root.string()), "");
    EXPECT_EQ(state.ScanTotal, 13);
}

TEST_F(OrdnerGroesseTest, SizesAboveFourGiBFileSizesAndNoAccess) {
    MakeFile(root / "five", 5 * kGiB);
    MakeFile(root / "sub" / "four-and-one", 4 * kGiB + 1);
    EXPECT_EQ(Scan(root.string()), "");
    EXPECT_EQ(state.ScanTotal, 9 * kGiB + 1);
    EXPECT_EQ(DateiGroesse((root / "five").string()), 5 * kGiB);
    EXPECT_EQ(DateiGroesse(root.string()), -1);

    EXPECT_EQ(Scan((root / "missing").string()), "Kein Zugriff");
    EXPECT_EQ(Scan((root / "five").string()), "Kein Zugriff");
    EXPECT_EQ(state.ScanTotal, 9 * kGiB + 1);
}

// The root holds small files and "deep" with two huge (sparse) files; the key goes down in
// "deep" right after its first file was added.
class EscapeTest : public ::testing::Test {
  protected:
    static constexpr int64_t kDeepFile = int64_t{1} << 40;
    fs::path root = test::ScratchFolder("authoring");
    ScanState state;
    int64_t readAfterDeep = 0;  // root files read after "deep"

    void SetUp() override {
        MakeFile(root / "deep" / "d1", kDeepFile);
        MakeFile(root / "deep" / "d2", kDeepFile);
        for (int i = 0; i < 64 && test::ReadOrder(root).back() == "deep"; ++i)
            MakeFile(root / std::to_string(i), int64_t{1} << i % 20);
        const auto order = test::ReadOrder(root);
        for (auto it = std::find(order.begin(), order.end(), "deep") + 1; it != order.end(); ++it)
            readAfterDeep += static_cast<int64_t>(fs::file_size(root / *it));
        ASSERT_GT(readAfterDeep, 0);
    }

    bool InDeep() const { return state.ScanTotal >= kDeepFile; }

    std::string Scan(std::function<bool()> escape) {
        std::string path = root.string();
        return OrdnerGroesse(path, state, {std::move(escape), nullptr});
    }
};

TEST_F(EscapeTest, KeyHeldDownStopsEveryLevelABriefPressOnlyItsOwn) {
    state.ScanTotal = 99;
    EXPECT_EQ(Scan([] { return true; }), "Leertaste");
    EXPECT_EQ(state.ScanTotal, 0);

    bool down = false;
    EXPECT_EQ(Scan([&] { return down = down || InDeep(); }), "Leertaste");
    EXPECT_EQ(state.ScanTotal, 0);

    // A brief press in a deep level lets the outer levels go on.
    int presses = 0;
    EXPECT_EQ(Scan([&] { return presses == 0 && InDeep() && ++presses == 1; }), "");
    EXPECT_EQ(presses, 1);
    EXPECT_EQ(state.ScanTotal, readAfterDeep);  // cleared in "deep", then the rest added
}

}  // namespace
}  // namespace plattmix::authoring
