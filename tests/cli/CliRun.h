// Runs plattmix-cli's words as the program does, its output and exit code kept for the tests.
#pragma once

#include <cstdlib>
#include <optional>
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

inline bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// Sets an environment variable for the object's lifetime.
class ScopedEnv {
  public:
    ScopedEnv(const char* name, const std::string& value) : name_(name) {
        if (const char* old = std::getenv(name))
            old_ = old;
        setenv(name, value.c_str(), 1);
    }
    ~ScopedEnv() {
        if (old_)
            setenv(name_, old_->c_str(), 1);
        else
            unsetenv(name_);
    }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

  private:
    const char* name_;
    std::optional<std::string> old_;
};

}  // namespace plattmix::clitest
