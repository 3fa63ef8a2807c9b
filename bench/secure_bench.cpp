// The secure mode on the 74-minute disc through the disc-image drive at 48x, to MP3, with a local
// AccurateRip server. BM_SecureRipKnownAt48x: the server holds the disc's record, so every track
// is proven by its first read; vs_one_read is the wall time over one pure reading of the disc at
// 48x (74 * 60 / 48 s). BM_SecureRipUnknownAt48x: the server does not know the disc, so every
// track is read twice; vs_two_reads is the wall time over two pure readings. 1.0 is the floor;
// what lies above it is the checksums, the comparison and the encoders' tails.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "AccurateRipFetch.h"
#include "AccurateRipFile.h"
#include "AccurateRipIds.h"
#include "BenchFolder.h"
#include "CurlHttpGet.h"
#include "DiscWriter.h"
#include "Fixtures.h"
#include "OutputFormats.h"
#include "RipEncoder.h"
#include "SecureRipJob.h"
#include "common/LocalHttpServer.h"
#include "imagedrive/clsImageDrive.h"

namespace {

using namespace plattmix;
namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kDiscMinutes = 74;
constexpr int kEmulatedSpeed = 48;
constexpr int kMp3 = 0;

fs::path BenchFolder() {
    return plattmix::bench::BenchFolder("secure");
}

const discgen::DiscDescription& Disc() {
    static const discgen::DiscDescription disc = [] {
        auto written = discgen::WriteDisc(discgen::Large(kDiscMinutes), BenchFolder() / "disc");
        if (!written.ok() || !written.value) {
            std::fprintf(stderr, "Testplatte nicht geschrieben: %s\n", written.error.c_str());
            std::abort();
        }
        return *written.value;
    }();
    return disc;
}

// The whole disc ripped in the secure mode; seconds taken. A track not proven ends the program.
double SecureRip(bool known) {
    const auto& disc = Disc();
    test::LocalHttpServer server;
    if (known) {
        const auto response = discgen::AccurateRipResponseOf(disc, 5);
        if (!response.ok())
            std::abort();
        const std::vector<audiocd::AccurateRipResponse> responses{*response.value};
        server.Set("/" + audiocd::AccurateRipRecordPath(discgen::AccurateRipIdsOf(disc)),
                   {200, discgen::MakeAccurateRipFile(responses)});
    }
    scsi::imagedrive::clsImageDrive drive;
    const auto handle = drive.AddDrive(disc.cuePath.string());
    if (!handle.ok())
        std::abort();
    drive.SetReadSpeed(handle.Value(), kEmulatedSpeed);
    const fs::path target = BenchFolder() / "out";
    fs::remove_all(target);
    fs::create_directories(target);
    audiocd::SecureRipParams params;
    params.rip.handle = handle.Value();
    params.rip.targetFolder = target.string() + "/";
    params.rip.namePrefix = "Track";
    params.rip.formatIndex = kMp3;
    for (const auto& track : disc.tracks)
        params.rip.rows.push_back({track.number, true});
    params.accurateRipServer = server.Url();
    params.httpGet = audiocd::CurlHttpGet;
    params.extension = std::string(encode::FormatAt(kMp3).extension);
    const auto start = Clock::now();
    const auto result = audiocd::RunSecureRipJob(drive, params, {}, {},
                                                 encode::MakeRipEncoder(params.rip, std::nullopt));
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    fs::remove_all(target);
    if (!result.allProven)
        std::abort();
    return seconds;
}

void Measure(benchmark::State& state, bool known) {
    Disc();
    double seconds = 0;
    int iterations = 0;
    for (auto _ : state) {
        const double taken = SecureRip(known);
        state.SetIterationTime(taken);
        seconds += taken;
        ++iterations;
    }
    const double oneRead = kDiscMinutes * 60.0 / kEmulatedSpeed;
    state.counters[known ? "vs_one_read" : "vs_two_reads"] =
        seconds / iterations / (known ? oneRead : 2 * oneRead);
}

void BM_SecureRipKnownAt48x(benchmark::State& state) {
    Measure(state, true);
}
BENCHMARK(BM_SecureRipKnownAt48x)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);

void BM_SecureRipUnknownAt48x(benchmark::State& state) {
    Measure(state, false);
}
BENCHMARK(BM_SecureRipUnknownAt48x)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);

}  // namespace

int main(int argc, char** argv) {
    return plattmix::bench::RunAndClean(argc, argv, BenchFolder());  // the disc is about 780 MB
}
