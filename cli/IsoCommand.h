// plattmix-cli iso SOURCE TARGET.iso [--volume NAME]: an ISO image of a folder.
#pragma once

#include <iosfwd>

#include "CliArgs.h"

namespace plattmix::cli {

int RunIsoCommand(const CliArgs& args, std::ostream& out, std::ostream& err, bool terminal);

}  // namespace plattmix::cli
