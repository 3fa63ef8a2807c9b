// plattmix-cli compilation save LIST PATH... | load LIST | size LIST [--drive DRIVE]: the
// compilation's list file from the command line.
#pragma once

#include <iosfwd>

#include "CliArgs.h"

namespace plattmix::cli {

int RunCompilationCommand(const CliArgs& args, std::ostream& out, std::ostream& err);

}  // namespace plattmix::cli
