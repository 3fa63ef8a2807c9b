// Tags an MP4 file gets after FFmpeg has written it: the free-form iTunes entries
// ("----:com.apple.iTunes:<name>") that FFmpeg's MP4 muxer leaves out, such as the MusicBrainz
// IDs.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace plattmix::encode {

// Appends one entry per name and value to the file's moov/udta/meta/ilst. Only a file whose
// movie box is its last box (FFmpeg's layout without fast start) is changed, so no chunk offset
// moves. False, the file untouched, when its layout is another or it cannot be written.
bool AddMp4FreeformTags(const std::string& path,
                        const std::vector<std::pair<std::string, std::string>>& tags);

}  // namespace plattmix::encode
