// A private D-Bus message bus for a test: dbus-daemon with its own socket in a scratch folder,
// allowing every name and call, ended with the test.
#pragma once

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

extern char** environ;

namespace plattmix::test {

class PrivateBus {
  public:
    explicit PrivateBus(const std::filesystem::path& folder) {
        const std::filesystem::path config = folder / "bus.conf";
        std::ofstream(config)
            << "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration "
               "1.0//EN\"\n"
               " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
               "<busconfig>\n  <type>custom</type>\n"
            << "  <listen>unix:path=" << (folder / "bus").string() << "</listen>\n"
            << "  <auth>EXTERNAL</auth>\n  <policy context=\"default\">\n"
               "    <allow user=\"*\"/>\n    <allow own=\"*\"/>\n"
               "    <allow send_destination=\"*\"/>\n    <allow receive_sender=\"*\"/>\n"
               "  </policy>\n</busconfig>\n";
        int out[2];
        if (pipe(out) != 0) {
            error_ = "pipe";
            return;
        }
        // The daemon writes its address to descriptor 3 once it listens.
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addclose(&actions, out[0]);
        posix_spawn_file_actions_adddup2(&actions, out[1], 3);
        std::string configOption = "--config-file=" + config.string();
        char daemon[] = "dbus-daemon";
        char nofork[] = "--nofork";
        char print[] = "--print-address=3";
        char* argv[] = {daemon, configOption.data(), nofork, print, nullptr};
        const int spawned = posix_spawnp(&pid_, daemon, &actions, nullptr, argv, environ);
        posix_spawn_file_actions_destroy(&actions);
        close(out[1]);
        if (spawned != 0) {
            pid_ = -1;
            close(out[0]);
            error_ = "dbus-daemon cannot be started (package dbus-daemon)";
            return;
        }
        // Blocks until the daemon listens or ends.
        char c = 0;
        while (read(out[0], &c, 1) == 1 && c != '\n')
            address_.push_back(c);
        close(out[0]);
        if (address_.empty())
            error_ = "dbus-daemon printed no address";
    }
    ~PrivateBus() {
        if (pid_ > 0) {
            kill(pid_, SIGTERM);
            waitpid(pid_, nullptr, 0);
        }
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    bool ok() const { return error_.empty(); }
    const std::string& error() const { return error_; }
    const std::string& address() const { return address_; }

  private:
    pid_t pid_ = -1;
    std::string address_;
    std::string error_;
};

}  // namespace plattmix::test
