// Whether the files of a generated disc on disk still hold what its description says.
#pragma once

#include <string>

#include "DiscSpec.h"

namespace plattmix::discgen {

// Empty when the CUE sheet has the expected text and every BIN file its size and CRC-32;
// otherwise the first difference found.
std::string CheckDiscFiles(const DiscDescription& expected);

}  // namespace plattmix::discgen
