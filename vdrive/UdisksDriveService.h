// Virtual drives through udisks2: the service for desktop users. udisks sets up the loop device
// and mounts the volume where it chooses (/media/USER/LABEL); the program's fixed mount point is
// a symbolic link to that folder (FixedMountPoint.h).
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "FixedMountPoint.h"
#include "IVirtualDriveService.h"
#include "UdisksBus.h"

namespace plattmix::vdrive {

class UdisksDriveService : public IVirtualDriveService {
  public:
    explicit UdisksDriveService(std::unique_ptr<UdisksBus> bus,
                                std::string link = UserMountPointLink());

    std::string Name() const override { return "udisks2"; }
    std::string FixedMountPoint() const override { return link_; }
    std::vector<std::string> DevicesOf(const ImageFile& image) override;
    AttachStep Attach(const ImageFile& image) override;
    // The link's place is taken when anything but a link is there, or a link that leads to an
    // existing folder other than this volume's mount point; a stale link of an earlier
    // attachment is replaced.
    MountPointStep MountAtFixedPoint(const std::string& device) override;
    std::vector<std::string> MountPointsOf(const std::string& device) override;
    ServiceStep Detach(const std::string& device) override;

  private:
    std::optional<UdisksBlock> Find(const std::string& device, std::string& why);
    // Whether the link leads to one of points.
    bool LinkLeadsTo(const std::vector<std::string>& points) const;

    std::unique_ptr<UdisksBus> bus_;
    std::string link_;
};

}  // namespace plattmix::vdrive
