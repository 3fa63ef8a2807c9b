#include "AccessChecks.h"

#include <sys/stat.h>

#include <vector>

#include "CommandLineChecks.h"

namespace plattmix::testbed {

namespace {

constexpr gid_t kCdromGroup = 24;

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

    // With only the generic nodes open to everyone, the fall-back transport serves hans quietly.
    for (const char* node : {"/dev/sg0", "/dev/sg1"})
        ::chmod(node, 0666);
    const CommandOutput generic = RunAs("hans", cli + " drives");
    for (const char* node : {"/dev/sg0", "/dev/sg1"})
        ::chmod(node, 0660);
    report.Check("access.fall-back",
                 generic.code == 0 &&
                     generic.lines == std::vector<std::string>{"/dev/sg0:  " TESTBED_QEMU_DRIVE,
                                                               "/dev/sg1:  " TESTBED_QEMU_DRIVE},
                 generic.Text());

    // A member of the group gets the drives, from both.
    const std::vector<std::string> listed{"/dev/sr0:  " TESTBED_QEMU_DRIVE,
                                          "/dev/sr1:  " TESTBED_QEMU_DRIVE};
    const CommandOutput member = RunAs("dora", cli + " drives");
    report.Check("access.member.cli", member.code == 0 && member.lines == listed, member.Text());
    const CommandOutput memberWindow = WindowLines(RunAs("dora", self + " --window"));
    auto filled = Prefixed("DRIVE ", listed);
    filled.insert(filled.begin(), "DRIVES 2");
    report.Check("access.member.window", memberWindow.code == 0 && memberWindow.lines == filled,
                 memberWindow.Text());
}

}  // namespace plattmix::testbed
