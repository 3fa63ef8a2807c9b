// The test bed's guest program for drives the user may not open: the guest script
// (access_guest.sh) runs it as root in place of the drive probe, in the drives variant, with the
// probe's arguments. Linked dynamically with the window: the checks start the window again as
// another user (--window), offscreen.
#include <string>
#include <string_view>

#include "AccessChecks.h"
#include "AccessWindow.h"
#include "ProbeChannel.h"

namespace {
// The value after key among the arguments; empty without one.
std::string Option(int argc, char** argv, std::string_view key) {
    for (int i = 1; i + 1 < argc; ++i) {
        if (key == argv[i])
            return argv[i + 1];
    }
    return {};
}
}  // namespace

int main(int argc, char** argv) {
    using namespace plattmix::testbed;
    if (argc == 2 && std::string_view(argv[1]) == "--window")
        return StartTheWindow(argc, argv);
    const std::string data = Option(argc, argv, "--data");
    Channel channel(Option(argc, argv, "--control"));
    Report report(channel);
    CheckRefusedDrives(report, data + "/testbed_access", data + "/plattmix-cli");
    report.Done();
    return report.Failed() == 0 ? 0 : 1;
}
