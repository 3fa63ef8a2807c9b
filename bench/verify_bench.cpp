// The check after a burn, reading a 1.5 GiB image back, against `cmp` of the same two files. The
// image is 1.5 GiB of the treegen content (no file system: the check compares bytes, whatever
// they are); the "disc" is libburn's stdio: pseudo-drive on a copy of it, which is what burning
// the image there writes (the burn tests show it byte for byte). The program's run is
// VerifyIsoImage on a recorder of that drive: the medium looked at anew, then every block read
// through libburn (burn_read_data) and compared with the image file. cmp reads both files and
// compares them. Each iteration runs both, the program first in one iteration and cmp first in
// the next. Both files stay in the page cache (they were just written, and the machine has the
// memory), so the figures compare the work of reading and comparing, not the disk.
//
// Counters: ours_s and cmp_s are the median seconds of the runs; vs_cmp is our median over cmp's
// (below 1.0: faster) and vs_cmp_fastest the same for the fastest runs; ours_MBps is the image's
// bytes over our median.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "BenchFolder.h"
#include "BenchRuns.h"
#include "BurnService.h"
#include "BurnVerify.h"
#include "FileContent.h"

namespace {

using namespace plattmix;
namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using plattmix::bench::Runs;
using plattmix::bench::Seconds;
using plattmix::bench::Spawn;

constexpr int64_t kImageBytes = int64_t{1536} << 20;

fs::path BenchFolder() {
    return plattmix::bench::BenchFolder("verify");
}

fs::path Image() {
    return BenchFolder() / "abbild.iso";
}

fs::path Disc() {
    return BenchFolder() / "disk.iso";
}

// The image and the disc it was burnt to, made once per run.
void MakeFiles() {
    static const bool made = [] {
        fs::remove_all(BenchFolder());
        fs::create_directories(BenchFolder());
        treegen::WriteContentFile(Image(), kImageBytes, 17);
        fs::copy_file(Image(), Disc());
        return true;
    }();
    (void)made;
}

// The program's check of the disc against the image; seconds, negative when it did not find
// them equal.
double OursOnce(authoring::IBurnService& service) {
    authoring::MediaState why = authoring::MediaState::NoRecorder;
    const auto recorder = service.OpenRecorder("stdio:" + Disc().string(), why);
    if (!recorder)
        return -1;
    std::string status;
    const auto start = Clock::now();
    const authoring::VerifyRun run =
        authoring::VerifyIsoImage(*recorder, Image().string(), {}, status);
    const double taken = Seconds(Clock::now() - start);
    if (run.end != authoring::VerifyEnd::Equal) {
        std::fprintf(stderr, "VerifyIsoImage: %s %s\n", run.where.c_str(), run.detail.c_str());
        return -1;
    }
    return taken;
}

double CmpOnce() {
    const auto start = Clock::now();
    const bool equal = Spawn({"cmp", Image().string(), Disc().string()});
    const double taken = Seconds(Clock::now() - start);
    return equal ? taken : -1;
}

void BM_VerifyImage(benchmark::State& state) {
    MakeFiles();
    const auto service = authoring::MakeLibburnService();
    Runs ours;
    Runs cmp;
    bool cmpFirst = false;
    for (auto _ : state) {
        double cmpSeconds = cmpFirst ? CmpOnce() : 0;
        const double oursSeconds = OursOnce(*service);
        if (!cmpFirst)
            cmpSeconds = CmpOnce();
        cmpFirst = !cmpFirst;
        if (oursSeconds < 0 || cmpSeconds < 0) {
            state.SkipWithError(oursSeconds < 0 ? "the check failed" : "cmp failed");
            return;
        }
        ours.Add(oursSeconds);
        cmp.Add(cmpSeconds);
        state.SetIterationTime(oursSeconds);
    }
    state.counters["ours_s"] = ours.Median();
    state.counters["cmp_s"] = cmp.Median();
    state.counters["vs_cmp"] = ours.Median() / cmp.Median();
    state.counters["vs_cmp_fastest"] = ours.Fastest() / cmp.Fastest();
    state.counters["ours_MBps"] = static_cast<double>(kImageBytes) / 1e6 / ours.Median();
}
BENCHMARK(BM_VerifyImage)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(7);

}  // namespace

int main(int argc, char** argv) {
    return plattmix::bench::RunAndClean(argc, argv, BenchFolder());
}
