#include "BurnJobSteps.h"

#include <string_view>

#include "BurnProgress.h"

namespace plattmix::authoring {

namespace {

constexpr std::string_view kStdioPrefix = "stdio:";

}  // namespace

void ShowProgress(const BurnHooks& hooks, std::string& status, const WriteProgress& progress) {
    const ProgressView view = cDFileSystemImageEvents_Update(progress);
    if (view.bar && hooks.progress)
        hooks.progress(*view.bar);
    ShowStatus(hooks, status, view.text);
}

void ShowStatus(const BurnHooks& hooks, std::string& status, const std::string& text) {
    status = text;
    if (hooks.status)
        hooks.status(text);
}

void ShowMessage(const BurnHooks& hooks, const std::string& text, MessageIcon icon) {
    if (hooks.showMessage)
        hooks.showMessage(text, icon);
}

bool AskYesNo(const BurnHooks& hooks, const std::string& text) {
    return hooks.askYesNo && hooks.askYesNo(text);
}

WriteRun FollowWrite(IRecorder& recorder, const BurnHooks& hooks, std::string& status,
                     const IsoFileStreamFaults* faults) {
    bool escaped = false;
    bool faulted = false;
    for (;;) {
        const WriteProgress progress = recorder.Poll();
        if (!progress.running)
            break;
        ShowProgress(hooks, status, progress);
        YieldToWindow(hooks.scan);
        if (escaped || faulted)
            continue;  // cancelled already: wait for the drive to stop
        if (EscapePressed(hooks.scan)) {
            recorder.CancelWrite();
            ShowStatus(hooks, status, kTextEscapePressed);
            escaped = true;
        } else if (faults != nullptr && faults->Any()) {
            recorder.CancelWrite();
            faulted = true;
        }
    }
    // The image thread has ended with the write: every file's end was read.
    faulted = faulted || (faults != nullptr && faults->Any());
    WriteRun run;
    run.error = recorder.FinishWrite(!faulted);
    if (faulted) {
        run.end = WriteEnd::Failed;
        run.error = WriteError::Failed;
        run.detail = faults->First();
    } else if (run.error == WriteError::None) {
        run.end = WriteEnd::Written;
        WriteProgress done;
        done.action = kActionCompleted;
        done.running = false;
        ShowProgress(hooks, status, done);
        if (hooks.progress)
            hooks.progress(100);
    } else {
        run.end = escaped ? WriteEnd::Aborted : WriteEnd::Failed;
        run.detail = recorder.LastMessage();
    }
    return run;
}

std::string StdioFileOf(const std::string& drive) {
    return drive.starts_with(kStdioPrefix) ? drive.substr(kStdioPrefix.size()) : std::string();
}

}  // namespace plattmix::authoring
