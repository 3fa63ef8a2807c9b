#include "RipCue.h"

#include <algorithm>
#include <cctype>

#include "FolderFile.h"
#include "RipJob.h"
#include "modMSF.h"

namespace plattmix::audiocd {
namespace {

// A length or a place in a file as minutes, seconds and frames.
std::string Msf(int32_t sectors) {
    return modMSF::MSFToString(modMSF::LBAToMSF(sectors - modMSF::kPregapFrames));
}

// A text in quotes on one line: its own double quotes become single ones, control characters
// (a line end in a disc's CD-Text would cut the line) blanks.
std::string Quoted(std::string text) {
    std::replace(text.begin(), text.end(), '"', '\'');
    std::replace_if(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
    return "\"" + text + "\"";
}

std::string FileType(const std::string& fileName) {
    const size_t dot = fileName.rfind('.');
    std::string extension = dot == std::string::npos ? "" : fileName.substr(dot + 1);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (extension == "mp3") {
        return "MP3";
    }
    return extension == "aif" || extension == "aiff" ? "AIFF" : "WAVE";
}

std::string Texts(const std::string& indent, const std::string& title,
                  const std::string& performer) {
    std::string text;
    if (!title.empty()) {
        text += indent + "TITLE " + Quoted(title) + "\n";
    }
    if (!performer.empty()) {
        text += indent + "PERFORMER " + Quoted(performer) + "\n";
    }
    return text;
}

std::string Lookup(const std::map<int, std::string>& texts, int track) {
    const auto it = texts.find(track);
    return it == texts.end() ? std::string() : it->second;
}

}  // namespace

std::string FormatRipCue(const RipCue& cue) {
    std::string text;
    if (!cue.catalog.empty()) {
        text += "CATALOG " + cue.catalog + "\n";
    }
    if (cue.cdText) {
        text += Texts("", cue.cdText->albumTitle, cue.cdText->albumPerformer);
    }
    const RipCueTrack* previous = nullptr;
    for (const RipCueTrack& track : cue.tracks) {
        // The pregap is at the end of the previous file when that file holds the track before.
        const bool gapInPrevious =
            track.pregapSectors > 0 && previous != nullptr && previous->number == track.number - 1;
        std::string head = "  TRACK " + NumberText(track.number) + " AUDIO\n";
        if (cue.cdText) {
            head += Texts("    ", Lookup(cue.cdText->titles, track.number),
                          Lookup(cue.cdText->performers, track.number));
        }
        if (!track.isrc.empty()) {
            head += "    ISRC " + track.isrc + "\n";
        }
        const std::string file =
            "FILE " + Quoted(track.fileName) + " " + FileType(track.fileName) + "\n";
        if (gapInPrevious) {
            const int32_t at = std::max(previous->sectors - track.pregapSectors, 0);
            text += head + "    INDEX 00 " + Msf(at) + "\n" + file;
        } else {
            text += file + head;
            if (track.pregapSectors > 0) {
                text += "    PREGAP " + Msf(track.pregapSectors) + "\n";
            }
        }
        text += "    INDEX 01 00:00:00\n";
        previous = &track;
    }
    return text;
}

std::string WriteRipCue(const std::string& folder, const RipCue& cue) {
    return WriteFileInFolder(folder, kRipCueName, FormatRipCue(cue));
}

}  // namespace plattmix::audiocd
