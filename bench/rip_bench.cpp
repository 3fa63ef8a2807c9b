// Ripping a whole 74-minute disc through the disc-image drive into WAV files, the way the
// ripping page's Start command does it: once at an emulated 48x, where the drive sets the pace
// and the ripper must keep up with it, and once with no speed limit, where the ripper's own
// cost shows.
//
// Counters: vs_48x is the wall time over the pure reading time of the disc at 48x
// (74 * 60 / 48 s); 1.0 is the limit. BM_ReadOnlyAt48x sends the same requests without
// writing anything, so the difference between the two is what the ripper itself adds.
// cd_speed is the audio ripped per wall-clock second as a multiple of single-speed CD.
//
// BM_RipEncodeMp3Unlimited rips the disc to MP3 with no speed limit; vs_one_encoder is its wall
// time over the time one encoder takes for the same audio (every track converted in memory,
// one after the other), so below 1.0 is what reading beside encoding and several encoders at
// once gain. BM_RipPeakMemory rips a 40-minute single track to each format in a child process;
// peak_vs_pcm is the child's peak resident memory over the track's PCM size.
#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "BenchFolder.h"
#include "ConvertAudioStream.h"
#include "DiscWriter.h"
#include "Fixtures.h"
#include "RipEncoder.h"
#include "RipJob.h"
#include "RipTrack.h"
#include "TrackBounds.h"
#include "imagedrive/clsImageDrive.h"
#include "modMMC.h"

namespace {

using namespace plattmix;
namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kDiscMinutes = 74;
constexpr int kEmulatedSpeed = 48;
constexpr double kSectorsPerSecond = 75.0;

fs::path BenchFolder() {
    return plattmix::bench::BenchFolder("rip");
}

// A disc written into the bench folder; a disc that cannot be written ends the program.
discgen::DiscDescription WriteOrAbort(const discgen::DiscSpec& spec, const std::string& name) {
    auto written = discgen::WriteDisc(spec, BenchFolder() / name);
    if (!written.ok() || !written.value) {
        std::fprintf(stderr, "Testplatte nicht geschrieben: %s\n", written.error.c_str());
        std::abort();
    }
    return *written.value;
}

// The disc is written once per run and removed by main at the end.
const discgen::DiscDescription& Disc() {
    static const discgen::DiscDescription disc = WriteOrAbort(discgen::Large(kDiscMinutes), "disc");
    return disc;
}

double AudioSeconds(const discgen::DiscDescription& disc) {
    double sectors = 0;
    for (const auto& track : disc.tracks)
        sectors += track.lengthSectors;
    return sectors / kSectorsPerSecond;
}

// Every track to the format at formatIndex (WAV by default) in a fresh folder; seconds taken.
// Any row not done aborts the program.
double RipWholeDisc(int speed, int formatIndex = audiocd::kWavFormatIndex,
                    const discgen::DiscDescription& disc = Disc()) {
    scsi::imagedrive::clsImageDrive drive;
    const auto handle = drive.AddDrive(disc.cuePath.string());
    if (!handle.ok())
        std::abort();
    drive.SetReadSpeed(handle.Value(), speed);
    const fs::path target = BenchFolder() / "wav";
    fs::remove_all(target);
    fs::create_directories(target);

    audiocd::RipJobParams params;
    params.handle = handle.Value();
    params.targetFolder = target.string() + "/";
    params.namePrefix = "Track";
    params.formatIndex = formatIndex;
    for (const auto& track : disc.tracks)
        params.rows.push_back({track.number, true});
    size_t done = 0;
    const auto rowText = [&done](size_t, const std::string& text) {
        if (text.ends_with(audiocd::kTextDone))
            ++done;
    };

    const auto start = Clock::now();
    audiocd::EncodeFn encoder;
    if (formatIndex != audiocd::kWavFormatIndex)
        encoder = encode::MakeRipEncoder(params, std::nullopt);
    audiocd::RunRipJob(drive, params, {}, rowText, encoder);
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    fs::remove_all(target);
    if (done != disc.tracks.size())
        std::abort();
    return seconds;
}

// The drive alone: the same READ CD requests the ripper sends, nothing written. This is the
// floor the ripper at that speed is measured against.
double ReadWholeDisc(int speed) {
    const auto& disc = Disc();
    scsi::imagedrive::clsImageDrive drive;
    const auto handle = drive.AddDrive(disc.cuePath.string());
    if (!handle.ok())
        std::abort();
    drive.SetReadSpeed(handle.Value(), speed);
    std::string name = handle.Value();
    std::vector<uint8_t> buffer(static_cast<size_t>(audiocd::kRipBlockSectors) * 2352);
    const auto start = Clock::now();
    for (const auto& track : disc.tracks) {
        // As far as the ripper goes: one sector short, the last track 150 more.
        const bool last = track.number == disc.tracks.back().number;
        const int32_t end =
            track.startLba + track.lengthSectors - 1 - (last ? audiocd::kLastTrackTrimSectors : 0);
        for (int32_t lba = track.startLba; lba < end; lba += audiocd::kRipBlockSectors) {
            const int32_t blocks = std::min(audiocd::kRipBlockSectors, end - lba);
            if (modMMC::ReadCD(drive, name, static_cast<uint32_t>(lba),
                               static_cast<uint32_t>(blocks), buffer,
                               audiocd::kReadCdAllFields) != 0)
                std::abort();
            benchmark::DoNotOptimize(buffer.data());
        }
    }
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void Report(benchmark::State& state, double seconds, int iterations) {
    const double audio = AudioSeconds(Disc()) * iterations;
    state.counters["cd_speed"] = audio / seconds;
    state.counters["audio_MBps"] = audio * 176400.0 / seconds / 1e6;
}

// Times run once per iteration; at48x adds vs_48x, the time over the pure reading time.
void Measure(benchmark::State& state, const std::function<double()>& run, bool at48x) {
    Disc();
    double seconds = 0;
    int iterations = 0;
    for (auto _ : state) {
        const double taken = run();
        state.SetIterationTime(taken);
        seconds += taken;
        ++iterations;
    }
    if (at48x)
        state.counters["vs_48x"] = seconds / iterations / (kDiscMinutes * 60.0 / kEmulatedSpeed);
    Report(state, seconds, iterations);
}

void BM_RipDiscAt48x(benchmark::State& state) {
    Measure(
        state, [] { return RipWholeDisc(kEmulatedSpeed); }, true);
}
BENCHMARK(BM_RipDiscAt48x)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);

void BM_ReadOnlyAt48x(benchmark::State& state) {
    Measure(
        state, [] { return ReadWholeDisc(kEmulatedSpeed); }, true);
}
BENCHMARK(BM_ReadOnlyAt48x)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);

// Ripping and encoding to MP3 at 48x: the encoder works on each track while the drive reads
// it, and finishes it while the next one is read.
void BM_RipEncodeMp3At48x(benchmark::State& state) {
    Measure(
        state, [] { return RipWholeDisc(kEmulatedSpeed, 0); }, true);
}
BENCHMARK(BM_RipEncodeMp3At48x)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);

// One encoder for the whole disc's audio: each track read into memory (not timed), then
// converted to MP3 on its own.
double EncodeWholeDiscOnce() {
    const auto& disc = Disc();
    scsi::imagedrive::clsImageDrive drive;
    const auto handle = drive.AddDrive(disc.cuePath.string());
    if (!handle.ok())
        std::abort();
    const fs::path target = BenchFolder() / "one";
    fs::create_directories(target);
    double seconds = 0;
    for (const auto& track : disc.tracks) {
        const auto image = audiocd::RipTrackToMemory(drive, handle.Value(),
                                                     static_cast<int16_t>(track.number), {});
        if (!image)
            std::abort();
        const auto start = Clock::now();
        if (!encode::ConvertAudioStream(*image, "audio/wav", (target / "T").string(), 0, {}, {}))
            std::abort();
        seconds += std::chrono::duration<double>(Clock::now() - start).count();
    }
    fs::remove_all(target);
    return seconds;
}

void BM_RipEncodeMp3Unlimited(benchmark::State& state) {
    Disc();
    double seconds = 0;
    int iterations = 0;
    for (auto _ : state) {
        const double taken = RipWholeDisc(0, 0);
        state.SetIterationTime(taken);
        seconds += taken;
        ++iterations;
    }
    state.counters["vs_one_encoder"] = seconds / iterations / EncodeWholeDiscOnce();
    Report(state, seconds, iterations);
}
BENCHMARK(BM_RipEncodeMp3Unlimited)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);

constexpr int kLongTrackMinutes = 40;

// One track of 40 minutes, written once per run.
const discgen::DiscDescription& LongTrackDisc() {
    static const discgen::DiscDescription disc = [] {
        discgen::DiscSpec spec = discgen::Large(kLongTrackMinutes);
        spec.tracks.resize(1);
        spec.tracks[0].sectors = kLongTrackMinutes * 60 * 75;
        return WriteOrAbort(spec, "long");
    }();
    return disc;
}

// The long track ripped to the format in a child process; its peak resident bytes.
double ChildPeakBytes(int formatIndex) {
    const auto& disc = LongTrackDisc();
    const pid_t child = fork();
    if (child < 0)
        std::abort();
    if (child == 0) {
        RipWholeDisc(0, formatIndex, disc);
        _exit(0);
    }
    int status = 0;
    rusage usage{};
    if (wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        std::abort();
    return static_cast<double>(usage.ru_maxrss) * 1024.0;
}

void BM_RipPeakMemory(benchmark::State& state) {
    const auto formatIndex = static_cast<int>(state.range(0));
    double peak = 0;
    for (auto _ : state)
        peak = ChildPeakBytes(formatIndex);
    const double pcm = kLongTrackMinutes * 60.0 * 176400.0;
    state.counters["peak_MB"] = peak / 1e6;
    state.counters["peak_vs_pcm"] = peak / pcm;
}
BENCHMARK(BM_RipPeakMemory)->DenseRange(0, 6)->Iterations(1)->Unit(benchmark::kSecond);

void BM_RipDiscUnlimited(benchmark::State& state) {
    Measure(
        state, [] { return RipWholeDisc(0); }, false);
}
BENCHMARK(BM_RipDiscUnlimited)->Iterations(3)->UseManualTime()->Unit(benchmark::kSecond);

}  // namespace

int main(int argc, char** argv) {
    return plattmix::bench::RunAndClean(argc, argv, BenchFolder());  // the disc is about 780 MB
}
