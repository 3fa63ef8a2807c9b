// The CUE sheet text for a spec. Several sessions are marked with "REM SESSION nn" lines
// before the FILE line that starts each session, the convention the image drive reads.
#pragma once

#include <cstdint>
#include <string>

#include "DiscLayout.h"
#include "DiscSpec.h"

namespace plattmix::discgen {

// "mm:ss:ff" for a sector count (75 sectors a second).
std::string CueTime(int32_t sectors);

// The sheet for a spec already laid out; lines end with "\n".
std::string CueSheetText(const DiscSpec& spec, const DiscLayout& layout);

}  // namespace plattmix::discgen
