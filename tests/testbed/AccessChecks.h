// Drives the user may not open, in the test bed's guest (drives variant): the guest script
// (access_guest.sh) gives the four drive nodes to root:cdrom with mode 0660 and adds two users,
// "hans" outside the group and "dora" in it. Run as root, the checks start plattmix-cli and the
// window as either user, and once open the generic nodes to everyone.
#pragma once

#include <string>

#include "ProbeChannel.h"

namespace plattmix::testbed {

// self: this program (run again with --window); cli: plattmix-cli.
void CheckRefusedDrives(Report& report, const std::string& self, const std::string& cli);

}  // namespace plattmix::testbed
