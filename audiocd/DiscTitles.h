// The titles of a disc for the tags of ripped files and the track list: from the online look-up
// or from the disc's own CD-Text.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "CdText.h"

namespace plattmix::audiocd {

struct TrackTitles {
    std::string title;
    std::string artist;
    std::string recordingId;  // MusicBrainz
};

struct DiscTitles {
    std::string album;
    std::string albumArtist;
    std::string date;       // "YYYY", "YYYY-MM" or "YYYY-MM-DD"
    std::string releaseId;  // MusicBrainz
    int discNumber = 0;     // 0 when unknown
    int discCount = 0;
    std::map<int, TrackTitles> tracks;  // by track number

    // The track's title, "" when there is none.
    std::string TitleOf(int track) const;
    // The track's artist, else the album's.
    std::string ArtistOf(int track) const;
    bool Empty() const { return album.empty() && albumArtist.empty() && tracks.empty(); }
};

DiscTitles TitlesFromCdText(const CdText& cdText);
std::optional<DiscTitles> TitlesFromCdText(const std::optional<CdText>& cdText);

}  // namespace plattmix::audiocd
