#include "RipCommand.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <csignal>
#include <filesystem>
#include <optional>
#include <ostream>
#include <set>

#include "Commands.h"
#include "CurlHttpGet.h"
#include "DriveChoice.h"
#include "OutputFormats.h"
#include "ProgressBar.h"
#include "RipEncoder.h"
#include "RipJob.h"
#include "RipModeSettings.h"
#include "RipTrack.h"
#include "SecureRipJob.h"
#include "TitleOptions.h"
#include "TrackList.h"
#include "modPaths.h"
#include "modSettings.h"

namespace plattmix::cli {

namespace {

// Ctrl-C asks the job to stop after the current track, as "Abbrechen" does in the window.
std::atomic<bool> interrupted{false};
extern "C" void OnInterrupt(int) {
    interrupted = true;
}

std::optional<std::string> Option(const CliArgs& args, const std::string& name) {
    const auto it = args.options.find(name);
    if (it == args.options.end())
        return std::nullopt;
    return it->second;
}

std::optional<int> Number(std::string_view text) {
    int value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc{} || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

struct RipSettings {
    audiocd::RipJobParams params;
    std::optional<std::string> tracks;
    TitleOptions titles;
    bool secure = false;        // --secure
    std::optional<int> offset;  // --offset N, over the settings' value
};

// The options into the job's parameters; the usage error's text when they don't fit.
std::optional<std::string> ReadOptions(const CliArgs& args, RipSettings& settings) {
    auto& p = settings.params;
    const std::string format = Option(args, "--format").value_or("wav");
    const auto index = encode::FormatByCliName(format);
    if (!index)
        return "Unbekanntes Format: " + format;
    p.formatIndex = *index;
    const auto out = Option(args, "--out");
    if (!out || out->empty())
        return "Zielordner fehlt (--out ORDNER).";
    p.targetFolder = shell::AddBackslash(*out);
    p.namePrefix = Option(args, "--prefix").value_or("");
    if (p.namePrefix.empty())
        p.namePrefix = "Track";
    const std::string numbering = Option(args, "--number").value_or("running");
    if (numbering != "running" && numbering != "track")
        return "--number: running oder track";
    p.runningNumber = numbering == "running";
    p.numberFirst = args.options.contains("--number-first");
    settings.tracks = Option(args, "--tracks");
    settings.secure = args.options.contains("--secure");
    if (const auto offset = Option(args, "--offset")) {
        settings.offset = audiocd::ParseSignedNumber(*offset);
        if (!settings.offset)
            return "--offset: Leseversatz in Samples, z. B. 667 oder -6";
        if (!settings.secure)
            return "--offset gilt nur mit --secure.";
    }
    return ReadTitleOptions(args, settings.titles);
}

// The secure job over the same rows and encoder: the drive's offset and the server from the
// settings (--offset wins), the AccurateRip status once when there is no record. Done only when
// every track is proven and the log is written.
int RunSecureRip(scsi::ISCSI& transport, const RipSettings& settings,
                 const audiocd::JobHooks& hooks, const audiocd::RowTextFn& rowText,
                 const audiocd::EncodeFn& encoder, std::ostream& out) {
    auto params =
        audiocd::SecureRipParamsFor(transport, settings.params, shell::ComputeSettingsPaths());
    if (settings.offset)
        params.offset = *settings.offset;
    params.httpGet = audiocd::CurlHttpGet;
    params.extension = std::string(encode::FormatAt(settings.params.formatIndex).extension);
    const auto result = audiocd::RunSecureRipJob(transport, params, hooks, rowText, encoder);
    if (!result.accurateRipStatus.empty())
        out << result.accurateRipStatus << '\n';
    return result.allProven && result.logError.empty() ? kExitDone : kExitFailed;
}

}  // namespace

std::optional<std::vector<int>> ParseTrackList(const std::string& text, int rowCount) {
    std::set<int> positions;
    size_t at = 0;
    while (at <= text.size()) {
        const size_t comma = std::min(text.find(',', at), text.size());
        const std::string_view part(text.data() + at, comma - at);
        const size_t dash = part.find('-');
        const auto from = Number(part.substr(0, dash));
        const auto to = dash == std::string_view::npos ? from : Number(part.substr(dash + 1));
        if (!from || !to || *from < 1 || *to < *from || *to > rowCount)
            return std::nullopt;
        for (int i = *from; i <= *to; ++i)
            positions.insert(i);
        at = comma + 1;
    }
    return std::vector<int>(positions.begin(), positions.end());
}

int RunRipCommand(const CliArgs& args, std::ostream& out, std::ostream& err, bool terminal) {
    if (!args.positional.empty()) {
        err << "Unerwartetes Argument: " << args.positional.front() << '\n';
        return kExitUsage;
    }
    RipSettings settings;
    if (const auto usage = ReadOptions(args, settings)) {
        err << *usage << '\n';
        return kExitUsage;
    }
    auto& p = settings.params;
    auto chosen = ChooseDrive(Option(args, "--drive"));
    if (!chosen.choice) {
        err << chosen.error << '\n';
        return kExitFailed;
    }
    scsi::ISCSI& transport = *chosen.choice->transport;
    int16_t index = chosen.choice->index == 0 ? int16_t{1} : chosen.choice->index;
    p.handle = transport.DriveHandle(index);

    const audiocd::TrackList list = audiocd::ReadTrackList(transport, p.handle);
    if (list.rows.empty()) {
        err << list.emptyText << '\n';
        return kExitFailed;
    }
    const int rowCount = static_cast<int>(list.rows.size());
    std::vector<int> wanted;
    if (settings.tracks) {
        const auto parsed = ParseTrackList(*settings.tracks, rowCount);
        if (!parsed) {
            err << "--tracks: Positionen 1 bis " << rowCount << ", z. B. 1,3-5\n";
            return kExitUsage;
        }
        wanted = *parsed;
    } else {
        // Every audio track; data tracks are imaged, not ripped.
        for (int i = 1; i <= rowCount; ++i) {
            if (list.rows[static_cast<size_t>(i - 1)].inhalt == audiocd::kTextAudio)
                wanted.push_back(i);
        }
    }
    for (int position : wanted) {
        if (list.rows[static_cast<size_t>(position - 1)].inhalt != audiocd::kTextAudio) {
            err << "Track " << position << " ist ein Datentrack und wird nicht gerippt.\n";
            return kExitUsage;
        }
    }
    for (int i = 0; i < rowCount; ++i) {
        const bool checked = std::find(wanted.begin(), wanted.end(), i + 1) != wanted.end();
        p.rows.push_back(audiocd::RipRow{list.rows[static_cast<size_t>(i)].track, checked});
    }

    std::error_code ec;
    std::filesystem::create_directories(p.targetFolder, ec);
    if (!std::filesystem::is_directory(p.targetFolder, ec)) {
        err << "Bitte einen gültigen Ziel-Pfad eingeben\n";
        return kExitFailed;
    }

    ProgressBar bar(out, terminal);
    bool failed = false;
    audiocd::JobHooks hooks;
    hooks.progress = [&](int percent) { bar.Update(percent); };
    hooks.warn = [&](const std::string& text) {
        bar.Finish(text);
        failed = true;
    };
    hooks.aborted = [] { return interrupted.load(); };
    const auto labelOf = [&p](size_t row) {
        return "Track " + audiocd::NumberText(p.rows[row].trackNumber);
    };
    // A track's result may come while the next one is read: its line goes out, then the bar
    // of the track being read starts again.
    std::optional<size_t> reading;
    const auto rowText = [&](size_t row, const std::string& text) {
        if (text == audiocd::kTextWriting) {
            bar.Begin(labelOf(row));
            reading = row;
            return;
        }
        if (text == audiocd::kTextTrackFailed || text == audiocd::kTextAborted)
            failed = true;
        bar.Finish(labelOf(row) + ": " + text);
        if (reading && *reading != row)
            bar.Begin(labelOf(*reading));
        else
            reading.reset();
    };

    // Compressed files are tagged with the disc's titles: CD-Text, or the look-up's.
    audiocd::EncodeFn encoder;
    if (p.formatIndex != encode::kWavFormat) {
        const auto titles = ReadDiscTitles(settings.titles, transport, p.handle, list, out);
        if (titles.usage) {
            err << *titles.usage << '\n';
            return kExitUsage;
        }
        encoder = encode::MakeRipEncoder(p, titles.lookup.titles);
    }

    interrupted = false;
    const auto previous = std::signal(SIGINT, OnInterrupt);
    int code = kExitDone;
    if (settings.secure) {
        code = RunSecureRip(transport, settings, hooks, rowText, encoder, out);
    } else {
        const auto result = audiocd::RunRipJob(transport, p, hooks, rowText, encoder);
        code = result.aborted || failed ? kExitFailed : kExitDone;
    }
    std::signal(SIGINT, previous);
    return code;
}

}  // namespace plattmix::cli
