// The demo disc must always be there and intact: built when missing, rebuilt when damaged,
// left alone when fine.
#include "DemoDisc.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <functional>

#include "common/ScratchFolder.h"
#include "imagedrive/ImageLoader.h"

namespace plattmix::discgen {
namespace {

using plattmix::test::ScratchFolder;
using plattmix::test::WholeFile;
namespace fs = std::filesystem;

fs::path Ensured(const fs::path& folder) {
    const Result<fs::path> cue = EnsureDisc(DemoDiscSpec(), folder);
    EXPECT_TRUE(cue.ok()) << cue.error;
    return cue.ok() ? *cue.value : fs::path{};
}

// The demo as the image drive loads it: four tracks, fifteen seconds.
void ExpectIntactDemo(const fs::path& cue) {
    const auto disc = scsi::imagedrive::LoadImage(cue.string());
    ASSERT_TRUE(disc.ok()) << disc.Error();
    EXPECT_EQ(disc.Value().tracks.size(), 4u);
    EXPECT_EQ(disc.Value().LeadOut(), 15 * 75);
}

TEST(DemoDisc, IsBuiltWhenMissingLeftAloneWhenIntactAndRebuiltWhenDamaged) {
    const auto folder = ScratchFolder() / "demo";
    const auto bin = folder / "PlattmixDemo.bin";
    const auto cue = folder / "PlattmixDemo.cue";
    EXPECT_EQ(Ensured(folder), cue);
    ExpectIntactDemo(cue);
    const std::string original = WholeFile(bin);
    const auto backdated = fs::last_write_time(bin) - std::chrono::hours(1);
    fs::last_write_time(bin, backdated);
    Ensured(folder);
    EXPECT_EQ(fs::last_write_time(bin), backdated);

    const std::vector<std::function<void()>> damages{
        [&] { fs::resize_file(bin, 2352 * 100); },
        [&] {
            std::fstream f(bin, std::ios::in | std::ios::out | std::ios::binary);
            f.seekp(2352 * 500 + 17);
            f.put('\x5A');
        },
        [&] { fs::remove(bin); },
        [&] { std::ofstream(cue, std::ios::app) << "REM extra\n"; },
        [&] { fs::remove_all(folder); },
    };
    for (size_t i = 0; i < damages.size(); ++i) {
        SCOPED_TRACE(i);
        damages[i]();
        EXPECT_EQ(Ensured(folder), cue);
        EXPECT_TRUE(WholeFile(bin) == original);
        ExpectIntactDemo(cue);
    }
    // No scratch folders are left next to the disc.
    const fs::directory_iterator siblings(folder.parent_path());
    EXPECT_EQ(std::distance(fs::begin(siblings), fs::end(siblings)), 1);
}

TEST(DemoDisc, LivesInTheUsersCacheFolder) {
    const auto root = ScratchFolder();
    const char* oldXdg = std::getenv("XDG_CACHE_HOME");
    const std::string savedXdg = oldXdg != nullptr ? oldXdg : "";
    ::setenv("XDG_CACHE_HOME", (root / "xdg").c_str(), 1);
    const Result<fs::path> cue = DemoDisc();
    ::setenv("XDG_CACHE_HOME", "relative/is/ignored", 1);
    const Result<fs::path> fallback = DemoCacheFolder();
    if (oldXdg != nullptr)
        ::setenv("XDG_CACHE_HOME", savedXdg.c_str(), 1);
    else
        ::unsetenv("XDG_CACHE_HOME");
    ASSERT_TRUE(cue.ok()) << cue.error;
    EXPECT_EQ(*cue.value, root / "xdg" / "plattmix" / "demo" / "PlattmixDemo.cue");
    if (const char* home = std::getenv("HOME"); home != nullptr && home[0] == '/') {
        ASSERT_TRUE(fallback.ok());
        EXPECT_EQ(*fallback.value, fs::path(home) / ".cache" / "plattmix" / "demo");
    }
}

}  // namespace
}  // namespace plattmix::discgen
