#include "DriveCommands.h"

#include <algorithm>
#include <iomanip>
#include <ostream>

#include "DriveChoice.h"
#include "DriveList.h"
#include "TrackList.h"

namespace plattmix::cli {

namespace {

std::optional<std::string> Option(const CliArgs& args, const std::string& name) {
    const auto it = args.options.find(name);
    if (it == args.options.end())
        return std::nullopt;
    return it->second;
}

// The drive list, or the one chosen drive, as the window shows it.
std::vector<audiocd::DriveEntry> Entries(DriveChoice& choice, std::ostream& err) {
    const audiocd::WarnFn warn = [&err](std::string_view text) { err << text << '\n'; };
    if (choice.index == 0)
        return audiocd::FillDriveList(*choice.transport, warn);
    std::vector<audiocd::DriveEntry> entries;
    audiocd::AddDriveEntry(*choice.transport, choice.index, entries, warn);
    return entries;
}

int Drives(DriveChoice& choice, std::ostream& out, std::ostream& err) {
    const auto entries = Entries(choice, err);
    for (const auto& entry : entries)
        out << entry.text << '\n';
    return entries.empty() ? kExitFailed : kExitDone;
}

int Toc(DriveChoice& choice, std::ostream& out, std::ostream& err, const TocTitlesFn& titlesOf) {
    // Like the window: the track list of the chosen drive, or of the first one listed.
    const auto entries = Entries(choice, err);
    if (entries.empty()) {
        err << "Kein Laufwerk gefunden.\n";
        return kExitFailed;
    }
    int16_t index = entries.front().index;
    const std::string handle = choice.transport->DriveHandle(index);
    const auto list = audiocd::ReadTrackList(*choice.transport, handle);
    if (list.rows.empty()) {
        out << list.emptyText << '\n';
        return kExitFailed;
    }
    TocTitles titles;
    if (titlesOf)
        titles = titlesOf(*choice.transport, handle, list);
    if (titles.usage) {
        err << *titles.usage << '\n';
        return kExitUsage;
    }
    out << std::left << std::setw(7) << "Track" << std::setw(8) << "Dauer" << std::setw(10)
        << "Anfang" << std::setw(10) << "Ende"
        << "Inhalt" << '\n';
    for (const auto& row : list.rows) {
        out << std::left << std::setw(7) << row.track << std::setw(8) << row.dauer << std::setw(10)
            << row.anfang << std::setw(10) << row.ende << row.inhalt;
        if (const auto title = titles.byTrack.find(row.track); title != titles.byTrack.end())
            out << std::string(8 - std::min<size_t>(row.inhalt.size(), 7), ' ') << title->second;
        out << '\n';
    }
    return kExitDone;
}

}  // namespace

int RunDriveCommand(const CliArgs& args, std::ostream& out, std::ostream& err,
                    const TocTitlesFn& titles) {
    if (!args.positional.empty()) {
        err << "Unerwartetes Argument: " << args.positional.front() << '\n';
        return kExitUsage;
    }
    auto chosen = ChooseDrive(Option(args, "--drive"));
    if (!chosen.choice) {
        err << chosen.error << '\n';
        return kExitFailed;
    }
    if (args.command == "drives")
        return Drives(*chosen.choice, out, err);
    return Toc(*chosen.choice, out, err, titles);
}

}  // namespace plattmix::cli
