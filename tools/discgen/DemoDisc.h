// The built-in demo disc: a small audio disc the program can always show, kept in the user's
// cache folder and rebuilt whenever it is missing or damaged.
#pragma once

#include <filesystem>

#include "DiscSpec.h"
#include "Result.h"

namespace plattmix::discgen {

// Four short audio tracks, TITLE "Plattmix Demo", PERFORMER "Trovalis", a title per track.
DiscSpec DemoDiscSpec();

// $XDG_CACHE_HOME/plattmix/demo, else ~/.cache/plattmix/demo; fails when neither variable
// names an absolute folder.
Result<std::filesystem::path> DemoCacheFolder();

// The demo disc's CUE sheet in the cache folder, generated first when needed.
Result<std::filesystem::path> DemoDisc();

// The same for any folder: checks the disc there and regenerates it when the sheet or a BIN
// file differs from what the spec gives. A new disc is written to a sibling folder first and
// swapped in with one rename, so readers see either the old or the new disc.
Result<std::filesystem::path> EnsureDisc(const DiscSpec& spec, const std::filesystem::path& folder);

}  // namespace plattmix::discgen
