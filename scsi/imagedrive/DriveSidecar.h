// How the drive behaves with one image, from a small text file beside it: the image's path with
// ".drive" appended ("Album.cue.drive"). It gives users, the command line, tests and benchmarks
// the faults and quirks the drive can emulate, without touching the image itself. One setting
// per line, keyword first in any case; blank lines and lines starting with '#' are ignored:
//
//   OFFSET n                    read offset in samples, e.g. +667 or -30 (see Faults)
//   C2 ON | OFF                 C2 error pointers reported (default ON)
//   FLAKY first count p seed    sectors [first, first + count) read wrong with probability p
//                               (0 to 1), dice seeded with seed
//   READERROR first count       reads touching the sectors fail with 3/11/05
//   TIMEOUT first count         reads touching the sectors end with status 255
//   SPEED n                     reads held to n times 75 sectors a second
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "imagedrive/DriveSlot.h"
#include "imagedrive/ImageResult.h"

namespace plattmix::scsi::imagedrive {

inline constexpr const char* kDriveSidecarExtension = ".drive";

// sidecarName is the name used in messages ("Album.cue.drive, Zeile 2: ...").
ImageResult<Faults> ParseDriveSidecar(std::string_view text, const std::string& sidecarName);

// The sidecar of the image, parsed; nothing when the image has none.
ImageResult<std::optional<Faults>> LoadDriveSidecar(const std::string& imagePath);

}  // namespace plattmix::scsi::imagedrive
