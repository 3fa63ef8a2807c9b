// The test bed's guest program for virtual drives through a real udisksd: the guest script
// (udisks_guest.sh) starts udevd and a system bus that starts udisksd on demand, then runs this
// in place of the drive probe. Linked dynamically: sd-bus has no static library.
#include <string>
#include <string_view>

#include "MountChecks.h"
#include "ProbeChannel.h"
#include "ServiceChoice.h"

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
    // The program's own choice: udisks2 must answer on the system bus (started by the bus).
    const auto service = plattmix::vdrive::ChooseVirtualDriveService();
    const std::string name = service ? service->Name() : "none";
    if (report.Check("udisks.service", name == "udisks2", "chosen: " + name))
        plattmix::testbed::CheckVirtualDrives(report, data, *service, "udisks");
    report.Done();
    return report.Failed() == 0 ? 0 : 1;
}
