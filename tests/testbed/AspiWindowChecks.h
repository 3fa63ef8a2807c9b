// The window's tray, door, player and drive root on the fall-back transport's drives, in the test
// bed's guest, through the functions the window's handlers call: the tray state
// (scsi::GetTrayState), the eject button (audiocd::PressEjectButton), Play and Stop
// (audiocd::CdPlayerButtons) and the drive root (window::DriveRootOf of scsi::BlockNodeOf).
#pragma once

#include <string>

#include "ProbeChannel.h"

namespace plattmix::testbed {

// sg-only (no sr driver): drive 0 (/dev/sg0) holds disc A, drive 1 is empty. The tray is asked
// through the transport, the door moves through the cdaudio device (QEMU's monitor confirms),
// Play reads the data disc's table and refuses its data track as the design says, and, with the
// table shown as an audio CD's, plays READ CD sectors through the transport into a recording
// sink until Stop. No block node, so no drive root.
void CheckWindowPathsWithoutSr(Report& report, Channel& channel, const std::string& data);

// Both drivers loaded and the fall-back chosen anyway: drive 0 holds an ISO 9660 image. The
// handle maps to /dev/sr0; mounted, the drive root is the mount point and the tray is asked
// through the node; unmounted, the root is empty again.
void CheckDriveRootBesideSr(Report& report);

}  // namespace plattmix::testbed
