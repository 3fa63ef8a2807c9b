#include "TrayCommand.h"

#include <ostream>

namespace plattmix::cli {

int RunTrayCommand(const CliArgs&, std::ostream&, std::ostream& err) {
    err << "tray: noch nicht verfügbar\n";
    return kExitFailed;
}

int RunPlayCommand(const CliArgs&, std::ostream&, std::ostream& err, bool) {
    err << "play: noch nicht verfügbar\n";
    return kExitFailed;
}

}  // namespace plattmix::cli
