// A fresh folder per test under PLATTMIX_TEST_TMP (or the system's temporary folder).
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace plattmix::discgen::test {

inline std::filesystem::path ScratchFolder() {
    const char* base = std::getenv("PLATTMIX_TEST_TMP");
    const std::filesystem::path root =
        base != nullptr ? std::filesystem::path(base) : std::filesystem::temp_directory_path();
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    const std::filesystem::path folder =
        root / "discgen" / (std::string(info->test_suite_name()) + "." + info->name());
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    return folder;
}

}  // namespace plattmix::discgen::test
