// Whether a file holds an ISO 9660 image, checked before it is burnt.
#pragma once

#include <cstdint>
#include <string>

namespace plattmix::authoring {

struct IsoFileCheckResult {
    bool ok = false;
    int64_t bytes = 0;  // the file's size, which is what gets written
    std::string error;  // why it is no image to burn
};

// The file must open, hold a primary volume descriptor at block 16, be as long as the volume it
// describes, and consist of whole 2048-byte blocks.
IsoFileCheckResult CheckIsoFile(const std::string& path);

}  // namespace plattmix::authoring
