#include "BurnJob.h"

#include <memory>

#include "BurnJobSteps.h"
#include "BurnVerify.h"
#include "CompilationImage.h"
#include "IsoFileCheck.h"
#include "IsoImage.h"

namespace plattmix::authoring {

namespace {

// A run that ends before anything is written: the text in the status line and in a message box.
BurnResult Refused(const BurnHooks& hooks, BurnResult result, const std::string& text,
                   std::string detail = {}) {
    ShowStatus(hooks, result.status, text);
    ShowMessage(hooks, text, MessageIcon::Exclamation);
    result.outcome = BurnOutcome::Failed;
    result.listStatus = kIsoFailed;
    result.detail = std::move(detail);
    return result;
}

// Escape before the write: nothing was written.
BurnResult Cancelled(const BurnHooks& hooks, BurnResult result) {
    ShowStatus(hooks, result.status, kTextActionAborted);
    result.outcome = BurnOutcome::Aborted;
    result.listStatus = kIsoAborted;
    return result;
}

void Succeeded(IRecorder& recorder, bool eject, const BurnHooks& hooks, BurnResult& result) {
    result.outcome = BurnOutcome::Done;
    result.listStatus = kIsoDone;
    ShowMessage(hooks, kTextBurnDone, MessageIcon::Information);
    if (eject)
        result.ejected = recorder.Eject();
}

void Aborted(const BurnHooks& hooks, BurnResult& result) {
    result.outcome = BurnOutcome::Aborted;
    result.listStatus = kIsoAborted;
    ShowStatus(hooks, result.status, kTextActionAborted);
    ShowMessage(hooks, kTextBurnAborted, MessageIcon::Critical);
}

// The recorder of the chosen drive, or the refusal the run ends with.
std::unique_ptr<IRecorder> OpenRecorder(IBurnService& service, const std::string& drive,
                                        std::string& detail) {
    MediaState why = MediaState::NoRecorder;
    std::unique_ptr<IRecorder> recorder = service.OpenRecorder(drive, why);
    if (!recorder) {
        detail = service.LastMessage();
        if (detail.empty())
            detail = why == MediaState::NoService ? "libburn lässt sich nicht starten."
                                                  : "Kein Brenner unter " + drive;
    }
    return recorder;
}

// What a medium in that state means for a burn that needs one to write to.
WriteError MediaError(MediaState state) {
    return state == MediaState::NoDisc ? WriteError::MediaNotSupported : WriteError::None;
}

// The tree of the next session: the imported last session (after the question, unless the
// burn is a multisession one anyway), or an empty one on a blank disc. Returns the refusal text
// (empty when the run goes on; declined set when the user said No).
std::string PrepareSession(IRecorder& recorder, const RecorderInfo& info,
                           const BurnCompilationParams& params, const CompilationListing& listing,
                           const BurnHooks& hooks, BurnResult& result, bool& declined) {
    declined = false;
    if (info.state != MediaState::Blank) {
        if (!info.multisession)
            return kTextNoMultisession;
        if (!params.multisession && !AskYesNo(hooks, kTextContinueMultisession)) {
            declined = true;
            return {};
        }
        ShowStatus(hooks, result.status, kTextImporting);
    }
    if (recorder.LoadImage() == nullptr) {
        result.detail = recorder.LastMessage();
        return kTextBurnFailed;
    }
    if (info.state != MediaState::Blank && listing.totalBytes > info.freeBlocks * 2048)
        return kTextCompilationTooLarge;
    return {};
}

}  // namespace

bool ShouldCloseDisc(bool multisession, bool closeDisc) {
    return !multisession || closeDisc;
}

const char* WriteErrorText(WriteError error) {
    switch (error) {
        case WriteError::MediaNotBlank:
            return kTextMediaNotBlank;
        case WriteError::MediaNotSupported:
            return kTextMediaNotSupported;
        case WriteError::StreamTooLarge:
            return kTextIsoTooLarge;
        case WriteError::None:
        case WriteError::Failed:
            break;
    }
    return kTextBurnFailed;
}

BurnResult BurnIsoImage(IBurnService& service, const BurnIsoParams& params,
                        const BurnHooks& hooks) {
    BurnResult result;
    std::string detail;
    const std::unique_ptr<IRecorder> recorder = OpenRecorder(service, params.drive, detail);
    if (!recorder)
        return Refused(hooks, result, kTextRecorderNotSupported, detail);
    const IsoFileCheckResult image = CheckIsoFile(params.isoPath);
    if (!image.ok)
        return Refused(hooks, result, kTextBurnFailed, image.error);

    const RecorderInfo info = recorder->Info();
    WriteError error = MediaError(info.state);
    if (error == WriteError::None && info.state != MediaState::Blank)
        error = WriteError::MediaNotBlank;
    if (error == WriteError::None && image.bytes > info.freeBlocks * 2048)
        error = WriteError::StreamTooLarge;
    if (error == WriteError::None)
        error = recorder->StartIsoWrite(params.isoPath, params.closeDisc);
    if (error != WriteError::None)
        return Refused(hooks, result, WriteErrorText(error), recorder->LastMessage());

    const WriteRun run = FollowWrite(*recorder, hooks, result.status, nullptr);
    result.detail = run.detail;
    if (run.end == WriteEnd::Written) {
        if (!params.verify ||
            ReportVerify(VerifyIsoImage(*recorder, params.isoPath, hooks, result.status), hooks,
                         result))
            Succeeded(*recorder, params.eject, hooks, result);
    } else if (run.end == WriteEnd::Aborted) {
        result.outcome = BurnOutcome::Aborted;
        result.listStatus = kIsoAborted;
        ShowStatus(hooks, result.status, kTextActionAborted);
        ShowMessage(hooks, kTextActionAborted, MessageIcon::Exclamation);
    } else {
        return Refused(hooks, result, WriteErrorText(run.error), run.detail);
    }
    return result;
}

BurnResult BurnZusammenstellung(IBurnService& service, const BurnCompilationParams& params,
                                const BurnHooks& hooks) {
    BurnResult result;
    const CompilationListing listing = ListCompilation(params.paths, hooks.scan);
    if (listing.outcome == IsoOutcome::NoFiles) {
        result.outcome = BurnOutcome::NoFiles;
        const std::string source = params.paths.empty() ? "" : params.paths.front();
        ShowMessage(hooks, NoFilesMessage(source), MessageIcon::Exclamation);
        return result;
    }
    if (listing.outcome == IsoOutcome::Aborted && listing.detail.empty())
        return Cancelled(hooks, result);
    if (listing.outcome != IsoOutcome::Done)
        return Refused(hooks, result, kTextBurnFailed, listing.detail);

    std::string detail;
    const std::unique_ptr<IRecorder> recorder = OpenRecorder(service, params.drive, detail);
    if (!recorder)
        return Refused(hooks, result, kTextRecorderNotSupported, detail);
    const RecorderInfo info = recorder->Info();
    if (const WriteError error = MediaError(info.state); error != WriteError::None)
        return Refused(hooks, result, WriteErrorText(error), recorder->LastMessage());

    bool declined = false;
    const std::string refusal =
        PrepareSession(*recorder, info, params, listing, hooks, result, declined);
    if (declined) {
        result.outcome = BurnOutcome::Declined;
        return result;
    }
    if (!refusal.empty())
        return Refused(hooks, result, refusal, result.detail);

    auto faults = std::make_shared<IsoFileStreamFaults>();
    const IsoJobHooks treeHooks{hooks.scan, nullptr, nullptr};
    const IsoImageResult added = AddCompilation(*recorder->LoadImage(), listing, params.volumeName,
                                                StdioFileOf(params.drive), faults, treeHooks);
    if (added.outcome != IsoOutcome::Done && added.detail.empty())
        return Cancelled(hooks, result);
    if (added.outcome != IsoOutcome::Done)
        return Refused(hooks, result, kTextBurnFailed, added.detail);

    const WriteError started =
        recorder->StartImageWrite(ShouldCloseDisc(params.multisession, params.closeDisc));
    if (started != WriteError::None) {
        const char* text = started == WriteError::StreamTooLarge ? kTextCompilationTooLarge
                                                                 : WriteErrorText(started);
        return Refused(hooks, result, text, recorder->LastMessage());
    }
    const WriteRun run = FollowWrite(*recorder, hooks, result.status, faults.get());
    result.detail = run.detail;
    if (run.end == WriteEnd::Written) {
        if (!params.verify ||
            ReportVerify(VerifyCompilation(*recorder, listing, StdioFileOf(params.drive), hooks,
                                           result.status),
                         hooks, result))
            Succeeded(*recorder, params.eject, hooks, result);
    } else if (run.end == WriteEnd::Aborted) {
        Aborted(hooks, result);
    } else {
        result.outcome = BurnOutcome::Failed;
        result.listStatus = kIsoFailed;
        ShowStatus(hooks, result.status, kTextBurnFailed);
        ShowMessage(hooks, kTextBurnFailed, MessageIcon::Critical);
        // A failed run ends, as every refusal does, with its status text in a message box.
        ShowMessage(hooks, result.status, MessageIcon::Exclamation);
    }
    return result;
}

}  // namespace plattmix::authoring
