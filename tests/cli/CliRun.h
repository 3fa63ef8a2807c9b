// Runs plattmix-cli's words as the program does, its output and exit code kept for the tests.
#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "Commands.h"

namespace plattmix::clitest {

using cli::kExitUsage;
using cli::ParseCommandLine;
using cli::ParseResult;
using cli::RunCommand;

struct CliRun {
    int code;
    std::string out, err;
};

inline CliRun RunCli(const std::vector<std::string>& words, bool terminal = false) {
    std::ostringstream out, err;
    const ParseResult parsed = ParseCommandLine(words);
    if (!parsed.args)
        return {kExitUsage, "", parsed.error};
    const int code = RunCommand(*parsed.args, out, err, terminal);
    return {code, out.str(), err.str()};
}

// The same with the command word in front.
inline CliRun RunCommandWords(const std::string& command, std::vector<std::string> words,
                              bool terminal = false) {
    words.insert(words.begin(), command);
    return RunCli(words, terminal);
}

}  // namespace plattmix::clitest
