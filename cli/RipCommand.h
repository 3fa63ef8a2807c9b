// plattmix-cli rip: the ripping page's Start command from the command line.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "CliArgs.h"

namespace plattmix::cli {

// --drive, --tracks 1,3-5 (row positions as the window numbers them), --format, --out,
// --prefix, --number running|track, --number-first, --musicbrainz, --release N, --secure,
// --offset N.
int RunRipCommand(const CliArgs& args, std::ostream& out, std::ostream& err, bool terminal);

// "1,3-5" → {1, 3, 4, 5}; nothing for bad text or positions outside 1..rowCount.
std::optional<std::vector<int>> ParseTrackList(const std::string& text, int rowCount);

}  // namespace plattmix::cli
