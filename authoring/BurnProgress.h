// What the burn page shows while a disc is written: the status text of each write action with
// its time text, and the progress bar while data is written.
#pragma once

#include <optional>
#include <string>

#include "BurnService.h"

namespace plattmix::authoring {

// The write actions as the progress record numbers them.
enum WriteAction : int {
    kActionValidatingMedia = 0,
    kActionFormattingMedia = 1,
    kActionInitializingHardware = 2,
    kActionCalibratingPower = 3,
    kActionWritingData = 4,
    kActionFinalization = 5,
    kActionCompleted = 6,
    kActionVerifying = 7,
};

// Whole minutes and the remaining seconds, each at least two digits, joined by ":" ("03:07").
// Negative times read as 0.
std::string FormatMinuten(int seconds);

struct ProgressView {
    std::string text;        // for Label4
    std::optional<int> bar;  // for ProgressBar1, only while data is written and the size is known
};

// The progress handler's view of one progress record: "Medien validieren 00:01 / 00:10" and so
// on, "Kalibriere die Leistung (OPC)" glued to its time text, "Unbekannte Aktion: 9" for numbers
// it does not know. The bar is (last written - start) * 100 / sector count, cut to a whole
// number, while data is written and while it is read back for the check.
ProgressView cDFileSystemImageEvents_Update(const WriteProgress& progress);

}  // namespace plattmix::authoring
