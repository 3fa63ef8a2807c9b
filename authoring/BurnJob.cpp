#include "BurnJob.h"

namespace plattmix::authoring {

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

BurnResult BurnIsoImage(IBurnService&, const BurnIsoParams&, const BurnHooks&) {
    return {BurnOutcome::Failed, kTextBurnFailed, "", "noch nicht verfügbar", false};
}

BurnResult BurnZusammenstellung(IBurnService&, const BurnCompilationParams&, const BurnHooks&) {
    return {BurnOutcome::Failed, kTextBurnFailed, "Fehler!", "noch nicht verfügbar", false};
}

}  // namespace plattmix::authoring
