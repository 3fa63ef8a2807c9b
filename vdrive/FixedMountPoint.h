// The program's own mount point for an attached image, one fixed path per service.
//
// With the loop devices (root without udisks) the program mounts the volume itself, at
// kRootMountPoint. udisks2 chooses its mount points on its own (/media/USER/LABEL), so there the
// program's mount point is a symbolic link in the user's runtime folder that leads to the folder
// udisks chose. Either way the fixed path shows the attached image's files, it is what the
// messages report as the drive, and both live in /run, which is emptied at start-up just as the
// attachments end with the system.
#pragma once

#include <string>

namespace plattmix::vdrive {

inline constexpr const char* kRootMountPoint = "/run/plattmix/L";

// $XDG_RUNTIME_DIR/plattmix/L; without that variable /run/user/UID/plattmix/L when the folder
// /run/user/UID exists, else ~/.cache/plattmix/L.
std::string UserMountPointLink();

}  // namespace plattmix::vdrive
