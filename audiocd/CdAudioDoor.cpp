#include "CdAudioDoor.h"

#include <algorithm>
#include <cctype>

#include "CdAudioCommand.h"
#include "TrayState.h"

namespace plattmix::audiocd {

namespace {

std::string Trim(const std::string& text) {
    const auto blank = [](unsigned char c) { return std::isspace(c) != 0; };
    const auto first = std::find_if_not(text.begin(), text.end(), blank);
    const auto last = std::find_if_not(text.rbegin(), text.rend(), blank).base();
    return first < last ? std::string(first, last) : std::string();
}

}  // namespace

std::string DriveFromEntry(const std::string& entry) {
    std::string drive = Trim(entry.substr(0, entry.find(":  ")));
    if (!drive.empty() && drive.back() == ':')
        drive.pop_back();
    return drive;
}

std::string DoorAlias(const std::string& drive) {
    const size_t slash = drive.find_last_of('/');
    const std::string name = slash == std::string::npos ? drive : drive.substr(slash + 1);
    std::string alias;
    std::copy_if(name.begin(), name.end(), std::back_inserter(alias),
                 [](unsigned char c) { return std::isalnum(c) != 0; });
    return alias + "CDDrive";
}

bool OpenCloseCD(const MciExecuteFn& execute, const std::string& drive, bool openDoor) {
    const std::string name = DriveFromEntry(drive);
    if (name.empty() || !execute)
        return false;
    const std::string alias = DoorAlias(name);
    if (!execute("Open " + MciQuote(name + ":") + " Type CDAudio Alias " + alias))
        return false;
    const bool moved = execute("Set " + alias + (openDoor ? " Door Open" : " Door Closed"));
    // Closed even when the door did not move, or the alias would stay taken and every later
    // press would fail at "Open".
    execute("Close " + alias);
    return moved;
}

bool OpenCloseCD(CdAudio& cdAudio, const std::string& drive, bool openDoor) {
    return OpenCloseCD([&cdAudio](const std::string& command) { return cdAudio.Execute(command); },
                       drive, openDoor);
}

DoorMove PressEjectButton(int16_t trayState, CdAudio& cdAudio, const std::string& drive) {
    if (trayState == scsi::kTrayClosed)
        return OpenCloseCD(cdAudio, drive, true) ? DoorMove::Opened : DoorMove::OpenFailed;
    if (trayState == scsi::kTrayOpen)
        return OpenCloseCD(cdAudio, drive, false) ? DoorMove::Closed : DoorMove::CloseFailed;
    return DoorMove::None;
}

}  // namespace plattmix::audiocd
