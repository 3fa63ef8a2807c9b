// The service that attaches ISO images as drives: udisks2 over D-Bus for desktop users, the
// kernel's loop devices and mount(2) for root without udisks. MountIso and UnmountIso talk to it
// through these few calls only, so that a scripted service can stand in for either.
//
// A drive is named by its block device node ("/dev/loop3"); an image by its ImageFile.
#pragma once

#include <string>
#include <vector>

#include "ImageFile.h"

namespace plattmix::vdrive {

// What a step of the service did; detail says why it failed, for the command line and the log.
struct ServiceStep {
    bool ok = false;
    std::string detail;
};

struct AttachStep {
    std::string device;  // the new drive, empty on failure
    std::string detail;
};

enum class MountPointOutcome {
    Mounted,   // the volume is at the program's mount point
    Failed,    // the mount point is taken or the volume could not be mounted there
    NoVolume,  // the drive shows no file system, so there is nothing to give a mount point
};

struct MountPointStep {
    MountPointOutcome outcome = MountPointOutcome::Failed;
    std::string detail;
};

class IVirtualDriveService {
  public:
    virtual ~IVirtualDriveService() = default;

    // "udisks2" or "loop", for messages on the command line.
    virtual std::string Name() const = 0;

    // The program's fixed mount point with this service (see FixedMountPoint.h).
    virtual std::string FixedMountPoint() const = 0;

    // The drives whose backing file is the image, in device order.
    virtual std::vector<std::string> DevicesOf(const ImageFile& image) = 0;

    // Attaches the image read-only. The drive stays after the program ends.
    virtual AttachStep Attach(const ImageFile& image) = 0;

    // Mounts the drive's volume read-only at the program's fixed mount point, unless something
    // else is there already.
    virtual MountPointStep MountAtFixedPoint(const std::string& device) = 0;

    // Where the drive's volume is mounted now, in mount order; empty when nowhere.
    virtual std::vector<std::string> MountPointsOf(const std::string& device) = 0;

    // Unmounts the drive's volume wherever it is mounted and detaches the drive.
    virtual ServiceStep Detach(const std::string& device) = 0;
};

}  // namespace plattmix::vdrive
