#include "LoopDevices.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>
#include <utility>

namespace plattmix::vdrive {

namespace {

// The number of "loopN", or -1 for any other name.
long LoopNumber(std::string_view name) {
    constexpr std::string_view kPrefix = "loop";
    if (!name.starts_with(kPrefix) || name.size() == kPrefix.size())
        return -1;
    long number = -1;
    const auto [end, ec] = std::from_chars(name.data() + kPrefix.size(), name.end(), number);
    return ec == std::errc() && end == name.end() ? number : -1;
}

}  // namespace

std::vector<std::string> LoopDevicesBackedBy(const std::string& realPath,
                                             const std::string& sysBlock) {
    std::vector<std::pair<long, std::string>> found;
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator(sysBlock, ec)) {
        const std::string name = entry.path().filename().string();
        const long number = LoopNumber(name);
        if (number < 0)
            continue;
        // Only a bound device has the file; a line feed ends the path.
        std::ifstream in(entry.path() / "loop" / "backing_file");
        std::string backing;
        if (!in || !std::getline(in, backing))
            continue;
        if (backing == realPath)
            found.emplace_back(number, "/dev/" + name);
    }
    std::ranges::sort(found);
    std::vector<std::string> devices;
    for (auto& [number, device] : found)
        devices.push_back(std::move(device));
    return devices;
}

}  // namespace plattmix::vdrive
