#include "AccessChecks.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <vector>

#include "CommandLineChecks.h"
#include "ScsiStatus.h"
#include "SgIo.h"
#include "clsASPI.h"
#include "clsSPTI.h"
#include "modMMC.h"

namespace plattmix::testbed {

namespace {

constexpr const char* kQemuIdent = "QEMU    QEMU DVD-ROM    2.5+";
constexpr gid_t kCdromGroup = 24;
constexpr uint32_t kLba = 16;
constexpr size_t kSector = 2048;
constexpr uint8_t kReadCdUserData = 0x10;

// What the program says to hans about a node.
std::vector<std::string> RefusedLines(const std::string& node) {
    return {"Auf das Laufwerk " + node + " besteht kein Zugriff.",
            "Zugriff haben die Mitglieder der Gruppe \"cdrom\". Nehmen Sie Ihr Benutzerkonto in "
            "diese Gruppe auf (als Administrator: adduser hans cdrom) und melden Sie sich danach "
            "neu an."};
}

CommandOutput RunAs(const std::string& user, const std::string& command) {
    return RunInGuest("su " + user + " -c '" + command + "'");
}

// The window's own lines among what it printed (Qt may add warnings of its own).
CommandOutput WindowLines(CommandOutput run) {
    std::vector<std::string> kept;
    for (auto& line : run.lines) {
        if (line.starts_with("WINDOW "))
            kept.push_back(line.substr(7));
    }
    run.lines = std::move(kept);
    return run;
}

std::vector<std::string> Prefixed(const std::string& prefix, std::vector<std::string> lines) {
    for (auto& line : lines)
        line.insert(0, prefix);
    return lines;
}

bool NodeIsTheGroups(const std::string& node) {
    struct stat status {};
    return ::stat(node.c_str(), &status) == 0 && status.st_uid == 0 &&
           status.st_gid == kCdromGroup && (status.st_mode & 07777) == 0660;
}

// The residual count the kernel reports for READ CD of one sector into two sectors' room, read
// directly, so that a failure below shows whether the kernel or the transport fell short.
int KernelResid(const std::string& node) {
    const int fd = ::open(node.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return -1;
    const auto cdb = modMMC::BuildReadCD(kLba, 1, kReadCdUserData);
    std::vector<uint8_t> buffer(2 * kSector);
    scsi::SgIoRequest request;
    scsi::BuildSgIoRequest(request, cdb, 10, 0, buffer.data(), static_cast<int32_t>(buffer.size()),
                           5);
    const int rc = ::ioctl(fd, SG_IO, &request.header);
    ::close(fd);
    return rc == 0 ? request.header.resid : -1;
}

void CheckShortReads(Report& report, scsi::ISCSI& transport, const std::string& name,
                     const std::string& node) {
    int16_t first = 1;
    std::string handle = transport.DriveHandle(first);
    std::vector<uint8_t> room(2 * kSector), exact(kSector);
    const int32_t readCd = modMMC::ReadCD(transport, handle, kLba, 1, room, kReadCdUserData);
    const int32_t readCdExact = modMMC::ReadCD(transport, handle, kLba, 1, exact, kReadCdUserData);
    const int32_t read10 = modMMC::Read10(transport, handle, kLba, 1, room);
    std::array<uint8_t, modMMC::kTocReplyLength> toc{};
    const int32_t readToc = modMMC::ReadTOC(transport, handle, false, toc);
    report.Check("short." + name,
                 readCd == scsi::kStatusNotDelivered && read10 == scsi::kStatusNotDelivered &&
                     readCdExact == scsi::kStatusGood && readToc == scsi::kStatusGood,
                 "READ CD short " + std::to_string(readCd) + " (kernel resid " +
                     std::to_string(KernelResid(node)) + "), exact " +
                     std::to_string(readCdExact) + "; READ(10) short " + std::to_string(read10) +
                     "; READ TOC " + std::to_string(readToc));
}

}  // namespace

void CheckRefusedDrives(Report& report, const std::string& self, const std::string& cli) {
    bool setUp = true;
    for (const char* node : {"/dev/sr0", "/dev/sr1", "/dev/sg0", "/dev/sg1"})
        setUp = setUp && NodeIsTheGroups(node);
    if (!report.Check("access.nodes", setUp, "sr0, sr1, sg0, sg1 are root:cdrom 0660"))
        return;

    const CommandOutput drives = RunAs("hans", cli + " drives");
    report.Check("access.cli.drives", drives.code == 1 && drives.lines == RefusedLines("/dev/sr0"),
                 drives.Text());
    const CommandOutput named = RunAs("hans", cli + " toc --drive /dev/sr1");
    report.Check("access.cli.named", named.code == 1 && named.lines == RefusedLines("/dev/sr1"),
                 named.Text());
    const CommandOutput window = WindowLines(RunAs("hans", self + " --window"));
    auto shown = Prefixed("BOX ", RefusedLines("/dev/sr0"));
    shown.push_back("DRIVES 0");
    report.Check("access.window", window.code == 0 && window.lines == shown, window.Text());

    // A member of the group gets the drives, from both.
    const std::vector<std::string> listed{std::string("/dev/sr0:  ") + kQemuIdent,
                                          std::string("/dev/sr1:  ") + kQemuIdent};
    const CommandOutput member = RunAs("dora", cli + " drives");
    report.Check("access.member.cli", member.code == 0 && member.lines == listed, member.Text());
    const CommandOutput memberWindow = WindowLines(RunAs("dora", self + " --window"));
    auto filled = Prefixed("DRIVE ", listed);
    filled.insert(filled.begin(), "DRIVES 2");
    report.Check("access.member.window", memberWindow.code == 0 && memberWindow.lines == filled,
                 memberWindow.Text());
}

void CheckShortTransfers(Report& report) {
    scsi::clsSPTI spti;
    CheckShortReads(report, spti, "pass-through", "/dev/sr0");
    scsi::clsASPI aspi;
    CheckShortReads(report, aspi, "fall-back", "/dev/sg0");
}

}  // namespace plattmix::testbed
