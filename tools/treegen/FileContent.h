// Deterministic file content: every byte follows from a seed and its position alone, so any part
// of a file can be made or checked on its own, and gigabytes need no memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

namespace plattmix::treegen {

// Fills data with the bytes at offset .. offset + size of the content with seed.
void FillContent(uint64_t seed, uint64_t offset, char* data, size_t size);

// The content's bytes at offset .. offset + size.
std::string ContentAt(uint64_t seed, uint64_t offset, size_t size);

// Writes a file of size bytes of the content with seed (creating its folder). Throws
// std::runtime_error when the file cannot be written.
void WriteContentFile(const std::filesystem::path& path, int64_t size, uint64_t seed);

}  // namespace plattmix::treegen
