// A disc description as a plain text table, for the command line and for test failure output.
#pragma once

#include <string>

#include "DiscSpec.h"

namespace plattmix::discgen {

// One header line, one line per track (number, session, mode, start LBA, sectors, CRC-32 in
// hex, title), then the lead-out, the files and the drive's sidecar if there is one.
std::string TrackTableText(const DiscDescription& disc);

}  // namespace plattmix::discgen
