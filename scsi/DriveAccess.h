// Why a drive node that exists cannot be opened by this user: the system refuses it, and the
// group that owns the node is the one that grants access. Start-up uses it to tell the user
// instead of silently going on without the drive.
#pragma once

#include <optional>
#include <string>

#include "ISCSI.h"

namespace plattmix::scsi {

struct RefusedDrive {
    std::string node;         // "/dev/sr0"
    std::string group;        // the node's owner group by name, or its number without a name
    bool groupGrants = true;  // joining the group gives access: it may read the node and is
                              // not the administrator's own
    std::string user;         // this user's account name; empty when it has none
};

// Opens the node for reading as the transports do; answers the refusal when the system says
// EACCES or EPERM, nothing when it opens or fails otherwise (no such node, no medium, ...).
std::optional<RefusedDrive> RefusedAccess(const std::string& node);

// The node of the transport's first drive ("/dev/" + its short name) when the system refuses
// it; nothing for a drive that is no node (an image) or when there is no drive.
std::optional<RefusedDrive> RefusedFirstDrive(ISCSI& transport, const std::string& devDir = "/dev");

// The German message: the node, and the group to join followed by a new login.
std::string RefusedAccessMessage(const RefusedDrive& refused);

}  // namespace plattmix::scsi
