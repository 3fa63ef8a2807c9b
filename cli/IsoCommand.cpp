#include "IsoCommand.h"

#include <ostream>

namespace plattmix::cli {

int RunIsoCommand(const CliArgs&, std::ostream&, std::ostream& err, bool) {
    err << "iso: noch nicht verfügbar\n";
    return kExitFailed;
}

}  // namespace plattmix::cli
