#include "MountCommand.h"

#include <ostream>

namespace plattmix::cli {

int RunMountCommand(const CliArgs&, std::ostream&, std::ostream& err) {
    err << "mount: noch nicht verfügbar\n";
    return kExitFailed;
}

int RunUnmountCommand(const CliArgs&, std::ostream&, std::ostream& err) {
    err << "unmount: noch nicht verfügbar\n";
    return kExitFailed;
}

}  // namespace plattmix::cli
