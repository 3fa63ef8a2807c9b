#include "UdisksDriveService.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <thread>
#include <utility>

namespace plattmix::vdrive {

namespace {

namespace fs = std::filesystem;

// udisks may add the file-system interface a moment after the loop device appears, once the
// volume has been probed.
constexpr int kProbeWaits = 20;
constexpr auto kProbeWait = std::chrono::milliseconds(100);
// And it shows a deleted loop device's backing file a moment longer.
constexpr int kSettleWaits = 50;

// "/dev/loop10" after "/dev/loop9".
bool DeviceOrder(const std::string& a, const std::string& b) {
    return a.size() != b.size() ? a.size() < b.size() : a < b;
}

bool SamePath(const fs::path& a, const fs::path& b) {
    std::error_code ec;
    const fs::path x = fs::weakly_canonical(a, ec);
    if (ec)
        return false;
    const fs::path y = fs::weakly_canonical(b, ec);
    return !ec && x == y;
}

}  // namespace

UdisksDriveService::UdisksDriveService(std::unique_ptr<UdisksBus> bus, std::string link)
    : bus_(std::move(bus)), link_(std::move(link)) {}

std::optional<UdisksBlock> UdisksDriveService::Find(const std::string& device, std::string& why) {
    for (UdisksBlock& block : bus_->Blocks(why)) {
        if (block.device == device)
            return std::move(block);
    }
    if (why.empty())
        why = device + ": udisks does not know it";
    return std::nullopt;
}

std::vector<std::string> UdisksDriveService::DevicesOf(const ImageFile& image) {
    std::string why;
    std::vector<std::string> devices;
    for (const UdisksBlock& block : bus_->Blocks(why)) {
        if (!block.backingFile.empty() && block.backingFile == image.realPath())
            devices.push_back(block.device);
    }
    std::ranges::sort(devices, DeviceOrder);
    return devices;
}

AttachStep UdisksDriveService::Attach(const ImageFile& image) {
    const UdisksReply setup = bus_->LoopSetup(image.fd());
    if (!setup.ok)
        return {"", "LoopSetup: " + setup.error};
    std::string why;
    for (const UdisksBlock& block : bus_->Blocks(why)) {
        if (block.object == setup.value)
            return {block.device, ""};
    }
    return {"", "LoopSetup: " + setup.value + " is no block device (" + why + ")"};
}

bool UdisksDriveService::LinkLeadsTo(const std::vector<std::string>& points) const {
    std::error_code ec;
    if (!fs::is_symlink(fs::symlink_status(link_, ec)))
        return false;
    return std::ranges::any_of(points,
                               [this](const std::string& point) { return SamePath(link_, point); });
}

MountPointStep UdisksDriveService::MountAtFixedPoint(const std::string& device) {
    std::string why;
    std::optional<UdisksBlock> block = Find(device, why);
    for (int wait = 0; block && !block->hasFilesystem && wait < kProbeWaits; ++wait) {
        std::this_thread::sleep_for(kProbeWait);
        block = Find(device, why);
    }
    if (!block)
        return {MountPointOutcome::Failed, why};
    if (!block->hasFilesystem)
        return {MountPointOutcome::NoVolume, device + ": udisks shows no file system"};

    std::error_code ec;
    const auto status = fs::symlink_status(link_, ec);
    if (fs::exists(status)) {
        if (!fs::is_symlink(status))
            return {MountPointOutcome::Failed, link_ + ": taken (not a link)"};
        if (!LinkLeadsTo(block->mountPoints) && fs::exists(link_, ec))
            return {MountPointOutcome::Failed, link_ + ": taken (leads to another folder)"};
    }

    std::string point;
    if (!block->mountPoints.empty()) {
        point = block->mountPoints.front();
    } else {
        const UdisksReply mount = bus_->Mount(block->object);
        if (!mount.ok)
            return {MountPointOutcome::Failed, "Mount: " + mount.error};
        point = mount.value;
    }
    fs::remove(link_, ec);
    fs::create_directories(fs::path(link_).parent_path(), ec);
    fs::create_symlink(point, link_, ec);
    if (ec)
        return {MountPointOutcome::Failed, link_ + ": " + ec.message()};
    return {MountPointOutcome::Mounted, ""};
}

std::vector<std::string> UdisksDriveService::MountPointsOf(const std::string& device) {
    std::string why;
    const std::optional<UdisksBlock> block = Find(device, why);
    return block ? block->mountPoints : std::vector<std::string>{};
}

ServiceStep UdisksDriveService::Detach(const std::string& device) {
    std::string why;
    std::optional<UdisksBlock> block = Find(device, why);
    if (!block)
        return {false, why};
    const bool ownLink = LinkLeadsTo(block->mountPoints);
    // One call unmounts the volume once; a volume mounted twice takes two.
    for (size_t tries = block->mountPoints.size(); tries > 0 && !block->mountPoints.empty();
         --tries) {
        const UdisksReply unmount = bus_->Unmount(block->object);
        if (!unmount.ok)
            return {false, "Unmount: " + unmount.error};
        if (!(block = Find(device, why)))
            return {false, why};
    }
    if (!block->mountPoints.empty())
        return {false, device + ": still mounted at " + block->mountPoints.front()};
    if (ownLink) {
        std::error_code ec;
        fs::remove(link_, ec);
    }
    const UdisksReply removed = bus_->Delete(block->object);
    if (!removed.ok)
        return {false, "Delete: " + removed.error};
    // udisks answers before its own view has caught up with the kernel's: until then it still
    // shows the backing file, and an attach right after would be refused as a second one.
    for (int wait = 0; wait < kSettleWaits; ++wait) {
        const std::optional<UdisksBlock> now = Find(device, why);
        if (!now || now->backingFile.empty())
            break;
        std::this_thread::sleep_for(kProbeWait);
    }
    return {true, ""};
}

}  // namespace plattmix::vdrive
