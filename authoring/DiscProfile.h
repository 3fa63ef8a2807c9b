// The names of media profiles in the burn page's vocabulary.
#pragma once

namespace plattmix::authoring {

// The profile's name ("CD_REWRITABLE", "DVD_PLUS_RW", ...) by MMC profile number: "TYPE_INVALID"
// for none, "NON_STANDARD" for a "stdio:" file and for numbers the list lacks (CD-ROM, DVD-ROM).
const char* ProfileName(int profile);

}  // namespace plattmix::authoring
