#include "DiscLayout.h"

#include <cstddef>
#include <string_view>

namespace plattmix::discgen {
namespace {

constexpr size_t kMaxTracks = 99;
constexpr size_t kMaxCdTextLength = 80;

// Names and CD-Text go into quoted CUE fields: no quotes, no line breaks, no folders.
bool SafeFileName(std::string_view name) {
    return !name.empty() && name.find_first_of("\"/\\\r\n") == std::string_view::npos &&
           name != "." && name != "..";
}

bool SafeText(std::string_view text) {
    return text.size() <= kMaxCdTextLength && text.find_first_of("\"\r\n") == std::string::npos;
}

std::string TrackError(size_t index, std::string_view what) {
    return "Spur " + std::to_string(index + 1) + ": " + std::string(what);
}

std::string ValidateTrack(const DiscSpec& spec, size_t i) {
    const TrackSpec& t = spec.tracks[i];
    if (t.sectors < 1 || t.indexZeroSectors < 0 || t.pregapSectors < 0) {
        return TrackError(i, "Sektorzahlen muessen positiv sein");
    }
    if (t.file < 0 || static_cast<size_t>(t.file) >= spec.files.size()) {
        return TrackError(i, "nennt keine Datei der Disc");
    }
    if (!SafeText(t.title) || !SafeText(t.performer)) {
        return TrackError(i, "CD-Text zu lang oder mit Anfuehrungszeichen oder Zeilenumbruch");
    }
    const bool gap = t.indexZeroSectors > 0 || t.pregapSectors > 0;
    if (gap && t.mode != TrackMode::Audio) {
        return TrackError(i, "nur Audiospuren haben eine Pause");
    }
    if (i == 0) {
        if (t.file != 0 || t.session != 1) {
            return TrackError(i, "die erste Spur beginnt die erste Datei und Sitzung");
        }
        return gap ? TrackError(i, "die erste Spur einer Sitzung hat keine Pause") : "";
    }
    const TrackSpec& prev = spec.tracks[i - 1];
    if (t.file != prev.file && t.file != prev.file + 1) {
        return TrackError(i, "Dateien folgen der Reihe nach, jede mit mindestens einer Spur");
    }
    if (t.file == prev.file && t.mode != prev.mode) {
        return TrackError(i, "alle Spuren einer Datei haben denselben Modus");
    }
    if (t.session != prev.session) {
        if (t.session != prev.session + 1 || t.file == prev.file) {
            return TrackError(i, "eine neue Sitzung folgt der vorigen in einer neuen Datei");
        }
        if (gap) {
            return TrackError(i, "the first track of a session carries no gap");
        }
    }
    return "";
}

// Sectors each file holds, to keep every file position expressible as mm:ss:ff.
std::string ValidateFileSizes(const DiscSpec& spec) {
    std::vector<int64_t> sectors(spec.files.size(), 0);
    for (const TrackSpec& t : spec.tracks) {
        sectors[static_cast<size_t>(t.file)] += int64_t{t.indexZeroSectors} + t.sectors;
    }
    for (size_t f = 0; f < sectors.size(); ++f) {
        if (sectors[f] > kMaxFileSectors) {
            return "Datei " + spec.files[f] + " waere laenger als 100 Minuten";
        }
    }
    return "";
}

// File positions and disc addresses of every track; a new session starts a fixed gap after
// the previous session's last sector.
std::vector<TrackPlacement> PlaceTracks(const DiscSpec& spec) {
    std::vector<TrackPlacement> placed;
    int32_t lba = 0;
    int32_t fileSector = 0;
    for (size_t i = 0; i < spec.tracks.size(); ++i) {
        const TrackSpec& t = spec.tracks[i];
        if (i > 0 && t.file != spec.tracks[i - 1].file) {
            fileSector = 0;
        }
        if (i > 0 && t.session != spec.tracks[i - 1].session) {
            lba += kSessionGapSectors;
        }
        TrackPlacement p;
        p.fileIndexZero = fileSector;
        p.fileIndexOne = fileSector + t.indexZeroSectors;
        fileSector = p.fileIndexOne + t.sectors;
        p.pregapLba = lba;
        p.indexZeroLba = p.pregapLba + t.pregapSectors;
        p.startLba = p.indexZeroLba + t.indexZeroSectors;
        p.endLba = p.startLba + t.sectors;
        lba = p.endLba;
        placed.push_back(p);
    }
    return placed;
}

bool LastOfSession(const DiscSpec& spec, size_t i) {
    return i + 1 == spec.tracks.size() || spec.tracks[i + 1].session != spec.tracks[i].session;
}

// Sessions with their first and last track; the lead-out follows the last track's content.
std::vector<SessionInfo> CollectSessions(const DiscSpec& spec,
                                         const std::vector<TrackPlacement>& placed) {
    std::vector<SessionInfo> sessions;
    int first = 1;
    for (size_t i = 0; i < spec.tracks.size(); ++i) {
        if (LastOfSession(spec, i)) {
            sessions.push_back(
                {spec.tracks[i].session, first, static_cast<int>(i + 1), placed[i].endLba});
            first = static_cast<int>(i + 2);
        }
    }
    return sessions;
}

// A span runs to the next track's INDEX 01 within the session, else to the lead-out.
void SetSpans(const DiscSpec& spec, std::vector<TrackPlacement>& placed) {
    for (size_t i = 0; i < placed.size(); ++i) {
        placed[i].spanEndLba = LastOfSession(spec, i) ? placed[i].endLba : placed[i + 1].startLba;
    }
}

}  // namespace

int32_t FileSectorBytes(TrackMode mode) {
    return mode == TrackMode::Audio ? kAudioSectorBytes : kDataSectorBytes;
}

std::string ValidateSpec(const DiscSpec& spec) {
    if (!SafeFileName(spec.name)) {
        return "Der Disc-Name taugt nicht als Dateiname";
    }
    if (!SafeText(spec.title) || !SafeText(spec.performer)) {
        return "CD-Text der Disc zu lang oder mit Anfuehrungszeichen oder Zeilenumbruch";
    }
    if (spec.tracks.empty() || spec.tracks.size() > kMaxTracks) {
        return "Eine Disc hat 1 bis 99 Spuren";
    }
    for (const std::string& file : spec.files) {
        if (!SafeFileName(file) || file == spec.name + ".cue") {
            return "Dateiname nicht verwendbar: " + file;
        }
    }
    for (size_t i = 0; i < spec.tracks.size(); ++i) {
        if (std::string why = ValidateTrack(spec, i); !why.empty()) {
            return why;
        }
    }
    if (static_cast<size_t>(spec.tracks.back().file) + 1 != spec.files.size()) {
        return "Jede Datei muss mindestens eine Spur enthalten";
    }
    return ValidateFileSizes(spec);
}

Result<DiscLayout> LayOut(const DiscSpec& spec) {
    if (std::string why = ValidateSpec(spec); !why.empty()) {
        return Result<DiscLayout>::Fail(why);
    }
    DiscLayout layout;
    layout.tracks = PlaceTracks(spec);
    layout.sessions = CollectSessions(spec, layout.tracks);
    SetSpans(spec, layout.tracks);
    return Result<DiscLayout>::Ok(std::move(layout));
}

}  // namespace plattmix::discgen
