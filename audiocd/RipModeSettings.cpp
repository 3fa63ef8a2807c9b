#include "RipModeSettings.h"

#include <charconv>

#include "AccurateRipFetch.h"
#include "DriveList.h"
#include "ProfileFile.h"

namespace plattmix::audiocd {

std::optional<int> ParseSignedNumber(std::string_view text) {
    text = shell::profile::TrimBlanks(text);
    if (text.starts_with('+'))
        text.remove_prefix(1);
    int value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || ec != std::errc{} || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

bool SecureModeSetting(const shell::SettingsPaths& paths) {
    return ParseSignedNumber(shell::ReadIni(paths, kSecureSection, kSecureKey)).value_or(0) != 0;
}

std::string AccurateRipServerSetting(const shell::SettingsPaths& paths) {
    const std::string server = shell::ReadIni(paths, kSecureSection, kAccurateRipServerKey);
    const std::string_view trimmed = shell::profile::TrimBlanks(server);
    return trimmed.empty() ? std::string(kAccurateRipServer) : std::string(trimmed);
}

int DriveOffsetSetting(const shell::SettingsPaths& paths, const std::string& driveId) {
    if (driveId.empty())
        return 0;
    return ParseSignedNumber(shell::ReadIni(paths, kOffsetSection, driveId)).value_or(0);
}

SecureRipParams SecureRipParamsFor(scsi::ISCSI& transport, const RipJobParams& rip,
                                   const shell::SettingsPaths& paths) {
    SecureRipParams params;
    params.rip = rip;
    params.driveName = DriveIdentification(transport, rip.handle);
    params.offset = DriveOffsetSetting(paths, params.driveName);
    params.accurateRipServer = AccurateRipServerSetting(paths);
    params.cdText = ReadCdText(transport, rip.handle);
    return params;
}

}  // namespace plattmix::audiocd
