// The folder-size sum over a tree of 20,000 files, side by side with `du -sb` on the same tree.
// The counter vs_du is our time divided by du's, both measured in the same run (du's time
// includes starting the process).
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "BenchFolder.h"
#include "modScan.h"

extern char** environ;

namespace {

using namespace plattmix;
using Clock = std::chrono::steady_clock;

constexpr int kTopFolders = 20;
constexpr int kSubFolders = 10;
constexpr int kFilesPerFolder = 100;
constexpr int kFiles = kTopFolders * kSubFolders * kFilesPerFolder;

// What the window's key check costs: reading a flag.
bool escapeDown = false;

const authoring::ScanHooks kWindowHooks{[] { return escapeDown; }, [] {}};

std::filesystem::path TreeFolder() {
    return plattmix::bench::BenchFolder("scan");
}

// Most files are empty, every fifth has a few kilobytes (sparse).
int64_t FileSize(int index) {
    return index % 5 == 0 ? (int64_t{index} * 7919) % 65536 : 0;
}

void MakeFile(const std::filesystem::path& path, int64_t size) {
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0 || ftruncate(fd, static_cast<off_t>(size)) != 0)
        std::abort();
    close(fd);
}

// Builds the tree on first use; returns its expected total.
int64_t Tree() {
    static const int64_t total = [] {
        const auto root = TreeFolder();
        std::filesystem::remove_all(root);
        int64_t sum = 0;
        int index = 0;
        for (int top = 0; top < kTopFolders; ++top) {
            for (int sub = 0; sub < kSubFolders; ++sub) {
                const auto folder =
                    root / ("top" + std::to_string(top)) / ("sub" + std::to_string(sub));
                std::filesystem::create_directories(folder);
                for (int file = 0; file < kFilesPerFolder; ++file, ++index) {
                    MakeFile(folder / ("file" + std::to_string(file) + ".dat"), FileSize(index));
                    sum += FileSize(index);
                }
            }
        }
        return sum;
    }();
    return total;
}

// One folder-size sum over the tree; seconds taken.
double ScanOnce() {
    const auto start = Clock::now();
    authoring::ScanState state;
    std::string path = TreeFolder().string();
    const std::string result = authoring::OrdnerGroesse(path, state, kWindowHooks);
    const std::chrono::duration<double> taken = Clock::now() - start;
    if (!result.empty() || state.ScanTotal != Tree())
        std::abort();
    return taken.count();
}

// One `du -sb` over the tree, its output thrown away; seconds taken.
double DuOnce() {
    const std::string path = TreeFolder().string();
    const auto start = Clock::now();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    std::string du = "du";
    std::string bytes = "-sb";
    std::string target = path;
    char* argv[] = {du.data(), bytes.data(), target.data(), nullptr};
    pid_t child = 0;
    int status = 0;
    const int failed = posix_spawnp(&child, "du", &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failed != 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status) ||
        WEXITSTATUS(status) != 0)
        std::abort();
    const std::chrono::duration<double> taken = Clock::now() - start;
    return taken.count();
}

void BM_OrdnerGroesse(benchmark::State& state) {
    Tree();
    for (auto _ : state)
        benchmark::DoNotOptimize(ScanOnce());
    state.counters["files_per_s"] =
        benchmark::Counter(kFiles, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_OrdnerGroesse)->Unit(benchmark::kMillisecond);

void BM_DuSb(benchmark::State& state) {
    Tree();
    for (auto _ : state)
        benchmark::DoNotOptimize(DuOnce());
}
BENCHMARK(BM_DuSb)->Unit(benchmark::kMillisecond);

// Both in turn; the iteration time is ours.
void BM_ScanVersusDu(benchmark::State& state) {
    Tree();
    double ours = 0;
    double theirs = 0;
    for (auto _ : state) {
        const double scan = ScanOnce();
        theirs += DuOnce();
        ours += scan;
        state.SetIterationTime(scan);
    }
    state.counters["vs_du"] = theirs > 0 ? ours / theirs : 0;
    state.counters["du_ms"] = benchmark::Counter(theirs * 1000, benchmark::Counter::kAvgIterations);
}
BENCHMARK(BM_ScanVersusDu)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    return plattmix::bench::RunAndClean(argc, argv, TreeFolder());
}
