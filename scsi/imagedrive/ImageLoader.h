// Opens an image path for a drive: a CUE sheet with its BIN files or a plain ISO file. Only the
// sheet is read whole; the BIN and ISO files are only measured here and read sector by sector
// later.
#pragma once

#include <cstdint>
#include <string>

#include "imagedrive/DiscImage.h"
#include "imagedrive/ImageResult.h"

namespace plattmix::scsi::imagedrive {

// Chooses the kind by the extension (".cue", ".iso", any case). The error names the file and,
// for a sheet, the line.
ImageResult<DiscImage> LoadImage(const std::string& path);

// A small text file read whole; the error names the file: missing, larger than maxBytes (the
// text tooLarge) or unreadable.
ImageResult<std::string> ReadTextFile(const std::string& path, std::uintmax_t maxBytes,
                                      const std::string& tooLarge);

}  // namespace plattmix::scsi::imagedrive
