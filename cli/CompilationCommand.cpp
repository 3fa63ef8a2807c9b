#include "CompilationCommand.h"

#include <ostream>

namespace plattmix::cli {

int RunCompilationCommand(const CliArgs&, std::ostream&, std::ostream& err) {
    err << "compilation: noch nicht verfügbar\n";
    return kExitFailed;
}

}  // namespace plattmix::cli
