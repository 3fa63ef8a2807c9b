// The content of one source file for libisofs, read through its own descriptor. libisofs pads
// or cuts a file whose size changed and only reports it; this stream instead records a fault
// for the job whenever the file is not what was added: gone, unreadable, another size, changed
// while it was read, or grown beyond its size.
#pragma once

#include <sys/stat.h>

#include <memory>
#include <string>

#include "IsoFileStreamFaults.h"
#include "IsofsOwners.h"

namespace plattmix::authoring {

// A stream over path, which had the state info (size, change time, inode) when it was added.
// Empty only when memory runs out.
IsoStreamPtr NewIsoFileStream(const std::string& path, const struct stat& info,
                              std::shared_ptr<IsoFileStreamFaults> faults);

}  // namespace plattmix::authoring
