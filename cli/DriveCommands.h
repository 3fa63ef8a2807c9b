// The drive commands of plattmix-cli: "drives" (the drive list as the window shows it) and
// "toc" (the track list of the chosen or first drive). They need nothing but the transports,
// so the drive test bed runs them inside its guest.
#pragma once

#include <iosfwd>

#include "CliArgs.h"

namespace plattmix::cli {

int RunDriveCommand(const CliArgs& args, std::ostream& out, std::ostream& err);

}  // namespace plattmix::cli
