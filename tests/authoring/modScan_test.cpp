#include "modScan.h"

#include <gtest/gtest.h>
#include <unistd.h>

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

// Hooks that count how often the walk asks for Escape and yields.
struct CountingHooks {
    int escapeQueries = 0;
    int yields = 0;
    ScanHooks hooks{[this] {
                        ++escapeQueries;
                        return false;
                    },
                    [this] { ++yields; }};
};

class OrdnerGroesseTest : public ::testing::Test {
  protected:
    fs::path root = test::ScratchFolder("authoring");
    ScanState state;
    CountingHooks counting;

    std::string Scan(std::string path) { return OrdnerGroesse(path, state, counting.hooks); }
};

TEST_F(OrdnerGroesseTest, SumsEveryFileBelowTheFolderWithOrWithoutTrailingSlash) {
    MakeFile(root / "a.bin", 100);
    MakeFile(root / "b.bin", 0);
    MakeFile(root / ".hidden", 7);
    MakeFile(root / "sub" / "c", 2000);
    MakeFile(root / "sub" / "deeper" / "d", 30000);
    fs::create_directories(root / "empty");

    std::string path = root.string();
    EXPECT_EQ(OrdnerGroesse(path, state, counting.hooks), "");
    EXPECT_EQ(path, root.string() + "/");
    EXPECT_EQ(state.ScanTotal, 32107);
    // One yield before each of the 5 files and 3 folders; Escape is asked once more per folder
    // (by the folder itself) and once at the start.
    EXPECT_EQ(counting.yields, 8);
    EXPECT_EQ(counting.escapeQueries, 5 + 2 * 3 + 1);

    // Given with its slash, the path stays as it is; the total is added to what is there.
    const std::string withSlash = path;
    EXPECT_EQ(OrdnerGroesse(path, state, counting.hooks), "");
    EXPECT_EQ(path, withSlash);
    EXPECT_EQ(state.ScanTotal, 2 * 32107);
}

TEST_F(OrdnerGroesseTest, LinksAreNeitherFollowedNorCounted) {
    const fs::path outside = test::FreshFolder("authoring", "outside");
    MakeFile(outside / "big", 5 * kGiB);
    MakeFile(outside / "hidden-behind-link" / "x", 999);
    MakeFile(root / "real" / "f", 10);
    fs::create_directory_symlink("..", root / "real" / "loop");
    fs::create_symlink(outside / "big", root / "big-link");
    fs::create_directory_symlink(outside / "hidden-behind-link", root / "folder-link");
    fs::create_symlink(root / "nowhere", root / "dangling");

    EXPECT_EQ(Scan(root.string()), "");
    EXPECT_EQ(state.ScanTotal, 10);
    EXPECT_EQ(counting.yields, 2);  // "real" and "f" only
}

TEST_F(OrdnerGroesseTest, KeepsOutFoldersEndingInDelAndCountsOtherFiles) {
    MakeFile(root / "skip\x7f" / "f", 50);
    MakeFile(root / "g\x7f", 3);  // a file with that ending is counted
    MakeFile(root / "h", 1);
    EXPECT_EQ(Scan(root.string()), "");
    EXPECT_EQ(state.ScanTotal, 4);
}

TEST_F(OrdnerGroesseTest, SumsSizesAboveFourGiB) {
    MakeFile(root / "five", 5 * kGiB);
    MakeFile(root / "sub" / "four-and-one", 4 * kGiB + 1);
    MakeFile(root / "sub" / "low-word-top-bit", 3 * kGiB);
    EXPECT_EQ(Scan(root.string()), "");
    EXPECT_EQ(state.ScanTotal, 12 * kGiB + 1);
}

TEST_F(OrdnerGroesseTest, NoAccessForAMissingFolderOrAFile) {
    state.ScanTotal = 42;
    std::string missing = (root / "missing").string();
    EXPECT_EQ(OrdnerGroesse(missing, state, counting.hooks), "Kein Zugriff");
    EXPECT_EQ(missing, (root / "missing/").string());
    MakeFile(root / "file", 5);
    EXPECT_EQ(Scan((root / "file").string()), "Kein Zugriff");
    EXPECT_EQ(state.ScanTotal, 42);
}

TEST_F(OrdnerGroesseTest, UnreadableSubFolderIsNotCounted) {
    if (geteuid() == 0)
        GTEST_SKIP() << "root reads every folder; run as a user to check this";
    MakeFile(root / "open" / "f", 10);
    MakeFile(root / "closed" / "g", 20);
    fs::permissions(root / "closed", fs::perms::none);
    EXPECT_EQ(Scan(root.string()), "");
    fs::permissions(root / "closed", fs::perms::owner_all);
    EXPECT_EQ(state.ScanTotal, 10);
}

TEST_F(OrdnerGroesseTest, WorksWithoutHooks) {
    MakeFile(root / "sub" / "f", 12);
    std::string path = root.string();
    EXPECT_EQ(OrdnerGroesse(path, state, ScanHooks{}), "");
    EXPECT_EQ(state.ScanTotal, 12);
}

// Escape: the root holds small files and the folder "deep" with two huge (sparse) files. The key
// goes down while the walk is in "deep", right after its first file was added.
class EscapeTest : public ::testing::Test {
  protected:
    static constexpr int64_t kDeepFile = int64_t{1} << 40;
    fs::path root = test::ScratchFolder("authoring");
    ScanState state;
    int64_t rootFilesAfterDeep = 0;
    int pressesSeen = 0;

    void SetUp() override {
        MakeFile(root / "deep" / "d1", kDeepFile);
        MakeFile(root / "deep" / "d2", kDeepFile);
        // Enough root files (named by number) that some are read after "deep".
        for (int i = 0; i < 64 && !DeepHasSuccessor(); ++i)
            MakeFile(root / std::to_string(i), int64_t{1} << i % 20);
        ASSERT_TRUE(DeepHasSuccessor());
        const auto order = test::ReadOrder(root);
        const auto deep = std::find(order.begin(), order.end(), "deep");
        for (auto it = deep + 1; it != order.end(); ++it)
            rootFilesAfterDeep += static_cast<int64_t>(fs::file_size(root / *it));
    }

    bool DeepHasSuccessor() const {
        const auto order = test::ReadOrder(root);
        return !order.empty() && order.back() != "deep";
    }

    bool InDeepFolder() const { return state.ScanTotal >= kDeepFile; }

    std::string Scan(const ScanHooks& hooks) {
        std::string path = root.string();
        return OrdnerGroesse(path, state, hooks);
    }
};

TEST_F(EscapeTest, KeyDownBeforeTheStartReturnsAtOnce) {
    state.ScanTotal = 99;
    int yields = 0;
    EXPECT_EQ(Scan({[] { return true; }, [&] { ++yields; }}), "Leertaste");
    EXPECT_EQ(state.ScanTotal, 0);
    EXPECT_EQ(yields, 0);
}

TEST_F(EscapeTest, KeyHeldDownStopsEveryLevel) {
    bool down = false;
    const ScanHooks hooks{[&] { return down = down || InDeepFolder(); }, nullptr};
    EXPECT_EQ(Scan(hooks), "Leertaste");
    EXPECT_EQ(state.ScanTotal, 0);
}

TEST_F(EscapeTest, BriefPressInADeepLevelLetsOuterLevelsGoOn) {
    const ScanHooks hooks{[&] {
                              const bool press = pressesSeen == 0 && InDeepFolder();
                              pressesSeen += press ? 1 : 0;
                              return press;
                          },
                          nullptr};
    EXPECT_EQ(Scan(hooks), "");
    EXPECT_EQ(pressesSeen, 1);
    // The abort in "deep" cleared the total; the root files read after it were added.
    EXPECT_EQ(state.ScanTotal, rootFilesAfterDeep);
    EXPECT_GT(rootFilesAfterDeep, 0);
}

TEST(DateiGroesseTest, SizeOfAFileOrMinusOneWhenItCannotBeOpened) {
    const fs::path root = test::ScratchFolder("authoring");
    MakeFile(root / "small", 123);
    MakeFile(root / "empty", 0);
    MakeFile(root / "huge", 5 * kGiB + 7);
    EXPECT_EQ(DateiGroesse((root / "small").string()), 123);
    EXPECT_EQ(DateiGroesse((root / "empty").string()), 0);
    EXPECT_EQ(DateiGroesse((root / "huge").string()), 5 * kGiB + 7);
    EXPECT_EQ(DateiGroesse((root / "missing").string()), -1);
    EXPECT_EQ(DateiGroesse(root.string()), -1);
    EXPECT_EQ(DateiGroesse(""), -1);
}

TEST(FindDataGroesseTest, BothWordsAreUnsigned) {
    EXPECT_EQ(FindDataGroesse(0, 0), 0u);
    EXPECT_EQ(FindDataGroesse(0x80000000u, 0), 2147483648u);
    EXPECT_EQ(FindDataGroesse(0x80000000u, 1), 6442450944u);
    EXPECT_EQ(FindDataGroesse(5, 0x80000000u), 0x8000000000000005u);
    EXPECT_EQ(FindDataGroesse(0xFFFFFFFFu, 0xFFFFFFFFu), 0xFFFFFFFFFFFFFFFFu);
}

}  // namespace
}  // namespace plattmix::authoring
