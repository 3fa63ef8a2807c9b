// Which transport the window uses for the whole run: the pass-through transport, the fall-back,
// or, where the machine has no drive, the disc-image drive with the images listed in the
// settings file.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ISCSI.h"
#include "TransportSelection.h"

namespace plattmix::window {

// The section of the settings file that lists disc images, one path per line.
inline constexpr const char* kImageSection = "Abbilder";

// The pass-through transport over the system's drive nodes.
std::unique_ptr<scsi::ISCSI> CreatePassThroughTransport();
// The fall-back transport over the SCSI generic driver, through its layer library.
std::unique_ptr<scsi::ISCSI> CreateFallbackTransport();

// A transport with no drives: the window's drive list stays empty.
std::unique_ptr<scsi::ISCSI> CreateTransportWithoutDrives();

struct ImageDrives {
    std::unique_ptr<scsi::ISCSI> transport;  // nothing when no image could be loaded
    std::vector<std::string> failures;       // one text per image that failed, naming it
};

// A disc-image drive per line; blank lines are skipped, failing images reported.
ImageDrives LoadImageDrives(const std::vector<std::string>& imagePaths);

// The one message that tells the user about every image that failed.
std::string ImageFailureMessage(const std::vector<std::string>& failures);

}  // namespace plattmix::window
