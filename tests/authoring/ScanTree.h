// Trees for the scan tests: files of any size (sparse, so gigabytes cost nothing) and the order
// in which a folder's entries are read.
#pragma once

#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace plattmix::test {

inline constexpr int64_t kGiB = int64_t{1} << 30;

inline void MakeFile(const std::filesystem::path& path, int64_t size) {
    std::filesystem::create_directories(path.parent_path());
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    ASSERT_GE(fd, 0) << path;
    EXPECT_EQ(ftruncate(fd, static_cast<off_t>(size)), 0) << path;
    close(fd);
}

// Names as readdir hands them out, "." and ".." left out.
inline std::vector<std::string> ReadOrder(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    return names;
}

}  // namespace plattmix::test
