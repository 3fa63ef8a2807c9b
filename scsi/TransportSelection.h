// The choice of the one transport for the whole run: the pass-through transport first, the
// fall-back only when the first is not both installed and initialized.
#pragma once

#include <functional>
#include <memory>

#include "ISCSI.h"

namespace plattmix::scsi {

// Shown (exclamation icon, OK) when no transport works; the program then ends.
inline constexpr const char* kNoTransportMessage =
    "Kein funktionierendes Interface gefunden!\r\nProgramm kann nicht verwendet werden.";

using TransportFactory = std::function<std::unique_ptr<ISCSI>()>;

// Creates the first transport and asks Installed, then Initialized; if either is false, the
// first is released and the fall-back is created and asked the same. Nothing when neither
// works.
std::unique_ptr<ISCSI> SelectTransport(const TransportFactory& first,
                                       const TransportFactory& fallback);

}  // namespace plattmix::scsi
