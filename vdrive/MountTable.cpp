#include "MountTable.h"

#include <sys/sysmacros.h>

#include <charconv>
#include <fstream>
#include <sstream>

namespace plattmix::vdrive {

namespace {

// The kernel writes space, tab, line feed and backslash in names as three octal digits.
std::string Unescape(std::string_view field) {
    std::string text;
    text.reserve(field.size());
    for (size_t i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size()) {
            const std::string_view digits = field.substr(i + 1, 3);
            unsigned value = 0;
            const auto [end, ec] =
                std::from_chars(digits.data(), digits.data() + digits.size(), value, 8);
            if (ec == std::errc() && end == digits.data() + digits.size() && value < 256) {
                text.push_back(static_cast<char>(value));
                i += 3;
                continue;
            }
        }
        text.push_back(field[i]);
    }
    return text;
}

std::vector<std::string_view> Fields(std::string_view line) {
    std::vector<std::string_view> fields;
    size_t at = 0;
    while (at < line.size()) {
        const size_t end = line.find(' ', at);
        const size_t stop = end == std::string_view::npos ? line.size() : end;
        if (stop > at)
            fields.push_back(line.substr(at, stop - at));
        at = stop + 1;
    }
    return fields;
}

bool DeviceNumber(std::string_view field, unsigned& major, unsigned& minor) {
    const size_t colon = field.find(':');
    if (colon == std::string_view::npos)
        return false;
    const auto a = std::from_chars(field.data(), field.data() + colon, major);
    const auto b = std::from_chars(field.data() + colon + 1, field.data() + field.size(), minor);
    return a.ec == std::errc() && a.ptr == field.data() + colon && b.ec == std::errc() &&
           b.ptr == field.data() + field.size();
}

std::string_view WithoutTrailingSlash(std::string_view path) {
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    return path;
}

}  // namespace

std::vector<MountEntry> ParseMountInfo(std::string_view text) {
    std::vector<MountEntry> table;
    size_t at = 0;
    while (at < text.size()) {
        const size_t end = text.find('\n', at);
        const size_t stop = end == std::string_view::npos ? text.size() : end;
        const auto fields = Fields(text.substr(at, stop - at));
        at = stop + 1;
        // id, parent, major:minor, root, mount point, options, optional fields, "-", type,
        // source, super options.
        size_t separator = 6;
        while (separator < fields.size() && fields[separator] != "-")
            ++separator;
        MountEntry entry;
        if (fields.size() < 5 || separator + 2 >= fields.size() ||
            !DeviceNumber(fields[2], entry.major, entry.minor))
            continue;
        entry.root = Unescape(fields[3]);
        entry.mountPoint = Unescape(fields[4]);
        entry.type = Unescape(fields[separator + 1]);
        entry.source = Unescape(fields[separator + 2]);
        table.push_back(std::move(entry));
    }
    return table;
}

std::vector<MountEntry> ReadMountTable(const std::string& path) {
    std::ifstream in(path);
    if (!in)
        return {};
    std::ostringstream text;
    text << in.rdbuf();
    return ParseMountInfo(text.str());
}

std::vector<std::string> MountPointsOfDevice(const std::vector<MountEntry>& table, dev_t rdev) {
    std::vector<std::string> points;
    for (const MountEntry& entry : table) {
        if (entry.major == major(rdev) && entry.minor == minor(rdev) && entry.root == "/")
            points.push_back(entry.mountPoint);
    }
    return points;
}

bool IsMountPoint(const std::vector<MountEntry>& table, std::string_view path) {
    const std::string_view wanted = WithoutTrailingSlash(path);
    for (const MountEntry& entry : table) {
        if (WithoutTrailingSlash(entry.mountPoint) == wanted)
            return true;
    }
    return false;
}

}  // namespace plattmix::vdrive
