// The image drive's sidecar for a disc: the drive's read offset, C2 reporting and flaky
// sectors as the lines the drive reads from <sheet>.drive.
#pragma once

#include <string>

#include "DiscSpec.h"

namespace plattmix::discgen {

inline constexpr const char* kSidecarExtension = ".drive";

// Empty for a plain drive.
std::string SidecarText(const DriveSpec& drive);

}  // namespace plattmix::discgen
