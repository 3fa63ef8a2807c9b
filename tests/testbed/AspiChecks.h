// The fall-back transport in the test bed's guest, booted without the sr driver (sg-only: the
// two drives are /dev/sg0 and /dev/sg1, drive 0 holding disc A, drive 1 empty) or without
// either driver (no-driver). The program's own start, the drives side by side with the image
// drive, the layer's time-outs, and plattmix-cli with the same choice of transport.
#pragma once

#include <iosfwd>
#include <string>

#include "ProbeChannel.h"

namespace plattmix::testbed {

// What the window does at its start, printed: the chosen transport's name and its drive list,
// or the two-line message when nothing works; 1 (the program ends) then, else 0.
int StartLikeTheWindow(std::ostream& out);

// self: this program's path (run again with --select); cli: plattmix-cli linked the same way.
void CheckFallbackTransport(Report& report, Channel& channel, const std::string& data,
                            const std::string& self, const std::string& cli);
void CheckNoTransport(Report& report, Channel& channel, const std::string& self,
                      const std::string& cli);

}  // namespace plattmix::testbed
