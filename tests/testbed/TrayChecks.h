// The tray state and the door against the guest's real drives: the state on the node's own
// path after the program's door command and after the QEMU monitor moved the tray, an empty
// drive, nodes that are no drives, and the same through plattmix-cli.
#pragma once

#include <string>

#include "ProbeChannel.h"
#include "TrayState.h"

namespace plattmix::testbed {

// A tray state with the pauses its retries took, for the detail of a check.
struct TrayAnswer {
    int16_t value = scsi::kTrayUnknown;
    int pauses = 0;
    std::string Text() const {
        return "state " + std::to_string(value) + " after " + std::to_string(pauses) + " pauses";
    }
};

// The state of a drive node, or of a transport's drive.
inline TrayAnswer AskTray(const std::string& drive) {
    TrayAnswer answer;
    answer.value = scsi::GetTrayState(drive, [&answer](int) { ++answer.pauses; });
    return answer;
}
inline TrayAnswer AskTray(scsi::ISCSI& transport, const std::string& handle) {
    TrayAnswer answer;
    answer.value = scsi::GetTrayState(transport, handle, [&answer](int) { ++answer.pauses; });
    return answer;
}

// Expects disc A closed in drive 0 and a disc in drive 1; leaves drive 1 empty and closed.
void CheckTray(Report& report, Channel& channel, const std::string& cli);

}  // namespace plattmix::testbed
