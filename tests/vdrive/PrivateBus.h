// A private D-Bus message bus for a test: dbus-daemon with its own socket in a scratch folder,
// allowing every name and call, ended with the test.
#pragma once

#include <signal.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

namespace plattmix::test {

class PrivateBus {
  public:
    explicit PrivateBus(const std::filesystem::path& folder) {
        // The session bus's rules (every name and call allowed) on a socket of its own. Once it
        // listens, the daemon prints its address, then its process id.
        const std::string command =
            "exec dbus-daemon --session --nofork --print-address=1 --print-pid=1 "
            "--address='unix:path=" +
            (folder / "bus").string() + "' 2>/dev/null";
        output_ = popen(command.c_str(), "r");
        char line[512];
        if (output_ != nullptr && fgets(line, sizeof line, output_) != nullptr)
            address_ = std::string(line, strcspn(line, "\n"));
        if (output_ != nullptr && fgets(line, sizeof line, output_) != nullptr)
            pid_ = std::atoi(line);
        if (address_.empty() || pid_ <= 0)
            error_ = "dbus-daemon cannot be started (package dbus-daemon)";
    }
    ~PrivateBus() {
        if (pid_ > 0)
            kill(pid_, SIGTERM);
        if (output_ != nullptr)
            pclose(output_);
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    bool ok() const { return error_.empty(); }
    const std::string& error() const { return error_; }
    const std::string& address() const { return address_; }

  private:
    FILE* output_ = nullptr;
    pid_t pid_ = -1;
    std::string address_;
    std::string error_;
};

}  // namespace plattmix::test
