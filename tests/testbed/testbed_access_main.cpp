// The test bed's guest program for drives the user may not open: the guest script
// (access_guest.sh) runs it as root in place of the drive probe, in the drives variant. Linked
// dynamically with the window: the checks start the window again as another user (--window),
// offscreen.
#include <string>
#include <string_view>

#include "AccessChecks.h"
#include "AccessWindow.h"
#include "ProbeChannel.h"

int main(int argc, char** argv) {
    using namespace plattmix::testbed;
    if (argc == 2 && std::string_view(argv[1]) == "--window")
        return StartTheWindow(argc, argv);
    std::string control, data = "/testbed";
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string_view key = argv[i];
        if (key == "--control")
            control = argv[i + 1];
        if (key == "--data")
            data = argv[i + 1];
    }
    Channel channel(control);
    Report report(channel);
    CheckRefusedDrives(report, data + "/testbed_access", data + "/plattmix-cli");
    report.Done();
    return report.Failed() == 0 ? 0 : 1;
}
