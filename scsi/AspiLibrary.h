// The library of the fall-back transport, the ASPI-style layer over the SCSI generic driver:
// its file name, its two exports, and where the program looks for it.
#pragma once

#include <string>
#include <vector>

namespace plattmix::scsi {

inline constexpr const char* kAspiLibraryName = "libplattmix_aspi.so";
inline constexpr const char* kAspiSupportInfoExport = "GetASPI32SupportInfo";
inline constexpr const char* kAspiSendCommandExport = "SendASPI32Command";

// Where to look, in order: beside the program, in the installed library folder relative to the
// program's folder (bin/../lib/plattmix), in the installed library folder of the build's
// prefix, and in the build tree.
std::vector<std::string> AspiLibraryCandidates(const std::string& programFolder);

// The first candidate that exists for the running program; the bare file name (for the dynamic
// loader's own search) when none does.
std::string FindAspiLibrary();

}  // namespace plattmix::scsi
