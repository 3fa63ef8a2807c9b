#include "CommandLineChecks.h"

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <sstream>
#include <vector>

namespace plattmix::testbed {

std::string CommandOutput::Text() const {
    std::string text = "exit " + std::to_string(code) + ":";
    for (const auto& line : lines)
        text += " [" + line + "]";
    return text;
}

CommandOutput RunInGuest(const std::string& command) {
    CommandOutput out;
    FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
    if (pipe == nullptr)
        return out;
    std::string text;
    std::array<char, 512> chunk{};
    while (std::fgets(chunk.data(), static_cast<int>(chunk.size()), pipe) != nullptr) {
        text += chunk.data();
    }
    const int status = ::pclose(pipe);
    out.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        out.lines.push_back(line);
    return out;
}

namespace {

// QEMU's drives answer INQUIRY with this identification.
constexpr const char* kQemuIdent = "QEMU    QEMU DVD-ROM    2.5+";

}  // namespace

void CheckCommandLine(Report& report, const std::string& cli) {
    if (!report.Check("cli.present", std::filesystem::exists(cli), cli))
        return;

    const CommandOutput drives = RunInGuest(cli + " drives");
    report.Check("cli.drives",
                 drives.code == 0 && drives.lines.size() == 2 &&
                     drives.lines[0] == std::string("/dev/sr0:  ") + kQemuIdent &&
                     drives.lines[1] == std::string("/dev/sr1:  ") + kQemuIdent,
                 drives.Text());

    // Disc A: one data track of 1200 sectors, so the lead-out is at 00:18:00.
    const std::string row = "1      00:16   00:02:00  00:18:00  Daten";
    const CommandOutput first = RunInGuest(cli + " toc");
    report.Check("cli.toc.first-drive",
                 first.code == 0 && first.lines.size() == 2 && first.lines[1] == row, first.Text());
    const CommandOutput named = RunInGuest(cli + " toc --drive /dev/sr0");
    report.Check("cli.toc.sr0", named.code == 0 && named.lines == first.lines, named.Text());

    const CommandOutput empty = RunInGuest(cli + " toc --drive /dev/sr1");
    report.Check(
        "cli.toc.empty-drive",
        empty.code == 1 && empty.lines.size() == 1 && empty.lines[0] == "Keine Disk im Laufwerk",
        empty.Text());

    const CommandOutput missing = RunInGuest(cli + " drives --drive /dev/sr7");
    report.Check("cli.not-a-drive", missing.code == 1, missing.Text());
}

}  // namespace plattmix::testbed
