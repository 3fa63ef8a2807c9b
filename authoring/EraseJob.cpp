#include "EraseJob.h"

#include <memory>

#include "BurnJobSteps.h"

namespace plattmix::authoring {

namespace {

// Shows the busy picture for the length of the blanking, and hides it on every way out.
class BusyShown {
  public:
    explicit BusyShown(const EraseHooks& hooks) : hooks_(hooks) { Set(true); }
    ~BusyShown() { Set(false); }
    BusyShown(const BusyShown&) = delete;
    BusyShown& operator=(const BusyShown&) = delete;

  private:
    void Set(bool shown) const {
        if (hooks_.busy)
            hooks_.busy(shown);
    }
    const EraseHooks& hooks_;
};

EraseResult Stopped(const EraseHooks& hooks, EraseOutcome outcome, const char* text,
                    std::string detail) {
    ShowMessage(hooks.burn, text, MessageIcon::Exclamation);
    return {outcome, "", std::move(detail), false};
}

// Blanks the medium, yielding to the window while the drive works; nothing can stop it.
bool Blank(IRecorder& recorder, const EraseHooks& hooks) {
    if (!recorder.StartQuickBlank())
        return false;
    while (recorder.Poll().running)
        YieldToWindow(hooks.burn.scan);
    return recorder.FinishBlank();
}

}  // namespace

bool IsErasableProfile(int profile) {
    return profile == kProfileCdRw || profile == kProfileDvdPlusRw || profile == kProfileStdioFile;
}

EraseResult EraseDisk(IBurnService& service, const EraseParams& params, const EraseHooks& hooks) {
    MediaState why = MediaState::NoRecorder;
    const std::unique_ptr<IRecorder> recorder = service.OpenRecorder(params.drive, why);
    if (!recorder)
        return Stopped(hooks, EraseOutcome::NoDisc, kTextNoDiscToErase, service.LastMessage());
    const RecorderInfo info = recorder->Info();
    if (info.state == MediaState::NoDisc || !IsErasableProfile(info.profile))
        return Stopped(hooks, EraseOutcome::NoDisc, kTextNoDiscToErase, recorder->LastMessage());
    if (info.state == MediaState::Blank)
        return Stopped(hooks, EraseOutcome::AlreadyBlank, kTextAlreadyBlank, "");
    if (!AskYesNo(hooks.burn, kTextEraseQuestion))
        return {EraseOutcome::Declined, "", "", false};

    EraseResult result;
    const BusyShown busy(hooks);
    ShowStatus(hooks.burn, result.status, kTextErasing);
    if (!Blank(*recorder, hooks)) {
        result.outcome = EraseOutcome::Failed;
        result.detail = recorder->LastMessage();
        ShowStatus(hooks.burn, result.status, kTextEraseFailed);
        return result;
    }
    result.outcome = EraseOutcome::Done;
    ShowStatus(hooks.burn, result.status, kTextEraseDone);
    if (params.eject)
        result.ejected = recorder->Eject();
    return result;
}

}  // namespace plattmix::authoring
