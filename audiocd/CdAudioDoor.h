// The door of a drive moved through the cdaudio device, as the eject button does it: open a
// door device under the drive's own alias, set its door open or closed, close the device.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "CdAudio.h"

namespace plattmix::audiocd {

// Sends one command string the way failures are shown to the user; true on success.
using MciExecuteFn = std::function<bool(const std::string& command)>;

// The drive an entry of the drive list names: the text before ":  " (the whole text when
// there is none), trimmed, without a trailing ":".
std::string DriveFromEntry(const std::string& entry);
// The door device's alias: the letters and digits of the drive's last path part, then
// "CDDrive" ("/dev/sr0" gives "sr0CDDrive").
std::string DoorAlias(const std::string& drive);

// "Open DRIVE: Type CDAudio Alias A", then "Set A Door Open" (or "Door Closed"), then
// "Close A". Nothing is sent after a failed Open, and nothing at all for an empty drive name.
// True when the door moved.
bool OpenCloseCD(const MciExecuteFn& execute, const std::string& drive, bool openDoor);
bool OpenCloseCD(CdAudio& cdAudio, const std::string& drive, bool openDoor);

// What the eject button did.
enum class DoorMove { Opened, Closed, OpenFailed, CloseFailed, None };
// The eject button once the player has stopped: a closed tray (state 0) is opened, an open one
// (1) closed with OpenCloseCD; an unknown state (-1) moves nothing.
DoorMove PressEjectButton(int16_t trayState, CdAudio& cdAudio, const std::string& drive);

}  // namespace plattmix::audiocd
