#include "EraseJob.h"

namespace plattmix::authoring {

bool IsErasableProfile(int profile) {
    return profile == kProfileCdRw || profile == kProfileDvdPlusRw || profile == kProfileStdioFile;
}

EraseResult EraseDisk(IBurnService&, const EraseParams&, const EraseHooks&) {
    return {EraseOutcome::NoDisc, "", "noch nicht verfügbar", false};
}

}  // namespace plattmix::authoring
