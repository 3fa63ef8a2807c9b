#include "LargeTrees.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "FileContent.h"
#include "TreeWriter.h"

namespace plattmix::treegen {

namespace fs = std::filesystem;

namespace {

constexpr int64_t kMarkerSize = 4096;
constexpr int kFilesPerFolder = 20;

// The size cycle of MakeLargeTree.
constexpr int64_t kMixedSizes[] = {0,        1,      100,           2048,   4095,
                                   65536,    131073, 1 << 20,       300000, (5 << 20) + 3,
                                   16 << 20, 2049,   (1 << 20) - 1, 777777, 8 << 20};

void WriteMarkers(const fs::path& path, int64_t bytes) {
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    bool ok = fd >= 0 && ftruncate(fd, static_cast<off_t>(bytes)) == 0;
    for (const Marker& marker : SparseMarkers(bytes)) {
        const std::string data = ContentAt(kSparseSeed, static_cast<uint64_t>(marker.offset),
                                           static_cast<size_t>(marker.size));
        ok = ok && pwrite(fd, data.data(), data.size(), static_cast<off_t>(marker.offset)) ==
                       static_cast<ssize_t>(data.size());
    }
    const int error = errno;
    if (fd >= 0)
        close(fd);
    if (!ok)
        throw std::runtime_error(path.string() + ": " + std::strerror(error));
}

}  // namespace

std::vector<Marker> SparseMarkers(int64_t bytes) {
    const int64_t size = std::min(kMarkerSize, bytes / 3);
    if (size <= 0)
        return {};
    return {{0, size}, {bytes / 2 - size / 2, size}, {bytes - size, size}};
}

MadeTree MakeSparseLargeFile(const fs::path& root, int64_t bytes) {
    fs::create_directories(root);
    WriteMarkers(root / kSparseFileName, bytes);
    MadeTree made;
    made.files.push_back(kSparseFileName);
    made.bytes = bytes;
    return made;
}

MadeTree MakeLargeTree(const fs::path& root, int64_t totalBytes) {
    TreeWriter tree(root);
    int64_t left = totalBytes;
    for (uint64_t n = 1; left > 0; ++n) {
        const size_t index = static_cast<size_t>(n - 1);
        const int64_t size = std::min(kMixedSizes[index % std::size(kMixedSizes)], left);
        char name[64];
        std::snprintf(name, sizeof name, "teil%03zu/gruppe%zu/datei%05zu.dat",
                      index / (kFilesPerFolder * 10), index / kFilesPerFolder % 10, index);
        tree.File(name, size, n);
        left -= size;
    }
    return tree.Made();
}

}  // namespace plattmix::treegen
