#include "TitleOptions.h"

#include <charconv>
#include <ostream>

#include "CdText.h"
#include "CurlHttpGet.h"
#include "DriveCommands.h"
#include "modPaths.h"
#include "modSettings.h"

namespace plattmix::cli {

std::optional<std::string> ReadTitleOptions(const CliArgs& args, TitleOptions& options) {
    options.lookUp = args.options.contains("--musicbrainz");
    const auto release = args.options.find("--release");
    if (release == args.options.end())
        return std::nullopt;
    const std::string& text = release->second;
    size_t number = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (ec != std::errc{} || end != text.data() + text.size() || number == 0)
        return "--release: eine Nummer ab 1";
    if (!options.lookUp)
        return "--release gilt nur mit --musicbrainz.";
    options.release = number;
    return std::nullopt;
}

DiscTitlesRead ReadDiscTitles(const TitleOptions& options, scsi::ISCSI& transport,
                              const std::string& handle, const audiocd::TrackList& list,
                              std::ostream& out) {
    const auto cdText = audiocd::ReadCdText(transport, handle);
    DiscTitlesRead read;
    if (!options.lookUp) {
        read.lookup = audiocd::LookUpDiscTitles(nullptr, list, cdText);
        return read;
    }
    std::string server = shell::ReadIni(shell::ComputeSettingsPaths(), "Diskolo",
                                        "MusicBrainzServer", "", audiocd::kMusicBrainzServer);
    if (server.empty())
        server = audiocd::kMusicBrainzServer;
    audiocd::MusicBrainzClient client(audiocd::CurlHttpGet, shell::AddBackslash(server));
    read.lookup = audiocd::LookUpDiscTitles(&client, list, cdText, options.release);
    const auto& lookup = read.lookup;
    if (lookup.releaseCount > 0 && options.release > lookup.releaseCount) {
        read.usage = "--release: MusicBrainz kennt " + std::to_string(lookup.releaseCount) +
                     " Veröffentlichung(en) dieser Disk.";
        return read;
    }
    if (!lookup.status.empty())
        out << lookup.status << '\n';
    if (!lookup.otherReleases.empty()) {
        out << "Weitere Veröffentlichungen (--release N):\n";
        for (const auto& line : lookup.otherReleases)
            out << "  " << line << '\n';
    }
    return read;
}

int RunTitledToc(const CliArgs& args, std::ostream& out, std::ostream& err) {
    TitleOptions options;
    if (const auto usage = ReadTitleOptions(args, options)) {
        err << *usage << '\n';
        return kExitUsage;
    }
    return RunDriveCommand(
        args, out, err,
        [&](scsi::ISCSI& transport, const std::string& handle, const audiocd::TrackList& list) {
            const auto read = ReadDiscTitles(options, transport, handle, list, out);
            TocTitles titles;
            titles.usage = read.usage;
            if (!read.lookup.titles)
                return titles;
            for (const auto& row : list.rows) {
                std::string title = read.lookup.titles->TitleOf(row.track);
                if (!title.empty())
                    titles.byTrack[row.track] = std::move(title);
            }
            return titles;
        });
}

}  // namespace plattmix::cli
