#include "MountPoint.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include "MountTable.h"

namespace plattmix::window {

namespace {

std::string WithSlash(std::string path) {
    if (path.empty() || path.back() != '/')
        path += '/';
    return path;
}

std::string NodePath(const std::string& name) {
    if (name.rfind("/dev/", 0) == 0)
        return name;
    if (name.rfind("sr", 0) == 0 && name.find('/') == std::string::npos)
        return "/dev/" + name;
    return {};
}

std::string MajorMinorOf(const std::string& node) {
    struct stat info {};
    if (::stat(node.c_str(), &info) != 0 || !S_ISBLK(info.st_mode))
        return {};
    return std::to_string(major(info.st_rdev)) + ":" + std::to_string(minor(info.st_rdev));
}

// The mount point of the first entry whose source is node or whose device number is majorMinor.
std::string MountPointIn(const std::vector<vdrive::MountEntry>& table, const std::string& node,
                         const std::string& majorMinor) {
    for (const vdrive::MountEntry& entry : table) {
        const std::string number = std::to_string(entry.major) + ":" + std::to_string(entry.minor);
        if (entry.source == node || (!majorMinor.empty() && number == majorMinor))
            return WithSlash(entry.mountPoint);
    }
    return {};
}

}  // namespace

std::string MountPointFromMountInfo(std::string_view mountInfo, const std::string& node,
                                    const std::string& majorMinor) {
    return MountPointIn(vdrive::ParseMountInfo(mountInfo), node, majorMinor);
}

std::string DriveRootOf(const std::string& blockNode) {
    const std::string node = NodePath(blockNode);
    if (node.empty())
        return {};
    return MountPointIn(vdrive::ReadMountTable(), node, MajorMinorOf(node));
}

}  // namespace plattmix::window
