// The drive root of a drive node: where the disc's file system is mounted, read from the
// kernel's mount table. Empty when the disc is not mounted (or the drive has no block node).
#pragma once

#include <string>
#include <string_view>

namespace plattmix::window {

// From the text of /proc/self/mountinfo: the mount point (ending in "/") of the first entry whose
// source is node or whose device number is majorMinor ("11:0"; empty to match by source only).
std::string MountPointFromMountInfo(std::string_view mountInfo, const std::string& node,
                                    const std::string& majorMinor);

// For a drive's block node (scsi::BlockNodeOf): "/dev/sr0" or "sr0" names a node in /dev;
// anything else, an empty name too, has no root.
std::string DriveRootOf(const std::string& blockNode);

}  // namespace plattmix::window
