// plattmix-cli compilation save LIST PATH... | load LIST | size LIST [--drive DRIVE]: the
// compilation's list file from the command line. save writes the paths (made absolute, all of
// them existing) without measuring them; load prints each existing entry's size, a tab and its
// path, then the total; size prints the total and, with a drive (a libburn address such as
// /dev/sr0 or stdio:FILE), how full its disc is and whether the compilation fits: the exit code
// is kExitFailed when it does not.
#pragma once

#include <iosfwd>

#include "CliArgs.h"

namespace plattmix::cli {

int RunCompilationCommand(const CliArgs& args, std::ostream& out, std::ostream& err);

}  // namespace plattmix::cli
