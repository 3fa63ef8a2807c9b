#include "DemoDisc.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <system_error>

#include "DiscCheck.h"
#include "DiscWriter.h"

namespace plattmix::discgen {
namespace {

using PathResult = Result<std::filesystem::path>;

TrackSpec DemoTrack(int32_t seconds, std::string title) {
    TrackSpec t;
    t.sectors = seconds * kSectorsPerSecond;
    t.title = std::move(title);
    t.performer = "Trovalis";
    return t;
}

// A sibling of folder no other process or thread picks at the same time.
std::filesystem::path ScratchSibling(const std::filesystem::path& folder, const char* tag) {
    static std::atomic<unsigned> counter{0};
    return folder.parent_path() / (folder.filename().string() + tag + std::to_string(getpid()) +
                                   "-" + std::to_string(++counter));
}

// Puts the finished folder in place of target in one step. The old content, if any, ends up
// in fresh and is removed with it.
std::string SwapIn(const std::filesystem::path& fresh, const std::filesystem::path& target) {
    if (renameat2(AT_FDCWD, fresh.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) {
        return "";
    }
    if (errno == EEXIST &&
        renameat2(AT_FDCWD, fresh.c_str(), AT_FDCWD, target.c_str(), RENAME_EXCHANGE) == 0) {
        return "";
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return "Neue Disc nicht nach " + target.string() + " verschoben: " + std::strerror(errno);
    }
    // File systems without exchange: move the old folder aside first.
    const std::filesystem::path old = ScratchSibling(target, ".old-");
    std::error_code ec;
    std::filesystem::rename(target, old, ec);
    std::filesystem::rename(fresh, target, ec);
    if (ec) {
        return "Neue Disc nicht nach " + target.string() + " verschoben: " + ec.message();
    }
    std::filesystem::remove_all(old, ec);
    return "";
}

PathResult Regenerate(const DiscSpec& spec, const std::filesystem::path& folder) {
    std::error_code ec;
    std::filesystem::create_directories(folder.parent_path(), ec);
    const std::filesystem::path fresh = ScratchSibling(folder, ".tmp-");
    std::filesystem::remove_all(fresh, ec);
    Result<DiscDescription> written = WriteDisc(spec, fresh);
    std::string why = written.ok() ? SwapIn(fresh, folder) : written.error;
    std::filesystem::remove_all(fresh, ec);
    if (!why.empty()) {
        return PathResult::Fail(why);
    }
    return PathResult::Ok(folder / (spec.name + ".cue"));
}

PathResult Ensure(const DiscSpec& spec, std::filesystem::path folder) {
    if (!folder.has_filename()) {
        folder = folder.parent_path();  // "…/demo/" names the folder "demo"
    }
    Result<DiscDescription> expected = DescribeDisc(spec, folder);
    if (!expected.ok()) {
        return PathResult::Fail(expected.error);
    }
    if (CheckDiscFiles(*expected.value).empty()) {
        return PathResult::Ok(expected.value->cuePath);
    }
    return Regenerate(spec, folder);
}

}  // namespace

DiscSpec DemoDiscSpec() {
    DiscSpec d;
    d.name = "PlattmixDemo";
    d.title = "Plattmix Demo";
    d.performer = "Trovalis";
    d.files = {"PlattmixDemo.bin"};
    d.tracks = {DemoTrack(3, "Morgenrot"), DemoTrack(4, "Zweiklang"), DemoTrack(3, "Dreiklang"),
                DemoTrack(5, "Abendlied")};
    return d;
}

PathResult DemoCacheFolder() {
    const char* xdg = std::getenv("XDG_CACHE_HOME");
    if (xdg != nullptr && std::filesystem::path(xdg).is_absolute()) {
        return PathResult::Ok(std::filesystem::path(xdg) / "plattmix" / "demo");
    }
    const char* home = std::getenv("HOME");
    if (home != nullptr && std::filesystem::path(home).is_absolute()) {
        return PathResult::Ok(std::filesystem::path(home) / ".cache" / "plattmix" / "demo");
    }
    return PathResult::Fail("Weder XDG_CACHE_HOME noch HOME nennen einen Cache-Ordner");
}

PathResult DemoDisc() {
    PathResult folder = DemoCacheFolder();
    if (!folder.ok()) {
        return folder;
    }
    return EnsureDisc(DemoDiscSpec(), *folder.value);
}

PathResult EnsureDisc(const DiscSpec& spec, const std::filesystem::path& folder) {
    try {
        return Ensure(spec, folder);
    } catch (const std::exception& e) {
        return PathResult::Fail(std::string("Disc konnte nicht bereitgestellt werden: ") +
                                e.what());
    }
}

}  // namespace plattmix::discgen
