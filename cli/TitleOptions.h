// --musicbrainz and --release N of plattmix-cli rip and toc: the disc's titles looked up online,
// or its CD-Text.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "CliArgs.h"
#include "ISCSI.h"
#include "TitleLookup.h"
#include "TrackList.h"

namespace plattmix::cli {

struct TitleOptions {
    bool lookUp = false;  // --musicbrainz
    size_t release = 1;   // --release N
};

// The usage error's text when the options don't fit.
std::optional<std::string> ReadTitleOptions(const CliArgs& args, TitleOptions& options);

// The disc's CD-Text and, with --musicbrainz, its titles from the server the settings name
// ("MusicBrainzServer" of section "Diskolo"). The outcome goes out as one line, the releases
// not taken as one line each; a release number beyond those found is a usage error's text.
struct DiscTitlesRead {
    audiocd::TitleLookup lookup;
    std::optional<std::string> usage;
};
DiscTitlesRead ReadDiscTitles(const TitleOptions& options, scsi::ISCSI& transport,
                              const std::string& handle, const audiocd::TrackList& list,
                              std::ostream& out);

// plattmix-cli toc --musicbrainz: the track list with each track's title beside its row.
int RunTitledToc(const CliArgs& args, std::ostream& out, std::ostream& err);

}  // namespace plattmix::cli
