// The window's tray, door and drive root on the fall-back transport's drives, in the test bed's
// guest, through the functions the window's handlers call: the tray state (scsi::GetTrayState),
// the eject button (audiocd::PressEjectButton) and the drive root (window::DriveRootOf of
// scsi::BlockNodeOf).
#pragma once

#include "ProbeChannel.h"

namespace plattmix::testbed {

// sg-only (no sr driver): drive 0 (/dev/sg0) holds disc A, drive 1 is empty. The tray is asked
// through the transport and the door moves through the cdaudio device (QEMU's monitor
// confirms). No block node, so no drive root.
void CheckWindowPathsWithoutSr(Report& report, Channel& channel);

// Both drivers loaded and the fall-back chosen anyway: drive 0 holds an ISO 9660 image. The
// handle maps to /dev/sr0; mounted, the drive root is the mount point and the tray is asked
// through the node; unmounted, the root is empty again.
void CheckDriveRootBesideSr(Report& report);

}  // namespace plattmix::testbed
