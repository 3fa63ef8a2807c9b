// Files for the virtual-drive tests: an image holding nothing but its volume descriptor (enough
// for the program to take it as an image; nothing here reads further).
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

namespace plattmix::test {

// 64 KiB with a primary volume descriptor ("\1CD001\1") at block 16, or UDF's "BEA01" there.
inline std::string WriteImageStub(const std::filesystem::path& path, const char* id = "CD001") {
    std::string bytes(65536, '\0');
    bytes[32768] = 1;
    bytes.replace(32769, 5, id);
    bytes[32774] = 1;
    std::ofstream(path, std::ios::binary) << bytes;
    return path.string();
}

}  // namespace plattmix::test
