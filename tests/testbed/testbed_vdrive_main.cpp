// The test bed's guest program for virtual drives: run by the harness in place of the drive
// probe (same options, same control port), with the mount variant's loop and ISO 9660 drivers.
#include "LoopDriveService.h"
#include "MountChecks.h"
#include "ProbeChannel.h"

int main(int argc, char** argv) {
    const plattmix::testbed::ProbeOptions options(argc, argv);
    plattmix::testbed::Channel channel(options.control);
    plattmix::testbed::Report report(channel);
    plattmix::vdrive::LoopDriveService service;
    plattmix::testbed::CheckVirtualDrives(report, options.data, service, "vdrive");
    return report.Done();
}
