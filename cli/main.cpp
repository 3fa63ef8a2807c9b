// plattmix-cli: the command-line front end over the same code as the window.
#include <unistd.h>

#include <clocale>
#include <iostream>
#include <string>
#include <vector>

#include "Commands.h"

int main(int argc, char** argv) {
    using namespace plattmix::cli;
    // The system's reasons inside the messages ("No space left on device") in the user's
    // language; numbers keep the C notation in which the libraries print and parse them.
    std::setlocale(LC_ALL, "");
    std::setlocale(LC_NUMERIC, "C");
    const std::vector<std::string> words(argv + 1, argv + argc);
    const ParseResult parsed = ParseCommandLine(words);
    if (!parsed.args) {
        std::cerr << parsed.error << '\n';
        PrintUsage(std::cerr);
        return kExitUsage;
    }
    return RunCommand(*parsed.args, std::cout, std::cerr, ::isatty(STDOUT_FILENO) == 1);
}
