// plattmix-cli run inside the guest against the two drives: the drive list and the track list
// as the user sees them.
#pragma once

#include <string>

#include "ProbeChannel.h"

namespace plattmix::testbed {

// cli: the path of the statically linked plattmix-cli in the guest.
void CheckCommandLine(Report& report, const std::string& cli);

}  // namespace plattmix::testbed
