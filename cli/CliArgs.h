// The command line of plattmix-cli: a command word followed by options.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace plattmix::cli {

// Exit codes of every command.
inline constexpr int kExitDone = 0;
inline constexpr int kExitFailed = 1;
inline constexpr int kExitUsage = 2;

struct CliArgs {
    std::string command;
    std::map<std::string, std::string> options;  // "--drive" -> value
    std::vector<std::string> positional;
};

struct ParseResult {
    std::optional<CliArgs> args;
    std::string error;  // German text for bad usage
};

// Options named in valueOptions take a value ("--drive X" or "--drive=X"); flags none.
ParseResult ParseCliArgs(const std::vector<std::string>& argv,
                         const std::vector<std::string>& valueOptions,
                         const std::vector<std::string>& flagOptions);

}  // namespace plattmix::cli
