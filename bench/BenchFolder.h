// Where benchmarks keep their scratch files: $PLATTMIX_BENCH_TMP, else the system's temporary
// folder's plattmix-bench, then one folder per benchmark.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <string_view>

namespace plattmix::bench {

inline std::filesystem::path BenchFolder(std::string_view area) {
    const char* base = std::getenv("PLATTMIX_BENCH_TMP");
    return (base != nullptr ? std::filesystem::path(base)
                            : std::filesystem::temp_directory_path() / "plattmix-bench") /
           area;
}

// Runs the benchmarks named on the command line, then removes their scratch folder.
inline int RunAndClean(int argc, char** argv, const std::filesystem::path& scratch) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    std::error_code ignored;
    std::filesystem::remove_all(scratch, ignored);
    return 0;
}

}  // namespace plattmix::bench
