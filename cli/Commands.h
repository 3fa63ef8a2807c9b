// The commands of plattmix-cli. Each returns the process exit code.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "CliArgs.h"

namespace plattmix::cli {

// The words after the program's name, with the options every command knows.
ParseResult ParseCommandLine(const std::vector<std::string>& words);

// terminal: the output is a terminal (progress bars) rather than a pipe or a file.
int RunCommand(const CliArgs& args, std::ostream& out, std::ostream& err, bool terminal = false);

// The usage text, printed for bad usage and for "help".
void PrintUsage(std::ostream& out);

}  // namespace plattmix::cli
