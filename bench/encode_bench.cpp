// Encoding three minutes of generated music to each output format, against the ffmpeg program
// encoding the same WAV file with the same encoder settings (codec, rate, channels, bit rate,
// sample format, declared bits), run as a child process. Both run in every iteration, one after
// the other, so the pair sees the same machine state.
//
// Counters: ours_s and ffmpeg_s are the seconds of one encode each; vs_ffmpeg is ours over
// ffmpeg's (below 1.0: faster than the program). The ffmpeg time includes its start-up and
// reading the file; ours starts from the image in memory, as the ripping hands it over.
// realtime is the audio's length over our encode time.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <vector>

#include "AudioSynth.h"
#include "BenchFolder.h"
#include "ConvertAudioStream.h"
#include "OutputFormats.h"
#include "WavHeader.h"

namespace {

using namespace plattmix;
namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int64_t kSectors = 75 * 60 * 3;  // three minutes
constexpr int64_t kSectorBytes = 2352;

fs::path BenchFolder() {
    return plattmix::bench::BenchFolder("encode");
}

// The image as the ripping makes it, and the same bytes as a file for ffmpeg.
const std::vector<uint8_t>& Image() {
    static const std::vector<uint8_t> image = [] {
        const auto header = audiocd::WavHeader(kSectors * kSectorBytes);
        std::vector<uint8_t> bytes(header->begin(), header->end());
        bytes.resize(header->size() + static_cast<size_t>(kSectors * kSectorBytes));
        discgen::AudioSynth synth(1, discgen::AudioSynth::Voice::Chord, 7);
        for (int64_t s = 0; s < kSectors; ++s) {
            auto* at = bytes.data() + header->size() + static_cast<size_t>(s * kSectorBytes);
            synth.FillSector(std::span<uint8_t, 2352>(at, 2352));
        }
        fs::create_directories(BenchFolder());
        std::ofstream(BenchFolder() / "source.wav", std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
        return bytes;
    }();
    return image;
}

// The ffmpeg command line with the row's settings.
std::string FfmpegCommand(const encode::OutputFormat& format, const fs::path& target) {
    std::string command = "ffmpeg -nostdin -hide_banner -loglevel error -y -i '" +
                          (BenchFolder() / "source.wav").string() + "' -map_metadata -1";
    command += " -c:a " + std::string(format.codec);
    command += " -ar " + std::to_string(format.sampleRate);
    command += " -ac " + std::to_string(format.channels);
    command += " -sample_fmt " + std::string(format.sampleFormat);
    if (format.bitRate > 0)
        command += " -b:a " + std::to_string(format.bitRate);
    if (format.bitsPerSample > 0)
        command += " -bits_per_raw_sample " + std::to_string(format.bitsPerSample);
    if (format.profile == encode::kAacLowComplexity)
        command += " -profile:a aac_low";
    command += " -f " + std::string(format.muxer) + " '" + target.string() + "'";
    return command;
}

double Seconds(Clock::duration elapsed) {
    return std::chrono::duration<double>(elapsed).count();
}

void BM_EncodeVsFfmpeg(benchmark::State& state) {
    const int index = static_cast<int>(state.range(0));
    const encode::OutputFormat& format = encode::kOutputFormats[static_cast<size_t>(index)];
    state.SetLabel(std::string(format.cliName));
    const std::vector<uint8_t>& image = Image();
    const std::string ours = (BenchFolder() / "ours").string();
    const fs::path theirs = BenchFolder() / ("ffmpeg" + std::string(format.extension));
    const std::string command = FfmpegCommand(format, theirs);

    double oursTotal = 0;
    double ffmpegTotal = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        const bool written = encode::ConvertAudioStream(image, "audio/wav", ours, index, {}, {});
        const double oursSeconds = Seconds(Clock::now() - start);
        const auto childStart = Clock::now();
        const int status = std::system(command.c_str());
        const double ffmpegSeconds = Seconds(Clock::now() - childStart);
        if (!written || status != 0) {
            state.SkipWithError(written ? "ffmpeg failed" : "conversion failed");
            break;
        }
        state.SetIterationTime(oursSeconds);
        oursTotal += oursSeconds;
        ffmpegTotal += ffmpegSeconds;
    }
    const auto runs = static_cast<double>(state.iterations());
    if (runs > 0 && ffmpegTotal > 0) {
        state.counters["ours_s"] = oursTotal / runs;
        state.counters["ffmpeg_s"] = ffmpegTotal / runs;
        state.counters["vs_ffmpeg"] = oursTotal / ffmpegTotal;
        state.counters["realtime"] = static_cast<double>(kSectors) / 75.0 / (oursTotal / runs);
    }
}
BENCHMARK(BM_EncodeVsFfmpeg)
    ->DenseRange(0, 5)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);

}  // namespace

int main(int argc, char** argv) {
    return plattmix::bench::RunAndClean(argc, argv, BenchFolder());
}
