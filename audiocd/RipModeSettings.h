// The secure mode's settings in Diskolo.ini: the switch and the AccurateRip server in section
// "Diskolo", each drive's read offset in section "Laufwerksversatz" under the drive's
// identification. The window and the command line read them alike.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ISCSI.h"
#include "RipJob.h"
#include "SecureRipJob.h"
#include "modSettings.h"

namespace plattmix::audiocd {

inline constexpr const char* kSecureSection = "Diskolo";
inline constexpr const char* kSecureKey = "Sicher";  // 0/1
inline constexpr const char* kAccurateRipServerKey = "AccurateRip";
inline constexpr const char* kOffsetSection = "Laufwerksversatz";

// The switch: on when the key holds a number other than 0.
bool SecureModeSetting(const shell::SettingsPaths& paths);

// The server the settings name, kAccurateRipServer when they name none.
std::string AccurateRipServerSetting(const shell::SettingsPaths& paths);

// A whole number as the settings and the command line give it ("+667", "-6", "30", blanks
// around it allowed); nothing for other text.
std::optional<int> ParseSignedNumber(std::string_view text);

// The read offset kept for the drive; 0 when none is kept or the value is no offset.
int DriveOffsetSetting(const shell::SettingsPaths& paths, const std::string& driveId);

// The secure job's parameters around rip: the drive's identification and its offset, the
// server, the disc's CD-Text. The transfer and the format's extension are the caller's.
SecureRipParams SecureRipParamsFor(scsi::ISCSI& transport, const RipJobParams& rip,
                                   const shell::SettingsPaths& paths);

}  // namespace plattmix::audiocd
