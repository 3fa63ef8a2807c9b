#include "BurnProgress.h"

#include <algorithm>
#include <cstdint>

namespace plattmix::authoring {

namespace {

std::string TwoDigits(int value) {
    std::string text = std::to_string(value);
    return text.size() < 2 ? "0" + text : text;
}

std::string TimeText(const WriteProgress& progress) {
    return FormatMinuten(progress.elapsedSeconds) + " / " + FormatMinuten(progress.totalSeconds);
}

// The share of the session written so far; nothing while the size is unknown.
std::optional<int> BarValue(const WriteProgress& progress) {
    if (progress.sectorCount <= 0)
        return std::nullopt;
    const int64_t written = progress.lastWrittenLba - progress.startLba;
    return static_cast<int>(written * 100 / progress.sectorCount);
}

}  // namespace

std::string FormatMinuten(int seconds) {
    seconds = std::max(seconds, 0);
    return TwoDigits(seconds / 60) + ":" + TwoDigits(seconds % 60);
}

ProgressView cDFileSystemImageEvents_Update(const WriteProgress& progress) {
    const std::string time = TimeText(progress);
    switch (progress.action) {
        case kActionValidatingMedia:
            return {"Medien validieren " + time, std::nullopt};
        case kActionFormattingMedia:
            return {"Medien formatieren " + time, std::nullopt};
        case kActionInitializingHardware:
            return {"Hardware initialisieren " + time, std::nullopt};
        case kActionCalibratingPower:
            return {"Kalibriere die Leistung (OPC)" + time, std::nullopt};
        case kActionWritingData:
            return {"Schreibe... " + time, BarValue(progress)};
        case kActionFinalization:
            return {"Beende das Schreiben " + time, std::nullopt};
        case kActionCompleted:
            return {"Brennvorgang abgeschlossen.", std::nullopt};
        case kActionVerifying:
            return {"Überprüfen der Daten...", BarValue(progress)};
        default:
            return {"Unbekannte Aktion: " + std::to_string(progress.action), std::nullopt};
    }
}

}  // namespace plattmix::authoring
