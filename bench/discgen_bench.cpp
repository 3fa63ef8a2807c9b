// Throughput of the test-disc generator. The counter cd_speed is seconds of generated audio per
// wall-clock second; when it stays below kMinimumCdSpeed the program says so and exits with 1,
// so a slow generator is noticed before benchmarks of other parts feed on its large images.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <vector>

#include "AudioSynth.h"
#include "BenchFolder.h"
#include "Crc32.h"
#include "DiscWriter.h"
#include "Fixtures.h"

namespace {

using namespace plattmix::discgen;
using plattmix::audiocd::Crc32;

constexpr double kMinimumCdSpeed = 100.0;

std::filesystem::path BenchFolder() {
    return plattmix::bench::BenchFolder("discgen");
}

double AudioSeconds(const DiscDescription& disc) {
    return static_cast<double>(disc.leadOutLba) / kSectorsPerSecond;
}

// cd_speed: seconds of audio per wall second over the whole run.
void ReportSpeed(benchmark::State& state, double audioSeconds) {
    state.counters["cd_speed"] = benchmark::Counter(audioSeconds, benchmark::Counter::kIsRate);
    state.counters["audio_s"] = audioSeconds / static_cast<double>(state.iterations());
}

template <typename Generate>
void RunDisc(benchmark::State& state, Generate generate) {
    const DiscSpec spec = Large(static_cast<int>(state.range(0)));
    double audioSeconds = 0;
    double bytes = 0;
    for (auto _ : state) {
        const Result<DiscDescription> disc = generate(spec);
        if (!disc.ok()) {
            state.SkipWithError(disc.error.c_str());
            return;
        }
        audioSeconds += AudioSeconds(*disc.value);
        bytes += static_cast<double>(disc.value->files[0].bytes);
    }
    ReportSpeed(state, audioSeconds);
    state.SetBytesProcessed(static_cast<int64_t>(bytes));
}

// Writing a Large disc to files: synthesis, checksums and file output together.
void BM_WriteLargeDisc(benchmark::State& state) {
    const std::filesystem::path folder = BenchFolder();
    RunDisc(state, [&](const DiscSpec& spec) { return WriteDisc(spec, folder); });
    std::error_code ec;
    std::filesystem::remove_all(folder, ec);
}

// The same without file output: what checking a cached disc costs.
void BM_DescribeLargeDisc(benchmark::State& state) {
    RunDisc(state, [](const DiscSpec& spec) { return DescribeDisc(spec, BenchFolder()); });
}

void BM_SynthesizeAudio(benchmark::State& state) {
    AudioSynth synth(1, AudioSynth::Voice::Chord, 0);
    std::vector<uint8_t> sector(kAudioSectorBytes);
    for (auto _ : state) {
        synth.FillSector(std::span<uint8_t, kAudioSectorBytes>(sector.data(), sector.size()));
        benchmark::DoNotOptimize(sector.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * kAudioSectorBytes);
}

void BM_Crc32(benchmark::State& state) {
    const std::vector<uint8_t> data(1 << 20, 0x5A);
    for (auto _ : state) {
        benchmark::DoNotOptimize(Crc32::Of(data));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * (1 << 20));
}

// The console report, plus a note and a failing exit code when a cd_speed is below the limit.
class SpeedLimitReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            const auto it = run.counters.find("cd_speed");
            if (it != run.counters.end() && it->second.value < kMinimumCdSpeed) {
                GetErrorStream() << run.benchmark_name() << ": cd_speed " << it->second.value
                                 << " is below the limit of " << kMinimumCdSpeed << "\n";
                belowLimit_ = true;
            }
        }
    }
    bool BelowLimit() const { return belowLimit_; }

  private:
    bool belowLimit_ = false;
};

}  // namespace

BENCHMARK(BM_WriteLargeDisc)->Arg(10)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_DescribeLargeDisc)->Arg(10)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_SynthesizeAudio);
BENCHMARK(BM_Crc32);

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    SpeedLimitReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return reporter.BelowLimit() ? 1 : 0;
}
