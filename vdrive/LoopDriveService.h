// Virtual drives on the kernel's loop devices, mounted with mount(2): the service for root when
// udisks2 is not there. Attaching needs /dev/loop-control; mounting needs the iso9660 (or udf)
// file system in the kernel.
#pragma once

#include <string>
#include <vector>

#include "FixedMountPoint.h"
#include "IVirtualDriveService.h"

namespace plattmix::vdrive {

struct LoopPaths {
    std::string mountPoint = kRootMountPoint;
    std::string sysBlock = "/sys/block";
    std::string mountInfo = "/proc/self/mountinfo";
    std::string loopControl = "/dev/loop-control";
};

class LoopDriveService : public IVirtualDriveService {
  public:
    explicit LoopDriveService(LoopPaths paths = {});

    // Whether the program may use loop devices and mount(2): it runs as root.
    static bool Usable();

    std::string Name() const override { return "loop"; }
    std::string FixedMountPoint() const override { return paths_.mountPoint; }
    std::vector<std::string> DevicesOf(const ImageFile& image) override;
    AttachStep Attach(const ImageFile& image) override;
    // The mount point is taken when something is mounted there or it is anything but an empty
    // folder; it is made when missing.
    MountPointStep MountAtFixedPoint(const std::string& device) override;
    std::vector<std::string> MountPointsOf(const std::string& device) override;
    ServiceStep Detach(const std::string& device) override;

  private:
    LoopPaths paths_;
};

}  // namespace plattmix::vdrive
