// An ISO image of a large tree (1.5 GiB of mixed file sizes, the treegen "large" fixture), built
// by the program (the listing of ShowOrdnerInhalt, then CreateIsoImage) and by the xorriso
// program (`xorriso -as mkisofs -J -R -o OUT TREE`), and both set against just reading the same
// files (`tar -cf - TREE | cat > /dev/null`). Each iteration runs them one after the other, the
// program first in one iteration and xorriso first in the next, so each pair sees the same
// machine state. The tree is written and flushed to disk before the first iteration and read
// once; before each run the previous image is removed and the kernel's dirty pages are written
// out (sync), so no run pays for the one before.
//
// BM_ImageFile writes the images to the same folder, on the same disk as the tree. The program
// flushes its image to disk (fsync) before it reports the image done; xorriso leaves that to
// the kernel, so its run there is xorriso followed by an fsync of its image: the same work as
// ours. BM_ImageToDevNull sends both images to /dev/null: the image making alone, without the
// file system's cost of taking 1.5 GiB.
//
// Counters: *_s are the median seconds of the runs (ours, xorriso_fsync or xorriso, tar);
// vs_xorriso_fsync (file), vs_xorriso (/dev/null) and vs_tar are our median over theirs (below
// 1.0: faster); the same with _fastest compare the fastest run of each. On a shared or virtual
// machine the runs scatter widely, so the median of 10 is the figure to read. ours_MBps is the
// tree's bytes over our median. Without xorriso the benchmark says so in its label and reports
// the tar ratios only.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "BenchFolder.h"
#include "BenchRuns.h"
#include "FolderListing.h"
#include "IsoImage.h"
#include "LargeTrees.h"

namespace {

using namespace plattmix;
namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using plattmix::bench::Runs;
using plattmix::bench::Seconds;
using plattmix::bench::Spawn;

constexpr int64_t kTreeBytes = int64_t{1536} << 20;
constexpr const char* kDevNull = "/dev/null";

fs::path BenchFolder() {
    return plattmix::bench::BenchFolder("iso");
}

fs::path TreeFolder() {
    return BenchFolder() / "tree";
}

bool XorrisoPresent() {
    static const bool present = Spawn({"xorriso", "-version"});
    return present;
}

// An image file's size, then the file removed; /dev/null is left alone.
int64_t TakeAway(const fs::path& image) {
    if (image == kDevNull)
        return 0;
    std::error_code ignored;
    const auto bytes = static_cast<int64_t>(fs::file_size(image, ignored));
    fs::remove(image, ignored);
    return bytes;
}

// The program's image of the tree, as the ISO page makes it: the listing first, then the image.
// Seconds taken, negative on failure; bytes gets the image's size.
double OursOnce(const fs::path& image, int64_t& bytes) {
    sync();  // nothing of the run before still on its way to the disk
    const auto start = Clock::now();
    authoring::FolderListing listing;
    authoring::ShowOrdnerInhalt(TreeFolder().string(), listing, {});
    const authoring::IsoImageParams params{TreeFolder().string(), "", image.string()};
    const authoring::IsoJobHooks hooks{{}, [](int) {}, [] { return false; }};
    const authoring::IsoImageResult result = authoring::CreateIsoImage(params, listing, hooks);
    const double taken = Seconds(Clock::now() - start);
    bytes = TakeAway(image);
    if (result.outcome != authoring::IsoOutcome::Done) {
        std::fprintf(stderr, "CreateIsoImage: %s\n", result.detail.c_str());
        return -1;
    }
    return taken;
}

// xorriso's image of the same tree with Joliet and Rock Ridge, with synced its image flushed to
// disk afterwards; seconds, negative on failure.
double XorrisoOnce(const fs::path& image, int64_t& bytes, bool synced) {
    sync();  // nothing of the run before still on its way to the disk
    const auto start = Clock::now();
    bool done = Spawn(
        {"xorriso", "-as", "mkisofs", "-J", "-R", "-o", image.string(), TreeFolder().string()});
    if (done && synced) {
        const int fd = open(image.c_str(), O_RDONLY | O_CLOEXEC);
        done = fd >= 0 && fsync(fd) == 0;
        if (fd >= 0)
            close(fd);
    }
    const double taken = Seconds(Clock::now() - start);
    bytes = TakeAway(image);
    return done ? taken : -1;
}

// Every file of the tree read once. GNU tar does not read the files' content when its archive
// is /dev/null, so the archive goes through a pipe to cat, which throws it away.
double TarOnce() {
    sync();  // nothing of the run before still on its way to the disk
    const auto start = Clock::now();
    const bool done =
        Spawn({"sh", "-c", "tar -cf - -C \"$0\" . | cat > /dev/null", TreeFolder().string()});
    const double taken = Seconds(Clock::now() - start);
    return done ? taken : -1;
}

// Writes the tree once per run, flushes it to disk and reads it once; its byte total.
int64_t Tree() {
    static const int64_t bytes = [] {
        fs::remove_all(BenchFolder());
        const int64_t total = treegen::MakeLargeTree(TreeFolder(), kTreeBytes).bytes;
        sync();
        TarOnce();
        return total;
    }();
    return bytes;
}

void Compare(benchmark::State& state, bool toFile) {
    const int64_t treeBytes = Tree();
    const bool xorriso = XorrisoPresent();
    if (!xorriso) {
        std::fprintf(stderr, "xorriso is not installed: only the tar ratio is measured\n");
        state.SetLabel("xorriso not installed; tar ratio only");
    }
    const fs::path oursImage = toFile ? BenchFolder() / "ours.iso" : fs::path(kDevNull);
    const fs::path theirImage = toFile ? BenchFolder() / "xorriso.iso" : fs::path(kDevNull);
    std::map<std::string, Runs> runs;
    int64_t oursBytes = 0, theirBytes = 0;
    bool xorrisoFirst = false;
    std::string failed;
    for (auto _ : state) {
        std::map<std::string, double> seconds;
        const auto runXorriso = [&] {
            seconds[toFile ? "xorriso_fsync" : "xorriso"] =
                XorrisoOnce(theirImage, theirBytes, toFile);
        };
        if (xorriso && xorrisoFirst)
            runXorriso();
        seconds["ours"] = OursOnce(oursImage, oursBytes);
        if (xorriso && !xorrisoFirst)
            runXorriso();
        xorrisoFirst = !xorrisoFirst;
        seconds["tar"] = TarOnce();
        for (const auto& [name, taken] : seconds) {
            if (taken < 0 && failed.empty())
                failed = name + " failed";
            runs[name].Add(taken);
        }
        if (!failed.empty()) {
            state.SkipWithError(failed.c_str());
            break;
        }
        state.SetIterationTime(seconds["ours"]);
    }
    if (state.iterations() == 0 || !failed.empty())
        return;
    const Runs& ours = runs["ours"];
    for (const auto& [name, theirs] : runs) {
        state.counters[name + "_s"] = theirs.Median();
        if (name == "ours")
            continue;
        state.counters["vs_" + name] = ours.Median() / theirs.Median();
        state.counters["vs_" + name + "_fastest"] = ours.Fastest() / theirs.Fastest();
    }
    state.counters["ours_MBps"] = static_cast<double>(treeBytes) / 1e6 / ours.Median();
    if (toFile) {
        state.counters["ours_image_MB"] = static_cast<double>(oursBytes) / 1e6;
        if (xorriso)
            state.counters["xorriso_image_MB"] = static_cast<double>(theirBytes) / 1e6;
    }
}

void BM_ImageFile(benchmark::State& state) {
    Compare(state, true);
}
BENCHMARK(BM_ImageFile)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(10);

void BM_ImageToDevNull(benchmark::State& state) {
    Compare(state, false);
}
BENCHMARK(BM_ImageToDevNull)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(10);

}  // namespace

int main(int argc, char** argv) {
    return plattmix::bench::RunAndClean(argc, argv, BenchFolder());
}
