// The play command with the desktop's audio output.
#include "AlsaSink.h"
#include "TrayCommand.h"

namespace plattmix::cli {

int RunPlayCommand(const CliArgs& args, std::ostream& out, std::ostream& err, bool terminal) {
    return RunPlayCommand(args, out, err, terminal, audiocd::AlsaSinkFactory());
}

}  // namespace plattmix::cli
