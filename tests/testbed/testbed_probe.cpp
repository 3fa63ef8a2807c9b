// Runs inside the test bed's guest, next to two emulated IDE CD/DVD drives: drive 0 holds disc A,
// drive 1 is empty. It drives them through the pass-through transport and plattmix-cli as the
// program does, and reports over the control port:
//   CHECK <name> PASS|FAIL <detail>   one per check
//   INFO <name> <text>                for the record
//   REQUEST <n> <action> <drive> ...  asks the harness to work a drive through the QEMU monitor;
//                                     the harness answers "ACK <n> ok|error <text>"
//   DONE pass=<n> fail=<n>
#include <string>

#include "CommandLineChecks.h"
#include "ProbeChannel.h"
#include "SideBySideChecks.h"
#include "TreeChecks.h"
#include "clsSPTI.h"

namespace {

using namespace plattmix;
using testbed::CliStep;

// While the drives are as the guest booted them.
constexpr CliStep kDriveSteps[] = {
    {"drives", nullptr, "drives", 0,
     "/dev/sr0:  " TESTBED_QEMU_DRIVE "\n/dev/sr1:  " TESTBED_QEMU_DRIVE, nullptr},
    {"toc", nullptr, "toc", 0, TESTBED_DISC_A_TOC, nullptr},
    {"toc.sr0", nullptr, "toc --drive /dev/sr0", 0, TESTBED_DISC_A_TOC, nullptr},
    {"toc.empty", nullptr, "toc --drive /dev/sr1", 1, "Keine Disk im Laufwerk", nullptr},
    {"not-a-drive", nullptr, "drives --drive /dev/sr7", 1, "Kein optisches Laufwerk: /dev/sr7",
     nullptr},
};

// The tray: moved by the program's door, then by the monitor; an empty drive; no drive at all.
// Expects disc A closed in drive 0 and drive 1 closed.
constexpr CliStep kTraySteps[] = {
    {"tray.closed", nullptr, "tray --drive /dev/sr0", 0, "0", nullptr},
    {"tray.open", nullptr, "tray --drive /dev/sr0 open", 0, "", "ok open medium"},
    {"tray.opened", nullptr, "tray --drive /dev/sr0", 0, "1", nullptr},
    {"tray.close", nullptr, "tray --drive /dev/sr0 close", 0, "", "ok closed medium"},
    {"tray.shut", nullptr, "tray --drive /dev/sr0", 0, "0", nullptr},
    {"tray.monitor-open", "open-tray 0", "tray --drive /dev/sr0", 0, "1", nullptr},
    {"tray.monitor-close", "close-tray 0", "tray --drive /dev/sr0", 0, "0", nullptr},
    {"tray.empty-open", "eject 1", "tray --drive /dev/sr1", 0, "1", nullptr},
    {"tray.empty-closed", "close-tray 1", "tray --drive sr1", 0, "0", nullptr},
    {"tray.not-a-drive", nullptr, "tray --drive /dev/sr9", 1, "-1", nullptr},
    {"tray.no-door", nullptr, "tray --drive /dev/sr9 open", 1,
     "Kein optisches Laufwerk: /dev/sr9\nKonnte Laufwerk nicht öffnen! Bitte manuell versuchen!",
     nullptr},
};

}  // namespace

int main(int argc, char** argv) {
    const testbed::ProbeOptions options(argc, argv);
    testbed::Channel channel(options.control);
    testbed::Report report(channel);
    const std::string cli = options.data + "/plattmix-cli";
    if (options.variant == "drives") {
        testbed::RunCommandSteps(report, channel, cli, "cli.", kDriveSteps);
        scsi::clsSPTI spti;
        testbed::CheckSideBySide(report, channel, spti, "", options.data);
        testbed::RunCommandSteps(report, channel, cli, "cli.", kTraySteps);
    } else if (options.variant == "mount") {
        // The images the harness put into the drives, as the kernel mounts them, against the
        // listings of their sources.
        testbed::CheckMountedTrees(report, options.data);
    }
    return report.Done();
}
