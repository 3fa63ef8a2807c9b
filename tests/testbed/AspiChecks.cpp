#include "AspiChecks.h"

#include <ostream>
#include <vector>

#include "CommandLineChecks.h"
#include "DriveList.h"
#include "SideBySideChecks.h"
#include "TransportChoice.h"
#include "TransportSelection.h"
#include "clsASPI.h"

namespace plattmix::testbed {

namespace {

constexpr CliStep kCliSteps[] = {
    {"drives", nullptr, "drives", 0,
     "/dev/sg0:  " TESTBED_QEMU_DRIVE "\n/dev/sg1:  " TESTBED_QEMU_DRIVE, nullptr},
    {"toc", nullptr, "toc", 0, TESTBED_DISC_A_TOC, nullptr},
    {"toc.sg0", nullptr, "toc --drive /dev/sg0", 0, TESTBED_DISC_A_TOC, nullptr},
    {"toc.empty", nullptr, "toc --drive sg1", 1, "Keine Disk im Laufwerk", nullptr},
};
constexpr CliStep kNoDriverSteps[] = {
    {"none", nullptr, "toc --drive /dev/sg0", 1, "Kein optisches Laufwerk: /dev/sg0", nullptr},
};

}  // namespace

int StartLikeTheWindow(std::ostream& out) {
    auto transport =
        scsi::SelectTransport(window::CreatePassThroughTransport, window::CreateFallbackTransport);
    if (!transport)
        transport = window::LoadImageDrives({}).transport;  // no images configured
    if (!transport) {
        out << scsi::kNoTransportMessage << '\n';
        return 1;
    }
    out << transport->Interface() << '\n';
    for (const auto& entry : audiocd::FillDriveList(*transport, {}))
        out << entry.text << '\n';
    return 0;
}

void CheckFallbackTransport(Report& report, Channel& channel, const std::string& data,
                            const std::string& self, const std::string& cli) {
    // The start chooses the fall-back: there is no sr drive.
    const CommandOutput start = RunInGuest(self + " --select");
    report.Check(
        "aspi.start",
        start.code == 0 &&
            start.lines == std::vector<std::string>{"ASPI", "/dev/sg0:  " TESTBED_QEMU_DRIVE,
                                                    "/dev/sg1:  " TESTBED_QEMU_DRIVE},
        start.Text());

    // A wrong host, target or LUN in a handle would send the commands to the other drive.
    scsi::clsASPI aspi;
    CheckSideBySide(report, channel, aspi, "aspi.", data);
    RunCommandSteps(report, channel, cli, "aspi.cli.", kCliSteps);
}

void CheckNoTransport(Report& report, Channel& channel, const std::string& self,
                      const std::string& cli) {
    // Neither transport works: the start shows the two-line message and ends.
    const CommandOutput start = RunInGuest(self + " --select");
    report.Check(
        "aspi.start.none",
        start.code == 1 &&
            start.lines == std::vector<std::string>{"Kein funktionierendes Interface gefunden!\r",
                                                    "Programm kann nicht verwendet werden."},
        start.Text());
    RunCommandSteps(report, channel, cli, "aspi.cli.", kNoDriverSteps);
}

}  // namespace plattmix::testbed
