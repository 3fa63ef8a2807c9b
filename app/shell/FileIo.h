// Whole-file reads and atomic writes for the small text files of the shell. Nothing throws;
// failures answer nothing or false.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace plattmix::shell {

bool RegularFileExists(const std::string& path);

// Size in bytes of a regular file, nothing for anything else.
std::optional<uint64_t> RegularFileSize(const std::string& path);

// The whole file, or nothing when it is missing, not a regular file or cannot be read.
std::optional<std::string> ReadWholeFile(const std::string& path);

// Writes a temporary file beside path and renames it over path (a symbolic link is followed,
// the file's permissions are kept), so a crash never leaves half a file. The folder must exist.
bool WriteFileAtomically(const std::string& path, std::string_view bytes);

}  // namespace plattmix::shell
