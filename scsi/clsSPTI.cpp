#include "clsSPTI.h"

#include <fcntl.h>
#include <scsi/scsi.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <filesystem>
#include <system_error>

#include "ScsiStatus.h"
#include "SgIo.h"

namespace plattmix::scsi {

namespace fs = std::filesystem;

namespace {

// The number N of a name "srN", or nothing for any other name.
std::optional<unsigned> DriveNumber(std::string_view name) {
    if (name.size() < 3 || name.substr(0, 2) != "sr")
        return std::nullopt;
    unsigned number = 0;
    const auto* end = name.data() + name.size();
    const auto [ptr, ec] = std::from_chars(name.data() + 2, end, number);
    if (ec != std::errc{} || ptr != end)
        return std::nullopt;
    return number;
}

std::vector<std::string> ScanDrives(const std::string& sysClassBlock) {
    std::vector<std::pair<unsigned, std::string>> found;
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(sysClassBlock, ec)) {
        const std::string name = entry.path().filename().string();
        if (const auto number = DriveNumber(name))
            found.emplace_back(*number, name);
    }
    std::sort(found.begin(), found.end());
    std::vector<std::string> names;
    for (auto& [number, name] : found)
        names.push_back(std::move(name));
    return names;
}

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// The node name a handle gives ("sr0", "SR0" or a path to it in the device folder), in lower
// case; empty when the path points elsewhere.
std::string ShortName(const std::string& Handle, const std::string& devDir) {
    const auto slash = Handle.rfind('/');
    if (slash == std::string::npos)
        return Lower(Handle);
    if (Lower(Handle.substr(0, slash)) != Lower(devDir))
        return {};
    return Lower(Handle.substr(slash + 1));
}

int OpenNode(const std::string& path) {
    int fd = ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    return fd;
}

// "H:C:T:L", the name sysfs gives a SCSI device.
std::optional<std::array<unsigned, 4>> ParseHctl(std::string_view text) {
    std::array<unsigned, 4> parts{};
    for (size_t i = 0; i < parts.size(); ++i) {
        const auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), parts[i]);
        if (ec != std::errc{})
            return std::nullopt;
        text.remove_prefix(static_cast<size_t>(ptr - text.data()));
        if (i + 1 < parts.size()) {
            if (text.empty() || text.front() != ':')
                return std::nullopt;
            text.remove_prefix(1);
        }
    }
    if (!text.empty())
        return std::nullopt;
    return parts;
}

}  // namespace

clsSPTI::clsSPTI(std::string sysClassBlock, std::string devDir, SgIoCall sgIo)
    : sysClassBlock_(std::move(sysClassBlock)),
      devDir_(std::move(devDir)),
      sgIo_(std::move(sgIo)),
      drives_(ScanDrives(sysClassBlock_)) {
    if (!sgIo_)
        sgIo_ = [](int descriptor, sg_io_hdr& header) {
            return ::ioctl(descriptor, SG_IO, &header);
        };
}

clsSPTI::~clsSPTI() {
    for (int fd : descriptors_) {
        if (fd >= 0)
            ::close(fd);
    }
}

bool clsSPTI::Installed() {
    int16_t first = 1;
    const std::string handle = DriveHandle(first);
    return !handle.empty() && Descriptor(handle) >= 0;
}

std::string clsSPTI::DriveChar(const std::string& Handle) {
    const auto index = Find(Handle);
    return index ? drives_[*index] : ShortName(Handle, devDir_);
}

std::string clsSPTI::DriveHandle(int16_t& index) {
    if (index < 1 || static_cast<size_t>(index) > drives_.size())
        return {};
    return devDir_ + "/" + drives_[static_cast<size_t>(index - 1)];
}

std::optional<size_t> clsSPTI::Find(const std::string& Handle) const {
    const std::string name = ShortName(Handle, devDir_);
    if (name.empty())
        return std::nullopt;
    const auto it = std::find(drives_.begin(), drives_.end(), name);
    if (it == drives_.end())
        return std::nullopt;
    return static_cast<size_t>(it - drives_.begin());
}

int clsSPTI::Descriptor(const std::string& Handle) {
    if (!tableOpened_) {
        for (const auto& name : drives_)
            descriptors_.push_back(OpenNode(devDir_ + "/" + name));
        tableOpened_ = true;
    }
    const auto index = Find(Handle);
    return index ? descriptors_[*index] : -1;
}

std::optional<clsSPTI::Address> clsSPTI::AddressOf(const std::string& Handle) {
    const int fd = Descriptor(Handle);
    if (fd < 0)
        return std::nullopt;
    std::error_code ec;
    const fs::path device =
        fs::read_symlink(fs::path(sysClassBlock_) / drives_[*Find(Handle)] / "device", ec);
    if (!ec) {
        if (const auto hctl = ParseHctl(device.filename().string())) {
            return Address{static_cast<uint8_t>((*hctl)[0]), static_cast<uint8_t>((*hctl)[1]),
                           static_cast<uint8_t>((*hctl)[2]), static_cast<uint8_t>((*hctl)[3])};
        }
    }
    // The kernel's own answer: target in bits 0-7, LUN 8-15, channel 16-23, host 24-31.
    struct {
        uint32_t idLun;
        uint32_t hostUniqueId;
    } idlun{};
    if (::ioctl(fd, SCSI_IOCTL_GET_IDLUN, &idlun) != 0)
        return std::nullopt;
    return Address{static_cast<uint8_t>(idlun.idLun >> 24), static_cast<uint8_t>(idlun.idLun >> 16),
                   static_cast<uint8_t>(idlun.idLun), static_cast<uint8_t>(idlun.idLun >> 8)};
}

uint8_t clsSPTI::HostAdapter(const std::string& Handle) {
    const auto address = AddressOf(Handle);
    return address ? address->host : 0;
}

uint8_t clsSPTI::TargetId(const std::string& Handle) {
    const auto address = AddressOf(Handle);
    return address ? address->target : 0;
}

uint8_t clsSPTI::LUN(const std::string& Handle) {
    const auto address = AddressOf(Handle);
    return address ? address->lun : 0;
}

int32_t clsSPTI::ExecCMD(std::string& Handle, std::span<const uint8_t> cdb, uint8_t& cdblen,
                         int32_t& direction, uint8_t* Buffer, int32_t BufferLen, int16_t& TimeOut) {
    const int fd = Descriptor(Handle);
    if (fd < 0)
        return kStatusNoDevice;
    if (TimeOut == 0)
        TimeOut = kSptiDefaultTimeOut;

    SgIoRequest request;
    BuildSgIoRequest(request, cdb, cdblen, direction, Buffer, BufferLen, TimeOut);
    const int rc = sgIo_(fd, request.header);
    const SgIoResult result = InterpretSgIo(request.header, request.sense, rc);
    lastSk_ = result.senseKey;
    lastAsc_ = result.asc;
    lastAscq_ = result.ascq;
    return result.status;
}

}  // namespace plattmix::scsi
