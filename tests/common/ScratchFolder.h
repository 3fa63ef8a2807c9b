// Scratch folders for tests: under PLATTMIX_TEST_TMP (set by the build), else the system's
// temporary folder; each one emptied before use.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace plattmix::test {

inline std::filesystem::path TestRoot() {
    const char* base = std::getenv("PLATTMIX_TEST_TMP");
    return base != nullptr ? std::filesystem::path(base)
                           : std::filesystem::temp_directory_path() / "plattmix-tests";
}

// An empty folder area/name.
inline std::filesystem::path FreshFolder(const std::string& area, const std::string& name) {
    const std::filesystem::path folder = TestRoot() / area / name;
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    return folder;
}

// An empty folder named after the running test.
inline std::filesystem::path ScratchFolder(const std::string& area = "scratch") {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    return FreshFolder(area, std::string(info->test_suite_name()) + "." + info->name());
}

// The bytes of a file; empty when it cannot be read.
inline std::string WholeFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace plattmix::test
