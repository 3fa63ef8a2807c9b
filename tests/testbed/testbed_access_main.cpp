// The test bed's guest program for drives the user may not open: the guest script
// (access_guest.sh) runs it as root in place of the drive probe, in the drives variant, with the
// probe's arguments. Linked dynamically with the window: the checks start the window again as
// another user (--window), offscreen.
#include <string_view>

#include "AccessChecks.h"
#include "AccessWindow.h"
#include "ProbeChannel.h"

int main(int argc, char** argv) {
    using namespace plattmix::testbed;
    if (argc == 2 && std::string_view(argv[1]) == "--window")
        return StartTheWindow(argc, argv);
    const ProbeOptions options(argc, argv);
    Channel channel(options.control);
    Report report(channel);
    CheckRefusedDrives(report, options.data + "/testbed_access", options.data + "/plattmix-cli");
    return report.Done();
}
