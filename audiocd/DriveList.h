// The drive list: one entry per optical drive of the transport, named by its node and its
// INQUIRY identification.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ISCSI.h"

namespace plattmix::audiocd {

struct DriveEntry {
    std::string text;   // "/dev/sr0:  " followed by the 28 identification characters
    int16_t index = 0;  // the drive's 1-based index in the transport's list
};

// A warning for the user (shown with the exclamation icon by the window).
using WarnFn = std::function<void(std::string_view)>;

// The name a drive goes by in its entry, from the transport's DriveChar: a bare name is a node
// in /dev ("sg1" is "/dev/sg1"); a name with a slash (an image file) stays as it is.
std::string DriveEntryName(const std::string& driveChar);
// The same for a drive handle of the transport.
std::string DriveNameOf(scsi::ISCSI& transport, const std::string& handle);

// The entry text for a drive: its name, ":  ", then vendor, product and revision as the drive
// pads them, NULs removed.
std::string DriveEntryText(const std::string& driveChar, std::span<const uint8_t> inquiry);

// The drive's 28 identification characters (vendor, product, revision) without the blanks at
// either end, as the settings key a drive's values; empty when the drive does not answer.
std::string DriveIdentification(scsi::ISCSI& transport, std::string handle);

// Identifies one drive; warns "INQUIRY für Laufwerk N gescheitert." and adds nothing when the
// drive does not answer.
void AddDriveEntry(scsi::ISCSI& transport, int16_t index, std::vector<DriveEntry>& entries,
                   const WarnFn& warn);

std::vector<DriveEntry> FillDriveList(scsi::ISCSI& transport, const WarnFn& warn);

}  // namespace plattmix::audiocd
