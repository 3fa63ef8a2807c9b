#include "CommandLineChecks.h"

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <sstream>

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
    while (std::fgets(chunk.data(), static_cast<int>(chunk.size()), pipe) != nullptr)
        text += chunk.data();
    const int status = ::pclose(pipe);
    out.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        out.lines.push_back(line);
    return out;
}

void RunCommandSteps(Report& report, Channel& channel, const std::string& program,
                     const std::string& prefix, std::span<const CliStep> steps) {
    for (const CliStep& step : steps) {
        std::string detail, host;
        bool ok = true;
        if (step.before != nullptr) {
            host = channel.Request(step.before).value_or("no answer");
            ok = host.starts_with("ok");
            detail = std::string(step.before) + ": " + host + "; ";
        }
        const CommandOutput out = RunInGuest(program + " " + step.args);
        std::string joined;
        for (size_t i = 0; i < out.lines.size(); ++i)
            joined += (i == 0 ? "" : "\n") + out.lines[i];
        ok = ok && out.code == step.code && joined == step.output;
        detail += out.Text();
        if (step.tray0 != nullptr) {
            host = channel.Request("tray 0").value_or("no answer");
            ok = ok && host.starts_with(step.tray0);
            detail += "; tray 0: " + host;
        }
        report.Check(prefix + step.name, ok, detail);
    }
}

}  // namespace plattmix::testbed
