#include "TrayCommand.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <optional>
#include <ostream>
#include <thread>

#include "CdAudio.h"
#include "CdAudioCommand.h"
#include "CdAudioDoor.h"
#include "DriveChoice.h"
#include "DriveList.h"
#include "TrackList.h"
#include "TrayState.h"
#include "modMSF.h"

namespace plattmix::cli {

namespace {

constexpr const char* kOpenFailed = "Konnte Laufwerk nicht öffnen! Bitte manuell versuchen!";
constexpr const char* kCloseFailed = "Konnte Laufwerk nicht schließen! Bitte manuell versuchen!";
constexpr const char* kPlayAlias = "plattmixCli";
constexpr auto kPollInterval = std::chrono::milliseconds(200);

// Ctrl-C stops the playback, as the Stop button does.
std::atomic<bool> interrupted{false};
extern "C" void OnPlayInterrupt(int) {
    interrupted = true;
}

std::optional<std::string> Option(const CliArgs& args, const std::string& name) {
    const auto it = args.options.find(name);
    if (it == args.options.end())
        return std::nullopt;
    return it->second;
}

std::optional<int> Positive(const std::optional<std::string>& text) {
    int value = 0;
    if (!text || text->empty())
        return std::nullopt;
    const auto [end, ec] = std::from_chars(text->data(), text->data() + text->size(), value);
    if (ec != std::errc{} || end != text->data() + text->size() || value < 1)
        return std::nullopt;
    return value;
}

std::string HandleOf(DriveChoice& choice) {
    int16_t index = choice.index == 0 ? int16_t{1} : choice.index;
    return choice.transport->DriveHandle(index);
}

// The name the cdaudio device knows the drive by, as the drive list shows it ("/dev/sg0" for a
// fall-back drive, whose handle is no name).
std::string NameOf(DriveChoice& choice) {
    return audiocd::DriveNameOf(*choice.transport, HandleOf(choice));
}

int PrintState(const std::string& drive, std::ostream& out, std::ostream& err) {
    int16_t state = scsi::kTrayUnknown;
    std::error_code ec;
    if (std::filesystem::is_regular_file(drive, ec)) {
        // A disc image has no node: its drive answers for itself.
        auto chosen = ChooseDrive(drive);
        if (!chosen.choice) {
            err << chosen.error << '\n';
        } else {
            state = scsi::GetTrayState(*chosen.choice->transport, HandleOf(*chosen.choice));
        }
    } else {
        state = scsi::GetTrayState(drive);
    }
    out << state << '\n';
    return state == scsi::kTrayUnknown ? kExitFailed : kExitDone;
}

int MoveDoor(const std::string& drive, bool openDoor, std::ostream& err) {
    const char* failed = openDoor ? kOpenFailed : kCloseFailed;
    auto chosen = ChooseDrive(drive);
    if (!chosen.choice) {
        err << chosen.error << '\n' << failed << '\n';
        return kExitFailed;
    }
    audiocd::CdAudio cdAudio(*chosen.choice->transport, {});
    cdAudio.SetErrorBox([&err](const std::string& text) { err << text << '\n'; });
    if (!audiocd::OpenCloseCD(cdAudio, NameOf(*chosen.choice), openDoor)) {
        err << failed << '\n';
        return kExitFailed;
    }
    return kExitDone;
}

std::string Clock(int64_t milliseconds) {
    return audiocd::FormatDauer(std::max<int64_t>(0, milliseconds));
}

// Sends one command; the error's text goes to err.
bool Send(audiocd::CdAudio& cdAudio, const std::string& command, std::ostream& err) {
    const audiocd::MciReply reply = cdAudio.SendString(command);
    if (!reply.ok())
        err << reply.errorText << '\n';
    return reply.ok();
}

// Polls the device until it stops playing or Ctrl-C; the position on a terminal line.
void Follow(audiocd::CdAudio& cdAudio, int64_t startMs, int position, std::ostream& out,
            bool terminal) {
    const std::string alias = kPlayAlias;
    std::string mode = "playing";
    while (mode == "playing" && !interrupted) {
        std::this_thread::sleep_for(kPollInterval);
        if (terminal) {
            const std::string at = cdAudio.SendString("status " + alias + " position").result;
            out << "\rTrack " << position << "  " << Clock(audiocd::MciValue(at) - startMs)
                << std::flush;
        }
        mode = cdAudio.SendString("status " + alias + " mode").result;
    }
    if (terminal)
        out << '\n';
}

}  // namespace

int RunTrayCommand(const CliArgs& args, std::ostream& out, std::ostream& err) {
    const auto drive = Option(args, "--drive");
    if (!drive || drive->empty()) {
        err << "Laufwerk fehlt (--drive LAUFWERK).\n";
        return kExitUsage;
    }
    if (args.positional.empty())
        return PrintState(*drive, out, err);
    const std::string& action = args.positional.front();
    if (args.positional.size() > 1 || (action != "open" && action != "close")) {
        err << "tray: open oder close erwartet, nicht " << args.positional.back() << '\n';
        return kExitUsage;
    }
    return MoveDoor(*drive, action == "open", err);
}

int RunPlayCommand(const CliArgs& args, std::ostream& out, std::ostream& err, bool terminal,
                   const audiocd::AudioSinkFactory& sinks) {
    if (!args.positional.empty()) {
        err << "Unerwartetes Argument: " << args.positional.front() << '\n';
        return kExitUsage;
    }
    const auto position = Positive(Option(args, "--track"));
    const auto seconds = Positive(Option(args, "--seconds"));
    if (!position || !seconds) {
        err << "play: --track N und --seconds S (ganze Zahlen ab 1) angeben.\n";
        return kExitUsage;
    }
    auto chosen = ChooseDrive(Option(args, "--drive"));
    if (!chosen.choice) {
        err << chosen.error << '\n';
        return kExitFailed;
    }
    scsi::ISCSI& transport = *chosen.choice->transport;
    const std::string handle = HandleOf(*chosen.choice);
    const audiocd::TrackList list = audiocd::ReadTrackList(transport, handle);
    if (list.rows.empty()) {
        err << list.emptyText << '\n';
        return kExitFailed;
    }
    if (*position > static_cast<int>(list.rows.size())) {
        err << "--track: Positionen 1 bis " << list.rows.size() << '\n';
        return kExitUsage;
    }
    const audiocd::TrackRow& row = list.rows[static_cast<size_t>(*position - 1)];
    if (row.inhalt != audiocd::kTextAudio) {
        err << "Track " << *position << " ist ein Datentrack.\n";
        return kExitFailed;
    }
    const int32_t start = row.startLba + modMSF::kPregapFrames;
    const int64_t wanted = int64_t{*seconds} * modMSF::kFramesPerSecond;
    const auto end =
        static_cast<int32_t>(std::min<int64_t>(row.endLba + modMSF::kPregapFrames, start + wanted));
    const int64_t startMs = audiocd::FramesToMilliseconds(start);

    audiocd::CdAudio cdAudio(transport, sinks);
    const std::string alias = kPlayAlias;
    if (!Send(cdAudio,
              "open " + audiocd::MciQuote(NameOf(*chosen.choice) + ":") + " alias " + alias +
                  " wait shareable type cdaudio",
              err) ||
        !Send(cdAudio, "set " + alias + " time format milliseconds", err))
        return kExitFailed;
    interrupted = false;
    const auto previous = std::signal(SIGINT, OnPlayInterrupt);
    const bool started = Send(cdAudio,
                              "play " + alias + " from " + std::to_string(startMs) + " to " +
                                  std::to_string(audiocd::FramesToMilliseconds(end)),
                              err);
    if (started)
        Follow(cdAudio, startMs, *position, out, terminal);
    std::signal(SIGINT, previous);
    cdAudio.SendString("stop " + alias);
    const std::string failure = cdAudio.PlaybackError(alias);
    const int64_t reached =
        audiocd::MciValue(cdAudio.SendString("status " + alias + " position").result);
    cdAudio.SendString("close " + alias);
    if (!started)
        return kExitFailed;
    out << "Track " << *position << ": " << Clock(reached - startMs) << " gespielt.\n";
    if (!failure.empty()) {
        err << failure << '\n';
        return kExitFailed;
    }
    return interrupted ? kExitFailed : kExitDone;
}

}  // namespace plattmix::cli
