// Which titles a disc gets: the chosen MusicBrainz release when the look-up is on and finds the
// disc, else the disc's CD-Text.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "CdText.h"
#include "DiscTitles.h"
#include "MusicBrainz.h"
#include "TrackList.h"

namespace plattmix::audiocd {

struct TitleLookup {
    std::optional<DiscTitles> titles;  // nothing when neither source has any
    // One line for the status line and the command line; empty when the look-up is off.
    std::string status;
    // The releases found but not taken, one line each: "2: Album – Artist (date, release ID)".
    std::vector<std::string> otherReleases;
    size_t releaseCount = 0;  // releases found
};

// client null: the look-up is off and nothing leaves the machine. release: the 1-based choice
// among the releases found; one outside them takes the first.
TitleLookup LookUpDiscTitles(MusicBrainzClient* client, const TrackList& list,
                             const std::optional<CdText>& cdText, size_t release = 1);

}  // namespace plattmix::audiocd
