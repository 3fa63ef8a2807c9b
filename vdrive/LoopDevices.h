// The kernel's loop devices and their backing files, as sysfs shows them
// (/sys/block/loopN/loop/backing_file).
#pragma once

#include <string>
#include <vector>

namespace plattmix::vdrive {

// The nodes ("/dev/loop3") of the loop devices whose backing file is realPath (absolute, links
// resolved), in device number order. sysBlock is the sysfs block folder.
std::vector<std::string> LoopDevicesBackedBy(const std::string& realPath,
                                             const std::string& sysBlock = "/sys/block");

}  // namespace plattmix::vdrive
