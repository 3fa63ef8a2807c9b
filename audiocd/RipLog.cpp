#include "RipLog.h"

#include <algorithm>
#include <string_view>

#include "FolderFile.h"
#include "RipJob.h"

namespace plattmix::audiocd {
namespace {

std::string ProofText(RipProof proof) {
    switch (proof) {
        case RipProof::AccurateRip:
            return "AccurateRip";
        case RipProof::TestAndCopy:
            return "Prüfen und Kopieren";
        case RipProof::None:
            break;
    }
    return "keiner";
}

// "label:" and the value in the column after the longest label; indent for a track's facts.
std::string Line(const std::string& label, const std::string& value, bool indent = true) {
    std::string line = (indent ? "  " : "") + label + ":";
    line.resize(std::max<size_t>(line.size() + 1, 23), ' ');
    return line + value + "\n";
}

std::string TrackText(const RipLogTrack& track) {
    std::string crcs;
    for (const uint32_t crc : track.passCrcs) {
        if (!crcs.empty())
            crcs += ' ';
        crcs += Hex8Text(crc);
    }
    std::string text = "Track " + NumberText(track.number) + "\n";
    text += Line("Datei", track.fileName);
    text += Line("Nachweis", ProofText(track.proof));
    text += Line("CRC-32 je Durchgang", crcs.empty() ? "-" : crcs);
    text += Line("Erneut gelesen", std::to_string(track.rereadSectors) + " Sektoren");
    text += Line("AccurateRip v1", Hex8Text(track.accurateRipV1));
    text += Line("AccurateRip v2", Hex8Text(track.accurateRipV2));
    text += Line("AccurateRip", track.verdict.Text());
    if (!track.problem.empty()) {
        text += Line("Problem", track.problem);
    }
    return text + "\n";
}

}  // namespace

bool RipLog::AllProven() const {
    return std::none_of(tracks.begin(), tracks.end(),
                        [](const RipLogTrack& t) { return t.proof == RipProof::None; });
}

std::string RipLogSummary(const RipLog& log) {
    const auto count = [&](RipProof proof) {
        return std::count_if(log.tracks.begin(), log.tracks.end(),
                             [&](const RipLogTrack& t) { return t.proof == proof; });
    };
    const auto byRecord = count(RipProof::AccurateRip);
    const auto byPasses = count(RipProof::TestAndCopy);
    std::string text = "Zusammenfassung: " + std::to_string(byRecord + byPasses) + " von " +
                       std::to_string(log.tracks.size()) + " Tracks bewiesen (" +
                       std::to_string(byRecord) + " durch AccurateRip, " +
                       std::to_string(byPasses) + " durch Prüfen und Kopieren)";
    std::string failed;
    for (const RipLogTrack& track : log.tracks) {
        if (track.proof == RipProof::None) {
            failed += (failed.empty() ? "" : ", ") + NumberText(track.number);
        }
    }
    return text + (failed.empty() ? "." : "; nicht bewiesen: Track " + failed + ".");
}

std::string FormatRipLog(const RipLog& log) {
    std::string text = log.program + " - Protokoll des Rippens\n\n";
    text += Line("Laufwerk", log.drive, false);
    text += Line("Leseversatz",
                 std::string(log.offset > 0 ? "+" : "") + std::to_string(log.offset) + " Samples",
                 false);
    text += Line("Modus",
                 log.secure ? "sicher (AccurateRip, sonst Prüfen und Kopieren)"
                            : "einfach (jeder Sektor einmal gelesen)",
                 false);
    if (!log.accurateRipId.empty()) {
        text += Line("AccurateRip-Kennung", log.accurateRipId, false);
    }
    if (!log.accurateRipStatus.empty()) {
        // The reason may name AccurateRip itself; the label does that already.
        std::string_view status = log.accurateRipStatus;
        if (status.starts_with("AccurateRip: "))
            status.remove_prefix(std::string_view("AccurateRip: ").size());
        text += Line("AccurateRip-Eintrag", std::string(status), false);
    }
    text += "\n";
    for (const RipLogTrack& track : log.tracks) {
        text += TrackText(track);
    }
    return text + RipLogSummary(log) + "\n";
}

std::string WriteRipLog(const std::string& folder, const RipLog& log) {
    return WriteFileInFolder(folder, kRipLogName, FormatRipLog(log));
}

}  // namespace plattmix::audiocd
