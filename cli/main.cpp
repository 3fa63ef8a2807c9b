// plattmix-cli: the command-line front end over the same code as the window.
#include <iostream>
#include <string>
#include <vector>

#include "CliArgs.h"
#include "Commands.h"

int main(int argc, char** argv) {
    using namespace plattmix::cli;
    const std::vector<std::string> words(argv + 1, argv + argc);
    const ParseResult parsed = ParseCliArgs(words, {"--drive"}, {});
    if (!parsed.args) {
        std::cerr << parsed.error << '\n';
        PrintUsage(std::cerr);
        return kExitUsage;
    }
    return RunCommand(*parsed.args, std::cout, std::cerr);
}
