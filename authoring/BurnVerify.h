// The check after a burn: what the drive reads back from the new session is held against what
// was to be written. An image byte for byte over its own size; a compilation file by file with
// its sources, and every entry of the written tree (the earlier sessions' too) still listed.
#pragma once

#include <string>

#include "BurnJob.h"
#include "BurnService.h"
#include "CompilationImage.h"

namespace plattmix::authoring {

// Message box (exclamation) and status line, followed by the first differing file or sector.
inline constexpr const char* kTextVerifyFailed = "Fehler beim Prüfen: ";
// Message box (exclamation) when Escape stopped the check.
inline constexpr const char* kTextVerifyAborted =
    "Prüfen abgebrochen! Das Brennen selbst wurde vollständig abgeschlossen.";

enum class VerifyEnd {
    Equal,      // everything read back as it was written
    Different,  // a difference or a read error
    Aborted,    // Escape
};

struct VerifyRun {
    VerifyEnd end = VerifyEnd::Equal;
    std::string where;   // the first differing file, or "Sektor N"
    std::string detail;  // what went wrong there, for the command line and the logs
};

// Reads the blocks the last write put on the medium and compares them with the image file, up to
// the image's size (not the padding the drive adds). Shows "Überprüfen der Daten..." with the
// bar; Escape stops it.
VerifyRun VerifyIsoImage(IRecorder& recorder, const std::string& isoPath, const BurnHooks& hooks,
                         std::string& status);

// Reads the tree of the medium's new session: every entry of the tree that was written must be
// there, and every file of listing must read back as its source is (excludedFile, the target of
// a "stdio:" drive, was left out of the session). Shows the progress as VerifyIsoImage does.
VerifyRun VerifyCompilation(IRecorder& recorder, const CompilationListing& listing,
                            const std::string& excludedFile, const BurnHooks& hooks,
                            std::string& status);

// What the user is shown after the check. True when it found everything equal: the status line
// shows "Brennvorgang abgeschlossen." again and the burn goes on to its success. Otherwise result
// holds the end of the run: a difference is "Fehler beim Prüfen: " and where, in the status line
// and a message box (exclamation), "Fehler!" in the list; Escape is "Aktion abgebrochen!" and a box
// saying that the burn itself was completed.
bool ReportVerify(const VerifyRun& run, const BurnHooks& hooks, BurnResult& result);

}  // namespace plattmix::authoring
