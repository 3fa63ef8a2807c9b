#include "AspiDevices.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <tuple>

#include "MmcOpcodes.h"

namespace plattmix::scsi::aspi {

namespace fs = std::filesystem;

namespace {

// The number N of a name prefix + "N".
std::optional<unsigned> NumberAfter(const std::string& name, std::string_view prefix) {
    if (name.size() <= prefix.size() || !name.starts_with(prefix))
        return std::nullopt;
    unsigned number = 0;
    const char* end = name.data() + name.size();
    const auto [ptr, ec] = std::from_chars(name.data() + prefix.size(), end, number);
    if (ec != std::errc{} || ptr != end)
        return std::nullopt;
    return number;
}

std::optional<unsigned> DeviceType(const fs::path& file) {
    std::ifstream in(file);
    unsigned type = 0;
    if (!(in >> type))
        return std::nullopt;
    return type;
}

}  // namespace

const GenericDrive* GenericDevices::Find(SrbAddress address) const {
    for (const auto& drive : drives) {
        if (drive.host == address.hostAdapter && drive.target == address.target &&
            drive.lun == address.lun)
            return &drive;
    }
    return nullptr;
}

uint8_t GenericDevices::AdapterCount() const {
    if (hosts.empty())
        return 0;
    return static_cast<uint8_t>(std::min(*hosts.rbegin() + 1, 255u));
}

std::optional<GenericDrive> ParseHctl(const std::string& text) {
    std::array<unsigned, 4> parts{};
    std::string_view rest = text;
    for (size_t i = 0; i < parts.size(); ++i) {
        const auto [ptr, ec] = std::from_chars(rest.data(), rest.data() + rest.size(), parts[i]);
        if (ec != std::errc{})
            return std::nullopt;
        rest.remove_prefix(static_cast<size_t>(ptr - rest.data()));
        if (i + 1 < parts.size()) {
            if (rest.empty() || rest.front() != ':')
                return std::nullopt;
            rest.remove_prefix(1);
        }
    }
    if (!rest.empty())
        return std::nullopt;
    return GenericDrive{parts[0], parts[1], parts[2], parts[3], 0};
}

GenericDevices ScanGenericDevices(const std::string& sysClass) {
    GenericDevices found;
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(fs::path(sysClass) / "scsi_host", ec)) {
        if (const auto host = NumberAfter(entry.path().filename().string(), "host"))
            found.hosts.insert(*host);
    }
    const fs::path generic = fs::path(sysClass) / "scsi_generic";
    found.driverPresent = fs::is_directory(generic, ec);
    for (const auto& entry : fs::directory_iterator(generic, ec)) {
        const auto node = NumberAfter(entry.path().filename().string(), "sg");
        if (!node)
            continue;
        std::error_code linkError;
        const fs::path device = fs::read_symlink(entry.path() / "device", linkError);
        auto drive = linkError ? std::nullopt : ParseHctl(device.filename().string());
        if (!drive || DeviceType(entry.path() / "device" / "type") != kDeviceTypeCdDvd)
            continue;
        drive->node = *node;
        found.hosts.insert(drive->host);
        found.drives.push_back(*drive);
    }
    std::sort(found.drives.begin(), found.drives.end(), [](const auto& a, const auto& b) {
        return std::tie(a.host, a.target, a.lun, a.channel) <
               std::tie(b.host, b.target, b.lun, b.channel);
    });
    return found;
}

}  // namespace plattmix::scsi::aspi
