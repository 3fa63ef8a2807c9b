// ISO images attached as drives inside the guest, where the kernel has loop devices and ISO 9660,
// by the loop-device service or by a real udisksd: attach, the files through the mount point, a
// second attach refused, a busy volume kept, detach, a taken mount point, and files that are no
// image.
#pragma once

#include <string>

#include "IVirtualDriveService.h"
#include "ProbeChannel.h"

namespace plattmix::testbed {

// The image the harness made with plattmix-cli, and the listing of its source tree (the format of
// TreeChecks.h), in the data folder.
inline constexpr const char* kVirtualDriveImage = "Plattmix Abbild.iso";
inline constexpr const char* kVirtualDriveListing = "vdrive.manifest";

// Reports the checks "<prefix>.<step>".
void CheckVirtualDrives(Report& report, const std::string& data,
                        vdrive::IVirtualDriveService& service, const std::string& prefix);

}  // namespace plattmix::testbed
