// plattmix-cli: the command-line front end over the same code as the window.
#include <unistd.h>

#include <iostream>
#include <string>
#include <vector>

#include "Commands.h"

int main(int argc, char** argv) {
    using namespace plattmix::cli;
    const std::vector<std::string> words(argv + 1, argv + argc);
    const ParseResult parsed = ParseCommandLine(words);
    if (!parsed.args) {
        std::cerr << parsed.error << '\n';
        PrintUsage(std::cerr);
        return kExitUsage;
    }
    return RunCommand(*parsed.args, std::cout, std::cerr, ::isatty(STDOUT_FILENO) == 1);
}
