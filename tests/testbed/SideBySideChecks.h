// The guest's QEMU drives side by side with the program's disc-image drive holding the same
// images, so that the emulator cannot drift from a real drive: every command goes to both and
// the answers are compared, byte for byte where a real drive must agree. The QEMU drives are
// reached through a transport (pass-through or fall-back), so the comparison also proves that the
// transport delivers the drive's replies and sense unchanged.
#pragma once

#include <string>

#include "ISCSI.h"
#include "ProbeChannel.h"

namespace plattmix::testbed {

// real: the transport with QEMU's two drives, drive 0 holding disc A (data/disc-a.iso), drive 1
// empty. Moves drive 0's tray and puts disc B into drive 1 and takes it out again; leaves drive 0
// closed with disc A and drive 1 empty and closed. Checks are named prefix + "same.<what>".
void CheckSideBySide(Report& report, Channel& channel, scsi::ISCSI& real, const std::string& prefix,
                     const std::string& data);

}  // namespace plattmix::testbed
