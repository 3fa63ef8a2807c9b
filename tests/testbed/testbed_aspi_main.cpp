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
    std::string control, data = "/testbed", variant;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string_view key = argv[i];
        if (key == "--control")
            control = argv[i + 1];
        if (key == "--data")
            data = argv[i + 1];
        if (key == "--variant")
            variant = argv[i + 1];
    }
    Channel channel(control);
    Report report(channel);
    const std::string self = data + "/testbed_aspi", cli = data + "/testbed_cli_shared";
    if (variant == "sg-only") {
        CheckFallbackTransport(report, data, self, cli);
        CheckWindowPathsWithoutSr(report, channel, data);
    } else if (variant == "mount") {
        CheckDriveRootBesideSr(report);
    } else if (variant == "no-driver")
        CheckNoTransport(report, self, cli);
    else
        report.Check("aspi.variant", false, "no checks for variant '" + variant + "'");
    report.Done();
    return report.Failed() == 0 ? 0 : 1;
}
