#include "BlockNode.h"

#include <filesystem>
#include <system_error>

namespace plattmix::scsi {

namespace fs = std::filesystem;

std::string BlockNodeOf(ISCSI& transport, const std::string& handle, const std::string& sysClass) {
    const std::string kind = transport.Interface();
    if (kind == "SPTI")
        return handle;
    if (kind != "ASPI")
        return {};
    const std::string generic = transport.DriveChar(handle);
    if (generic.empty() || generic.find('/') != std::string::npos)
        return {};
    // One block device at most hangs off a SCSI device.
    std::error_code ec;
    const fs::directory_iterator block(
        fs::path(sysClass) / "scsi_generic" / generic / "device" / "block", ec);
    if (ec || block == fs::directory_iterator())
        return {};
    return "/dev/" + block->path().filename().string();
}

}  // namespace plattmix::scsi
