// The pieces of a write job for libburn: the disc of an ISO file, the write options, the size of
// what is to be written.
#pragma once

#include <cstdint>
#include <string>

#include "LibburnOwners.h"

namespace plattmix::authoring {

// A disc of one session with one data track read from the file at path; empty when the file
// cannot be opened (error says why).
BurnDiscPtr IsoFileDisc(const std::string& path, std::string& error);

// Options for writing disc to drive. The medium is left open for a further session unless
// closeDisc is set, as far as the medium keeps sessions itself (on an overwritable disc or a
// "stdio:" file libisoburn emulates them, and there is nothing to close).
BurnWriteOptsPtr WriteOptions(burn_drive* drive, bool closeDisc);

// Lets libburn choose the write type for disc; false (reasons filled) when none fits.
bool ChooseWriteType(burn_write_opts* options, burn_disc* disc, std::string& reasons);

// 2048-byte blocks all tracks of disc take.
int64_t DiscSectors(burn_disc* disc);

}  // namespace plattmix::authoring
