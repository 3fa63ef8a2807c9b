// Writes a small text file the rip leaves beside its tracks (the log, the cue sheet) in one
// piece: a crash or a full disk never leaves half of it.
#pragma once

#include <string>
#include <string_view>

namespace plattmix::audiocd {

// folder/name with bytes, atomically. Empty when written, else the reason in German.
std::string WriteFileInFolder(const std::string& folder, const std::string& name,
                              std::string_view bytes);

}  // namespace plattmix::audiocd
