// The drive commands of plattmix-cli: "drives" (the drive list as the window shows it) and
// "toc" (the track list of the chosen or first drive). They need nothing but the transports,
// so the drive test bed runs them inside its guest.
#pragma once

#include <functional>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>

#include "CliArgs.h"
#include "ISCSI.h"
#include "TrackList.h"

namespace plattmix::cli {

// The titles toc prints beside the rows (by track number), asked once the track list is read;
// the command's usage error's text instead when there is one.
struct TocTitles {
    std::map<int, std::string> byTrack;
    std::optional<std::string> usage;
};
using TocTitlesFn = std::function<TocTitles(scsi::ISCSI& transport, const std::string& handle,
                                            const audiocd::TrackList& list)>;

// titles empty: toc prints the rows alone.
int RunDriveCommand(const CliArgs& args, std::ostream& out, std::ostream& err,
                    const TocTitlesFn& titles = {});

}  // namespace plattmix::cli
