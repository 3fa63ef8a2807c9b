// ISO images attached as drives by the loop-device service, inside the guest where the kernel has
// loop devices and ISO 9660: attach, the files through the mount point, a second attach refused,
// a busy volume kept, detach, a taken mount point, and images that are none.
#pragma once

#include <string>

#include "ProbeChannel.h"

namespace plattmix::testbed {

// The image the harness made with plattmix-cli, and the listing of its source tree (the format of
// TreeChecks.h), in the data folder.
inline constexpr const char* kVirtualDriveImage = "Plattmix Abbild.iso";
inline constexpr const char* kVirtualDriveListing = "vdrive.manifest";

// Reports the checks "vdrive.<step>".
void CheckVirtualDrives(Report& report, const std::string& data);

}  // namespace plattmix::testbed
