// plattmix-cli mount and unmount: an ISO image attached as a drive, and detached again.
#pragma once

#include <iosfwd>

#include "CliArgs.h"

namespace plattmix::cli {

int RunMountCommand(const CliArgs& args, std::ostream& out, std::ostream& err);
int RunUnmountCommand(const CliArgs& args, std::ostream& out, std::ostream& err);

}  // namespace plattmix::cli
