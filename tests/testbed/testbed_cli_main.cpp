// plattmix-cli's drive and tray commands as one static program for the test bed's guest, which
// has no room for the encoding libraries the other commands need.
#include <iostream>
#include <string>
#include <vector>

#include "CliArgs.h"
#include "DriveCommands.h"
#include "TrayCommand.h"

int main(int argc, char** argv) {
    using namespace plattmix::cli;
    const std::vector<std::string> words(argv + 1, argv + argc);
    const ParseResult parsed = ParseCliArgs(words, {"--drive"}, {});
    if (!parsed.args) {
        std::cerr << parsed.error << '\n';
        return kExitUsage;
    }
    // drives, toc or tray; any other command reads the table of contents.
    if (parsed.args->command == "tray")
        return RunTrayCommand(*parsed.args, std::cout, std::cerr);
    return RunDriveCommand(*parsed.args, std::cout, std::cerr);
}
