// The test bed's guest program for virtual drives through a real udisksd: the guest script
// (udisks_guest.sh) starts udevd and a system bus that starts udisksd on demand, then runs this
// in place of the drive probe. Linked dynamically: sd-bus has no static library.
#include <string>

#include "MountChecks.h"
#include "ProbeChannel.h"
#include "ServiceChoice.h"

int main(int argc, char** argv) {
    const plattmix::testbed::ProbeOptions options(argc, argv);
    plattmix::testbed::Channel channel(options.control);
    plattmix::testbed::Report report(channel);
    // The program's own choice: udisks2 must answer on the system bus (started by the bus).
    const auto service = plattmix::vdrive::ChooseVirtualDriveService();
    const std::string name = service ? service->Name() : "none";
    if (report.Check("udisks.service", name == "udisks2", "chosen: " + name))
        plattmix::testbed::CheckVirtualDrives(report, options.data, *service, "udisks");
    return report.Done();
}
