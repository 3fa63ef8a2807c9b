// The service for virtual drives, chosen when it is needed: udisks2 when its name answers on the
// system bus, else the loop devices and mount(2) when the program runs as root, else none.
#pragma once

#include <memory>

#include "IVirtualDriveService.h"

namespace plattmix::vdrive {

// Null when neither service can be used; MountIso and UnmountIso then show NoServiceText().
std::unique_ptr<IVirtualDriveService> ChooseVirtualDriveService();

}  // namespace plattmix::vdrive
