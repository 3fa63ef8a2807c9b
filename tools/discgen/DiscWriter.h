// Turns a spec into BIN files and a CUE sheet, streaming sector by sector so discs of any
// length need only a small buffer, and describes what it wrote.
#pragma once

#include <filesystem>

#include "DiscSpec.h"
#include "Result.h"

namespace plattmix::discgen {

// Writes <folder>/<spec.name>.cue and the spec's BIN files into folder (created if missing).
// The same spec always gives the same bytes.
Result<DiscDescription> WriteDisc(const DiscSpec& spec, const std::filesystem::path& folder);

// The description WriteDisc would return for folder, without touching the file system.
Result<DiscDescription> DescribeDisc(const DiscSpec& spec, const std::filesystem::path& folder);

}  // namespace plattmix::discgen
