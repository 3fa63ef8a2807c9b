#include "MountPoint.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <fstream>
#include <sstream>
#include <vector>

namespace plattmix::window {

namespace {

// The table writes blanks, tabs, new lines and backslashes as three octal digits after "\".
std::string Unescape(const std::string& field) {
    std::string out;
    for (size_t i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size()) {
            const std::string digits = field.substr(i + 1, 3);
            if (digits.size() == 3 && digits.find_first_not_of("01234567") == std::string::npos) {
                out += static_cast<char>(std::stoi(digits, nullptr, 8));
                i += 3;
                continue;
            }
        }
        out += field[i];
    }
    return out;
}

std::vector<std::string> Fields(const std::string& line) {
    std::vector<std::string> fields;
    std::istringstream in(line);
    std::string field;
    while (in >> field)
        fields.push_back(field);
    return fields;
}

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

}  // namespace

std::string MountPointFromMountInfo(std::string_view mountInfo, const std::string& node,
                                    const std::string& majorMinor) {
    std::istringstream in{std::string(mountInfo)};
    std::string line;
    while (std::getline(in, line)) {
        // id parent major:minor root mountpoint options [optional...] - fstype source superopts
        const auto fields = Fields(line);
        size_t dash = 6;
        while (dash < fields.size() && fields[dash] != "-")
            ++dash;
        if (fields.size() < 5 || dash + 2 >= fields.size())
            continue;
        const bool bySource = Unescape(fields[dash + 2]) == node;
        const bool byNumber = !majorMinor.empty() && fields[2] == majorMinor;
        if (bySource || byNumber)
            return WithSlash(Unescape(fields[4]));
    }
    return {};
}

std::string DriveRootOf(const std::string& blockNode) {
    const std::string node = NodePath(blockNode);
    if (node.empty())
        return {};
    std::ifstream file("/proc/self/mountinfo");
    std::stringstream text;
    text << file.rdbuf();
    return MountPointFromMountInfo(text.str(), node, MajorMinorOf(node));
}

}  // namespace plattmix::window
