// plattmix-cli run inside the guest against the two drives: the drive list and the track list
// as the user sees them.
#pragma once

#include <string>
#include <vector>

#include "ProbeChannel.h"

namespace plattmix::testbed {

// What a command run in the guest printed (stdout and stderr together) and its exit status.
struct CommandOutput {
    int code = -1;
    std::vector<std::string> lines;
    std::string Text() const;
};
CommandOutput RunInGuest(const std::string& command);

// cli: the path of the statically linked plattmix-cli in the guest.
void CheckCommandLine(Report& report, const std::string& cli);

}  // namespace plattmix::testbed
