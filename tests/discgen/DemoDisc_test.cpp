// The demo disc must always be there and intact: built when missing, rebuilt when damaged,
// left alone when fine.
#include "DemoDisc.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <vector>

#include "ReferenceReader.h"
#include "common/ScratchFolder.h"

namespace plattmix::discgen {
namespace {

using plattmix::test::ScratchFolder;

std::filesystem::path Ensured(const std::filesystem::path& folder) {
    const Result<std::filesystem::path> cue = EnsureDisc(DemoDiscSpec(), folder);
    EXPECT_TRUE(cue.ok()) << cue.error;
    return cue.ok() ? *cue.value : std::filesystem::path{};
}

// The demo as the tests' own reader sees it: titles and four tracks of audio.
void ExpectIntactDemo(const std::filesystem::path& cue) {
    const test::RefDisc disc = test::ReadBack(cue);
    EXPECT_EQ(disc.title, "Plattmix Demo");
    EXPECT_EQ(disc.performer, "Trovalis");
    ASSERT_EQ(disc.tracks.size(), 4u);
    EXPECT_EQ(disc.tracks[0].title, "Morgenrot");
    EXPECT_EQ(disc.tracks[3].title, "Abendlied");
    EXPECT_EQ(disc.sessionLeadOuts.back(), 15 * 75);
}

TEST(DemoDisc, IsBuiltWhenMissingAndLeftAloneWhenIntact) {
    const auto folder = ScratchFolder() / "demo";
    const auto cue = Ensured(folder);
    EXPECT_EQ(cue, folder / "PlattmixDemo.cue");
    ExpectIntactDemo(cue);
    const auto bin = folder / "PlattmixDemo.bin";
    const auto written = std::filesystem::last_write_time(bin);
    std::filesystem::last_write_time(bin, written - std::chrono::hours(1));
    Ensured(folder);
    EXPECT_EQ(std::filesystem::last_write_time(bin), written - std::chrono::hours(1));
}

TEST(DemoDisc, IsRebuiltWhenDamaged) {
    const auto folder = ScratchFolder() / "demo";
    const auto bin = folder / "PlattmixDemo.bin";
    const auto cue = folder / "PlattmixDemo.cue";
    const auto damages = std::vector<std::function<void()>>{
        [&] { std::filesystem::resize_file(bin, 2352 * 100); },
        [&] {
            std::fstream f(bin, std::ios::in | std::ios::out | std::ios::binary);
            f.seekp(2352 * 500 + 17);
            f.put('\x5A');
        },
        [&] { std::filesystem::remove(bin); },
        [&] { std::ofstream(cue, std::ios::app) << "REM extra\n"; },
        [&] { std::filesystem::remove_all(folder); },
    };
    Ensured(folder);
    const std::string original = test::RefFileBytes(bin);
    for (size_t i = 0; i < damages.size(); ++i) {
        SCOPED_TRACE(i);
        damages[i]();
        EXPECT_EQ(Ensured(folder), cue);
        EXPECT_TRUE(test::RefFileBytes(bin) == original);
        ExpectIntactDemo(cue);
    }
    // No scratch folders are left next to the disc.
    size_t entries = 0;
    for ([[maybe_unused]] const auto& e :
         std::filesystem::directory_iterator(folder.parent_path())) {
        ++entries;
    }
    EXPECT_EQ(entries, 1u);
}

TEST(DemoDisc, LivesInTheUsersCacheFolder) {
    const auto root = ScratchFolder();
    const char* oldXdg = std::getenv("XDG_CACHE_HOME");
    const std::string savedXdg = oldXdg != nullptr ? oldXdg : "";
    ::setenv("XDG_CACHE_HOME", (root / "xdg").c_str(), 1);
    const Result<std::filesystem::path> cue = DemoDisc();
    ASSERT_TRUE(cue.ok()) << cue.error;
    EXPECT_EQ(*cue.value, root / "xdg" / "plattmix" / "demo" / "PlattmixDemo.cue");
    ExpectIntactDemo(*cue.value);
    ::setenv("XDG_CACHE_HOME", "relative/is/ignored", 1);
    const Result<std::filesystem::path> fallback = DemoCacheFolder();
    if (const char* home = std::getenv("HOME"); home != nullptr && home[0] == '/') {
        ASSERT_TRUE(fallback.ok());
        EXPECT_EQ(*fallback.value, std::filesystem::path(home) / ".cache" / "plattmix" / "demo");
    }
    if (oldXdg != nullptr) {
        ::setenv("XDG_CACHE_HOME", savedXdg.c_str(), 1);
    } else {
        ::unsetenv("XDG_CACHE_HOME");
    }
}

}  // namespace
}  // namespace plattmix::discgen
