// plattmix-cli burn and erase: an ISO image or a compilation written to a disc (or to libburn's
// stdio: pseudo-drive), and a rewritable disc erased.
#pragma once

#include <iosfwd>

#include "CliArgs.h"

namespace plattmix::cli {

int RunBurnCommand(const CliArgs& args, std::ostream& out, std::ostream& err, bool terminal);
int RunEraseCommand(const CliArgs& args, std::ostream& out, std::ostream& err, bool terminal);

}  // namespace plattmix::cli
