// The disc images the window offers as drives when the machine has no working drive: one
// path a line in a section of the settings file.
#pragma once

#include <iosfwd>
#include <string>

#include "CliArgs.h"

namespace plattmix::cli {

// plattmix-cli image list | add PATH | add --demo | remove PATH
int RunImageCommand(const CliArgs& args, std::ostream& out, std::ostream& err);

}  // namespace plattmix::cli
