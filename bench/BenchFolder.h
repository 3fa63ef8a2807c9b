// Where benchmarks keep their scratch files: $PLATTMIX_BENCH_TMP, else the system's temporary
// folder's plattmix-bench, then one folder per benchmark.
#pragma once

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

}  // namespace plattmix::bench
