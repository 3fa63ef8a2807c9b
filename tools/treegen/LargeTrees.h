// Trees with a lot of bytes: one sparse file beyond 4 GiB (real bytes only at its markers) and
// many files of mixed sizes for benchmarks. Deterministic like every fixture.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "MadeTree.h"

namespace plattmix::treegen {

inline constexpr int64_t kFiveGiB = int64_t{5} << 30;
inline constexpr const char* kSparseFileName = "gross.bin";
inline constexpr uint64_t kSparseSeed = 0x5350415253ull;

// Where a sparse file holds data: the rest of it reads as zero bytes.
struct Marker {
    int64_t offset;
    int64_t size;
};

// The markers of a sparse file of bytes bytes: 4 KiB (less when the file is smaller) at its
// start, around its middle and at its end. Their bytes are ContentAt(kSparseSeed, offset, size).
std::vector<Marker> SparseMarkers(int64_t bytes);

// root/gross.bin: a sparse file of bytes bytes with the markers of SparseMarkers.
MadeTree MakeSparseLargeFile(const std::filesystem::path& root, int64_t bytes = kFiveGiB);

// Files of mixed sizes (empty, a few bytes, sector-sized, 64 KiB to 16 MiB) in folders of 20,
// adding up to totalBytes. File n (counting from 1 in MadeTree::files order) has seed n.
MadeTree MakeLargeTree(const std::filesystem::path& root, int64_t totalBytes);

}  // namespace plattmix::treegen
