// The tray state and the door against the guest's real drives: the state on the node's own
// path after the program's door command and after the QEMU monitor moved the tray, an empty
// drive, nodes that are no drives, and the same through plattmix-cli.
#pragma once

#include <string>

#include "ProbeChannel.h"

namespace plattmix::testbed {

// Expects disc A closed in drive 0 and a disc in drive 1; leaves drive 1 empty and closed.
void CheckTray(Report& report, Channel& channel, const std::string& cli);

}  // namespace plattmix::testbed
