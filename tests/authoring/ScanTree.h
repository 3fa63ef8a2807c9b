// Trees for the scan tests: files of any size (sparse, so gigabytes cost nothing) and the order
// in which a folder's entries are read.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace plattmix::test {

inline constexpr int64_t kGiB = int64_t{1} << 30;

inline void MakeFile(const std::filesystem::path& path, int64_t size) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path).close();
    std::filesystem::resize_file(path, static_cast<std::uintmax_t>(size));
}

// Names as readdir hands them out, "." and ".." left out.
inline std::vector<std::string> ReadOrder(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    return names;
}

}  // namespace plattmix::test
