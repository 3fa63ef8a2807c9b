#include "BurnCommand.h"

#include <ostream>

namespace plattmix::cli {

int RunBurnCommand(const CliArgs&, std::ostream&, std::ostream& err, bool) {
    err << "burn: noch nicht verfügbar\n";
    return kExitFailed;
}

int RunEraseCommand(const CliArgs&, std::ostream&, std::ostream& err, bool) {
    err << "erase: noch nicht verfügbar\n";
    return kExitFailed;
}

}  // namespace plattmix::cli
