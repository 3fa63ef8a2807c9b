// Drives the user may not open, in the test bed's guest (drives variant): the guest script
// (access_guest.sh) gives the four drive nodes to root:cdrom with mode 0660 and adds two users,
// "hans" outside the group and "dora" in it. Run as root, the checks start plattmix-cli and the
// window as either user; they also send READs that deliver fewer bytes than asked.
#pragma once

#include <string>

#include "ProbeChannel.h"

namespace plattmix::testbed {

// self: this program (run again with --window); cli: plattmix-cli.
void CheckRefusedDrives(Report& report, const std::string& self, const std::string& cli);

// READ CD and READ(10) into a buffer larger than the blocks asked for, through both transports:
// the kernel reports the missing bytes, and the request counts as failed. READ TOC with its
// allocation length larger than the reply stays good.
void CheckShortTransfers(Report& report);

}  // namespace plattmix::testbed
