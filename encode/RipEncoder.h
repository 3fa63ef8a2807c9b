// The encoder the rip job hands every non-WAV track to: the WAV stream, as the drive delivers
// it, through the transcoding pipeline on a thread of its own into the chosen format, tagged
// with the track number and the disc's titles.
#pragma once

#include <optional>

#include "DiscTitles.h"
#include "JobHooks.h"
#include "RipJob.h"

namespace plattmix::encode {

// The row's text is fileName + the format's extension + " -->Fertig", or "XXX Fehler!".
audiocd::EncodeFn MakeRipEncoder(const audiocd::RipJobParams& params,
                                 const std::optional<audiocd::DiscTitles>& titles);

}  // namespace plattmix::encode
