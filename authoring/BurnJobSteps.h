// The steps both burn jobs (and the erase) share: what they show through the hooks, and the
// write followed to its end with progress texts and Escape.
#pragma once

#include <string>

#include "BurnJob.h"
#include "BurnService.h"
#include "IsoFileStreamFaults.h"

namespace plattmix::authoring {

// Sets the status line and keeps it in result.status.
void ShowStatus(const BurnHooks& hooks, std::string& status, const std::string& text);
void ShowMessage(const BurnHooks& hooks, const std::string& text, MessageIcon icon);
// Yes/No with the question icon; No without a hook to ask.
bool AskYesNo(const BurnHooks& hooks, const std::string& text);
// The status text of a progress record, and the bar when it has one.
void ShowProgress(const BurnHooks& hooks, std::string& status, const WriteProgress& progress);

enum class WriteEnd {
    Written,  // the session is on the disc
    Aborted,  // Escape stopped it
    Failed,   // the write went wrong, or a source file was not what was added
};

struct WriteRun {
    WriteEnd end = WriteEnd::Failed;
    WriteError error = WriteError::None;
    std::string detail;
};

// Polls the started write until it ends: each look becomes a status text (and the bar while data
// is written), then the window gets a yield; Escape cancels the write and shows "Aktion
// abgebrochen". A fault of a source file (faults, may be null) cancels it as well, and the
// session is not made current. A write that ended well shows "Brennvorgang abgeschlossen." and a
// full bar, even when Escape came too late to stop it.
WriteRun FollowWrite(IRecorder& recorder, const BurnHooks& hooks, std::string& status,
                     const IsoFileStreamFaults* faults);

// The drive address of a "stdio:" pseudo-drive's file, empty for anything else.
std::string StdioFileOf(const std::string& drive);

}  // namespace plattmix::authoring
