// The image drive's sidecar ("Album.cue.drive"): the faults and quirks a user writes beside an
// image, each refusal naming its line.
#include <cstdint>
#include <cstdlib>

#include "FuzzInput.h"
#include "imagedrive/DriveSidecar.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace plattmix::scsi::imagedrive;
    const auto faults = ParseDriveSidecar(plattmix::fuzz::AsText({data, size}), "fuzz.cue.drive");
    if (plattmix::fuzz::Refused(faults))
        return 0;
    for (const auto* ranges : {&faults.Value().readErrors, &faults.Value().timeOuts}) {
        for (const LbaRange& range : *ranges)
            range.Touches(range.first, 27);
    }
    for (const FlakyRange& flaky : faults.Value().flaky) {
        if (!(flaky.probability >= 0.0 && flaky.probability <= 1.0))
            std::abort();
    }
    return 0;
}
