// How large things on disk are: the recursive folder-size sum the user can stop with Escape,
// the size of one file, and a 64-bit size from its two 32-bit words.
#pragma once

#include <cstdint>
#include <string>

#include "ScanHooks.h"

namespace plattmix::authoring {

// Results of OrdnerGroesse besides the empty text of a finished walk. The abort word names the
// space bar although the key is Escape; the texts are the program's own.
inline constexpr const char* kScanAborted = "Leertaste";
inline constexpr const char* kScanNoAccess = "Kein Zugriff";

// The running total of a folder-size sum. The caller sets it to 0 before a scan and reads it
// afterwards; several folders may be added into one total.
struct ScanState {
    int64_t ScanTotal = 0;
};

// Adds the size of every file below path to state.ScanTotal. Appends "/" to path unless it
// ends in one. Returns "" when the walk ran to its end, "Leertaste" when Escape stopped it
// (ScanTotal is then 0), "Kein Zugriff" when path cannot be searched. Symbolic links are neither
// followed nor counted; folders whose name ends in the character 127 are left out; a sub-folder
// that cannot be read is not counted. Before each file and before each sub-folder the walk
// yields to the window and asks for Escape. An Escape met in a sub-folder ends that level only:
// the levels above go on and ask again at their next entry.
std::string OrdnerGroesse(std::string& path, ScanState& state, const ScanHooks& hooks);

// Size of one file in bytes; -1 when it cannot be opened for reading (a folder cannot either),
// 0 when it was opened but its size could not be read.
int64_t DateiGroesse(const std::string& path);

}  // namespace plattmix::authoring
