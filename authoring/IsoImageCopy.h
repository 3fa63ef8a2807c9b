// The image stream of libisofs into the output file, chunk by chunk, with progress and cancel.
#pragma once

#include <string>

#include "IsoFileStreamFaults.h"
#include "IsoImage.h"
#include "IsofsOwners.h"

namespace plattmix::authoring {

// Creates (or truncates) outputPath and copies the whole stream of source into it in chunks of
// kIsoCopyChunk bytes. Cancel (the job's flag or Escape) is checked before each chunk, progress
// and a yield follow each one. Always releases source, which ends the image thread.
// Done: the image is complete and synced. Aborted: cancelled, the output file is removed.
// Failed: writing failed or a source file was not what was added (faults); the output stays.
IsoImageResult CopyIsoImage(BurnSourceOwner& source, const std::string& outputPath,
                            const IsoJobHooks& hooks, const IsoFileStreamFaults& faults);

}  // namespace plattmix::authoring
