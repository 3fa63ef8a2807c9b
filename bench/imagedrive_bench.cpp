// Reading through the disc-image drive, side by side with reading the same bytes straight from
// the BIN file. The counter vs_file is the drive's throughput divided by the file's, measured
// in the same run; cd_speed is the drive's throughput as a multiple of single-speed CD.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <vector>

#include "BenchFolder.h"
#include "DiscWriter.h"
#include "Fixtures.h"
#include "imagedrive/clsImageDrive.h"
#include "modMMC.h"

namespace {

using namespace plattmix;
using Clock = std::chrono::steady_clock;

constexpr uint32_t kBlocks = 27;  // what the ripper asks for at a time
constexpr size_t kRawSector = 2352;

std::filesystem::path BenchFolder(const char* name) {
    return plattmix::bench::BenchFolder(name);
}

const discgen::DiscDescription& Disc(discgen::DiscSpec spec, const char* name) {
    static std::map<std::string, discgen::DiscDescription> made;
    auto it = made.find(name);
    if (it == made.end()) {
        auto written = discgen::WriteDisc(spec, BenchFolder(name));
        if (!written.ok())
            std::abort();
        it = made.emplace(name, *written.value).first;
    }
    return it->second;
}

// Every sector of [first, end) through READ CD with the given flags; seconds taken.
double ReadThroughDrive(scsi::imagedrive::clsImageDrive& drive, std::string handle, int32_t first,
                        int32_t end, uint8_t flags, std::vector<uint8_t>& buffer) {
    const auto start = Clock::now();
    for (int32_t lba = first; lba < end; lba += static_cast<int32_t>(kBlocks)) {
        const uint32_t blocks = std::min<uint32_t>(kBlocks, static_cast<uint32_t>(end - lba));
        if (modMMC::ReadCD(drive, handle, static_cast<uint32_t>(lba), blocks, buffer, flags) != 0)
            std::abort();
        benchmark::DoNotOptimize(buffer.data());
    }
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// The same amount of bytes read from the file in blocks of the same size.
double ReadFile(const std::filesystem::path& path, size_t bytes, std::vector<uint8_t>& buffer) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        std::abort();
    const auto start = Clock::now();
    for (size_t at = 0; at < bytes; at += buffer.size()) {
        const size_t want = std::min(buffer.size(), bytes - at);
        if (::pread(fd, buffer.data(), want, static_cast<off_t>(at)) < 0)
            std::abort();
        benchmark::DoNotOptimize(buffer.data());
    }
    ::close(fd);
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void Report(benchmark::State& state, double driveSeconds, double fileSeconds, double sectors) {
    state.counters["vs_file"] = fileSeconds / driveSeconds;
    state.counters["cd_speed"] = sectors / 75.0 / driveSeconds;
    state.counters["drive_MBps"] = sectors * kRawSector / driveSeconds / 1e6;
}

// Audio tracks: the drive hands out stored bytes, so it should come close to the file.
void BM_ReadCdAudio(benchmark::State& state) {
    const auto& disc = Disc(discgen::Large(static_cast<int>(state.range(0))), "large");
    scsi::imagedrive::clsImageDrive drive;
    const auto handle = drive.AddDrive(disc.cuePath.string());
    if (!handle.ok())
        std::abort();
    std::vector<uint8_t> buffer(kBlocks * kRawSector);
    double driveSeconds = 0, fileSeconds = 0, sectors = 0;
    for (auto _ : state) {
        driveSeconds += ReadThroughDrive(drive, handle.Value(), 0, disc.leadOutLba, 0xF8, buffer);
        fileSeconds += ReadFile(disc.files.at(0).path,
                                static_cast<size_t>(disc.leadOutLba) * kRawSector, buffer);
        sectors += disc.leadOutLba;
    }
    Report(state, driveSeconds, fileSeconds, sectors);
}
BENCHMARK(BM_ReadCdAudio)->Arg(10)->Unit(benchmark::kMillisecond)->UseRealTime();

// A MODE1/2048 data track read raw: every sector gets its header, EDC and ECC computed.
void BM_ReadCdRawData(benchmark::State& state) {
    const auto& disc = Disc(discgen::DataTrackFirst(), "data");
    scsi::imagedrive::clsImageDrive drive;
    const auto handle = drive.AddDrive(disc.cuePath.string());
    if (!handle.ok())
        std::abort();
    const auto& track = disc.tracks.at(0);
    const int32_t end = track.startLba + track.lengthSectors;
    std::vector<uint8_t> buffer(kBlocks * kRawSector);
    double driveSeconds = 0, fileSeconds = 0, sectors = 0;
    for (auto _ : state) {
        driveSeconds += ReadThroughDrive(drive, handle.Value(), track.startLba, end, 0xF8, buffer);
        fileSeconds += ReadFile(disc.files.at(0).path,
                                static_cast<size_t>(track.lengthSectors) * 2048, buffer);
        sectors += track.lengthSectors;
    }
    Report(state, driveSeconds, fileSeconds, sectors);
}
BENCHMARK(BM_ReadCdRawData)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
