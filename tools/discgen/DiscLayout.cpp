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
    return "Track " + std::to_string(index + 1) + ": " + std::string(what);
}

std::string ValidateTrack(const DiscSpec& spec, size_t i) {
    const TrackSpec& t = spec.tracks[i];
    if (t.sectors < 1 || t.indexZeroSectors < 0 || t.pregapSectors < 0) {
        return TrackError(i, "sector counts must be positive");
    }
    if (t.file < 0 || static_cast<size_t>(t.file) >= spec.files.size()) {
        return TrackError(i, "names no file of the disc");
    }
    if (!SafeText(t.title) || !SafeText(t.performer)) {
        return TrackError(i, "CD-Text is too long or contains quotes or line breaks");
    }
    const bool gap = t.indexZeroSectors > 0 || t.pregapSectors > 0;
    if (gap && t.mode != TrackMode::Audio) {
        return TrackError(i, "only audio tracks carry a gap");
    }
    if (i == 0) {
        if (t.file != 0 || t.session != 1) {
            return TrackError(i, "the first track starts the first file and session");
        }
        return gap ? TrackError(i, "the first track of a session carries no gap") : "";
    }
    const TrackSpec& prev = spec.tracks[i - 1];
    if (t.file != prev.file && t.file != prev.file + 1) {
        return TrackError(i, "files are used in order, each by at least one track");
    }
    if (t.file == prev.file && t.mode != prev.mode) {
        return TrackError(i, "all tracks of a file share one mode");
    }
    if (t.session != prev.session) {
        if (t.session != prev.session + 1 || t.file == prev.file) {
            return TrackError(i, "a new session follows the previous one in a new file");
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
            return "File " + spec.files[f] + " would be longer than 100 minutes";
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
        return "The disc name is not usable as a file name";
    }
    if (!SafeText(spec.title) || !SafeText(spec.performer)) {
        return "The disc's CD-Text is too long or contains quotes or line breaks";
    }
    if (spec.tracks.empty() || spec.tracks.size() > kMaxTracks) {
        return "A disc holds 1 to 99 tracks";
    }
    for (const std::string& file : spec.files) {
        if (!SafeFileName(file) || file == spec.name + ".cue") {
            return "File name not usable: " + file;
        }
    }
    for (size_t i = 0; i < spec.tracks.size(); ++i) {
        if (std::string why = ValidateTrack(spec, i); !why.empty()) {
            return why;
        }
    }
    if (static_cast<size_t>(spec.tracks.back().file) + 1 != spec.files.size()) {
        return "Every file must hold at least one track";
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
