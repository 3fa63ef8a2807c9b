// Which transport and drive a command works on: a drive node, a disc image, the machine's
// optical drives, or the built-in demo disc where the machine has none.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "ISCSI.h"

namespace plattmix::cli {

struct DriveChoice {
    std::unique_ptr<scsi::ISCSI> transport;
    // The chosen drive's 1-based index; 0 when no --drive was given (all drives are offered,
    // the first is the one a command works on).
    int16_t index = 0;
};

struct DriveChoiceResult {
    std::optional<DriveChoice> choice;
    std::string error;
};

// drive: the --drive value, if any. A path to a regular file is a disc image; anything else
// names a drive node ("/dev/sr0" or "sr0"; "/dev/sg0" when the fall-back transport serves the
// drives). The drive transport is chosen as the window chooses it; without --drive the demo disc
// stands in when that gives no transport or no drive. A drive node the system refuses to open
// (the named one, or the first the transports found) ends in a message that names the node and
// the group that grants access.
DriveChoiceResult ChooseDrive(const std::optional<std::string>& drive);

}  // namespace plattmix::cli
