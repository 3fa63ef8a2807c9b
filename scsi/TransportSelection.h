// The choice of the one transport for the whole run: the pass-through transport first, the
// fall-back only when the first is not both installed and initialized.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "DriveAccess.h"
#include "ISCSI.h"

namespace plattmix::scsi {

// Shown (exclamation icon, OK) when no transport works; the program then ends.
inline constexpr const char* kNoTransportMessage =
    "Kein funktionierendes Interface gefunden!\r\nProgramm kann nicht verwendet werden.";

using TransportFactory = std::function<std::unique_ptr<ISCSI>()>;

struct SelectedTransport {
    std::unique_ptr<ISCSI> transport;  // nothing when none works
    // The first drive node the system refused to open on the way; then the machine has a drive
    // that this user may not use, which is what the user must be told.
    std::optional<RefusedDrive> refused;
};

// Creates the first transport and asks Installed, then Initialized; if either is false, or the
// system refuses to open its first drive, the first is released and the fall-back is created
// and judged the same. A working transport without drives is not taken over a refused drive.
// devDir is where the drives' nodes are.
SelectedTransport SelectUsableTransport(const TransportFactory& first,
                                        const TransportFactory& fallback,
                                        const std::string& devDir = "/dev");

// The transport SelectUsableTransport chooses; nothing when none works.
std::unique_ptr<ISCSI> SelectTransport(const TransportFactory& first,
                                       const TransportFactory& fallback);

}  // namespace plattmix::scsi
