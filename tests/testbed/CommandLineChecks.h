// Programs run inside the guest, plattmix-cli above all, checked step by step against what the
// user must see: exit status and output, the QEMU monitor working a drive before a step and
// confirming the tray's position after it.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "ProbeChannel.h"

// What QEMU's drives and disc A (one data track of 1200 sectors, so the lead-out is at
// 00:18:00) look like to the user.
#define TESTBED_QEMU_DRIVE "QEMU    QEMU DVD-ROM    2.5+"
#define TESTBED_DISC_A_TOC                        \
    "Track  Dauer   Anfang    Ende      Inhalt\n" \
    "1      00:16   00:02:00  00:18:00  Daten"

namespace plattmix::testbed {

// What a command run in the guest printed (stdout and stderr together) and its exit status.
struct CommandOutput {
    int code = -1;
    std::vector<std::string> lines;
    std::string Text() const;
};
CommandOutput RunInGuest(const std::string& command);

struct CliStep {
    const char* name;    // the check is prefix + name
    const char* before;  // a monitor request made first ("open-tray 0"), or nullptr
    const char* args;    // the command's arguments
    int code;            // the exit status expected
    const char* output;  // every line expected, joined by line feeds
    const char* tray0;   // what the monitor must then say of drive 0's tray, or nullptr
};

// Runs program with each step's arguments, one check per step.
void RunCommandSteps(Report& report, Channel& channel, const std::string& program,
                     const std::string& prefix, std::span<const CliStep> steps);

}  // namespace plattmix::testbed
