// The block node (/dev/srN) a transport's drive handle stands for: the drive's storage device,
// through which its tray is asked and its disc is mounted.
#pragma once

#include <string>

#include "ISCSI.h"

namespace plattmix::scsi {

// The pass-through's handle is that node already. A fall-back drive is a generic node (the
// transport's DriveChar, "sg1"); its SCSI device lists the block node beside it in sysfs when
// the sr driver serves the drive too. Empty when there is none (no sr driver, the disc-image
// drive). sysClass: where sysfs keeps its classes.
std::string BlockNodeOf(ISCSI& transport, const std::string& handle,
                        const std::string& sysClass = "/sys/class");

}  // namespace plattmix::scsi
