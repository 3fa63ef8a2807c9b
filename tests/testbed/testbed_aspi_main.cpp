// The test bed's guest program for the fall-back transport: the guest script (aspi_guest.sh)
// runs it in place of the drive probe in the sg-only, no-driver and mount variants. Linked
// dynamically: the transport loads its layer library at run time, which a static program cannot do.
// With --select it only starts as the window does and prints what it chose.
#include <iostream>
#include <string>
#include <string_view>

#include "AspiChecks.h"
#include "AspiWindowChecks.h"
#include "ProbeChannel.h"

int main(int argc, char** argv) {
    using namespace plattmix::testbed;
    if (argc == 2 && std::string_view(argv[1]) == "--select")
        return StartLikeTheWindow(std::cout);
    const ProbeOptions options(argc, argv);
    Channel channel(options.control);
    Report report(channel);
    const std::string self = options.data + "/testbed_aspi";
    const std::string cli = options.data + "/testbed_cli_shared";
    if (options.variant == "sg-only") {
        CheckFallbackTransport(report, channel, options.data, self, cli);
        CheckWindowPathsWithoutSr(report, channel);
    } else if (options.variant == "mount") {
        CheckDriveRootBesideSr(report);
    } else if (options.variant == "no-driver") {
        CheckNoTransport(report, channel, self, cli);
    } else {
        report.Check("aspi.variant", false, "no checks for variant '" + options.variant + "'");
    }
    return report.Done();
}
