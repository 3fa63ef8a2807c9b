#include "CueSheet.h"

#include <cstddef>
#include <cstdio>

namespace plattmix::discgen {
namespace {

std::string TwoDigits(int value) {
    char text[16];
    std::snprintf(text, sizeof text, "%02d", value);
    return text;
}

std::string ModeText(TrackMode mode) {
    return mode == TrackMode::Audio ? "AUDIO" : "MODE1/2048";
}

void AppendCdText(std::string& out, const std::string& indent, const std::string& title,
                  const std::string& performer) {
    if (!title.empty()) {
        out += indent + "TITLE \"" + title + "\"\n";
    }
    if (!performer.empty()) {
        out += indent + "PERFORMER \"" + performer + "\"\n";
    }
}

void AppendTrack(std::string& out, int number, const TrackSpec& t, const TrackPlacement& p) {
    out += "  TRACK " + TwoDigits(number) + " " + ModeText(t.mode) + "\n";
    AppendCdText(out, "    ", t.title, t.performer);
    if (!t.isrc.empty()) {
        out += "    ISRC " + t.isrc + "\n";
    }
    if (t.pregapSectors > 0) {
        out += "    PREGAP " + CueTime(t.pregapSectors) + "\n";
    }
    if (t.indexZeroSectors > 0) {
        out += "    INDEX 00 " + CueTime(p.fileIndexZero) + "\n";
    }
    out += "    INDEX 01 " + CueTime(p.fileIndexOne) + "\n";
}

}  // namespace

std::string CueTime(int32_t sectors) {
    const int frames = sectors % kSectorsPerSecond;
    const int seconds = (sectors / kSectorsPerSecond) % 60;
    const int minutes = sectors / (kSectorsPerSecond * 60);
    return TwoDigits(minutes) + ":" + TwoDigits(seconds) + ":" + TwoDigits(frames);
}

std::string CueSheetText(const DiscSpec& spec, const DiscLayout& layout) {
    std::string out;
    if (!spec.catalog.empty()) {
        out += "CATALOG " + spec.catalog + "\n";
    }
    AppendCdText(out, "", spec.title, spec.performer);
    const bool severalSessions = layout.sessions.size() > 1;
    for (size_t i = 0; i < spec.tracks.size(); ++i) {
        const TrackSpec& t = spec.tracks[i];
        const bool newFile = i == 0 || t.file != spec.tracks[i - 1].file;
        const bool newSession = i == 0 || t.session != spec.tracks[i - 1].session;
        if (severalSessions && newSession) {
            out += "REM SESSION " + TwoDigits(t.session) + "\n";
        }
        if (newFile) {
            out += "FILE \"" + spec.files[static_cast<size_t>(t.file)] + "\" BINARY\n";
        }
        AppendTrack(out, static_cast<int>(i + 1), t, layout.tracks[i]);
    }
    return out;
}

}  // namespace plattmix::discgen
