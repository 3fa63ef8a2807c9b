// plattmix-cli mount and unmount: an ISO image attached as a drive, and detached again.
#pragma once

#include <iosfwd>

#include "CliArgs.h"
#include "IVirtualDriveService.h"

namespace plattmix::cli {

// With the service that answers (udisks2, else loop devices as root). The messages the window
// shows in its boxes are printed one a line: to out when the call did what was asked, else to
// err, followed by the service's reason. mount ends with the mount point on a line of its own.
int RunMountCommand(const CliArgs& args, std::ostream& out, std::ostream& err);
int RunUnmountCommand(const CliArgs& args, std::ostream& out, std::ostream& err);

// The same with a given service; null stands for none available.
int RunMountCommand(const CliArgs& args, vdrive::IVirtualDriveService* service, std::ostream& out,
                    std::ostream& err);
int RunUnmountCommand(const CliArgs& args, vdrive::IVirtualDriveService* service, std::ostream& out,
                      std::ostream& err);

}  // namespace plattmix::cli
