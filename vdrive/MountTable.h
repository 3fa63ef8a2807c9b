// The mount table of the running process (/proc/self/mountinfo): where block devices are mounted.
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

namespace plattmix::vdrive {

struct MountEntry {
    unsigned major = 0;
    unsigned minor = 0;
    std::string root;        // the part of the file system shown: "/" for the whole of it
    std::string mountPoint;  // unescaped
    std::string type;        // "iso9660"
    std::string source;      // "/dev/loop0"
};

// The entries of a mountinfo text, in its order; lines that cannot be read are left out.
std::vector<MountEntry> ParseMountInfo(std::string_view text);

// The entries of the file (empty when it cannot be read).
std::vector<MountEntry> ReadMountTable(const std::string& path = "/proc/self/mountinfo");

// Where the whole file system of the block device with number rdev is mounted, in mount order.
std::vector<std::string> MountPointsOfDevice(const std::vector<MountEntry>& table, dev_t rdev);

// Whether anything is mounted at path (compared as written, without a trailing "/").
bool IsMountPoint(const std::vector<MountEntry>& table, std::string_view path);

}  // namespace plattmix::vdrive
