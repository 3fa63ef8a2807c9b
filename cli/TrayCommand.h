// plattmix-cli tray and play: the drive's tray state and door, and playing a track.
#pragma once

#include <iosfwd>

#include "CliArgs.h"

namespace plattmix::cli {

int RunTrayCommand(const CliArgs& args, std::ostream& out, std::ostream& err);
int RunPlayCommand(const CliArgs& args, std::ostream& out, std::ostream& err, bool terminal);

}  // namespace plattmix::cli
