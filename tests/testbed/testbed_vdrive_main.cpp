// The test bed's guest program for virtual drives: run by the harness in place of the drive
// probe (same options, same control port), with the mount variant's loop and ISO 9660 drivers.
#include <string>
#include <string_view>

#include "LoopDriveService.h"
#include "MountChecks.h"
#include "ProbeChannel.h"

int main(int argc, char** argv) {
    std::string control, data = "/testbed";
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string_view key = argv[i];
        if (key == "--control")
            control = argv[i + 1];
        if (key == "--data")
            data = argv[i + 1];
    }
    plattmix::testbed::Channel channel(control);
    plattmix::testbed::Report report(channel);
    plattmix::vdrive::LoopDriveService service;
    plattmix::testbed::CheckVirtualDrives(report, data, service, "vdrive");
    report.Done();
    return report.Failed() == 0 ? 0 : 1;
}
