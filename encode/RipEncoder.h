// The encoder the rip job hands every non-WAV track to: the WAV stream, as the drive delivers
// it, through the transcoding pipeline on a thread of its own into the chosen format, tagged
// with the track number and the disc's CD-Text.
#pragma once

#include <optional>

#include "CdText.h"
#include "JobHooks.h"
#include "RipJob.h"

namespace plattmix::encode {

// The row's text is fileName + the format's extension + " -->Fertig", or "XXX Fehler!".
audiocd::EncodeFn MakeRipEncoder(const audiocd::RipJobParams& params,
                                 const std::optional<audiocd::CdText>& cdText);

}  // namespace plattmix::encode
