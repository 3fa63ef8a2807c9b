// Erasing a rewritable disc in the chosen drive: only CD-RW and DVD+RW count (DVD-RW on purpose
// not), the user is asked first, and the disc is blanked quickly.
#pragma once

#include <functional>
#include <string>

#include "BurnJob.h"
#include "BurnService.h"

namespace plattmix::authoring {

// Message boxes (exclamation).
inline constexpr const char* kTextNoDiscToErase = "Keine Disk zum Löschen vorhanden!";
inline constexpr const char* kTextAlreadyBlank = "Disk zum Löschen ist schon leer";
// The question (Yes/No, question icon).
inline constexpr const char* kTextEraseQuestion = "Wollen sie alle Daten auf der Disk löschen?";
// Status line.
inline constexpr const char* kTextErasing = "Lösche Disk...";
inline constexpr const char* kTextEraseDone = "Löschen erfolgreich abgeschlossen";
inline constexpr const char* kTextEraseFailed = "Fehler beim Löschen!";

// CD-RW and DVD+RW; a "stdio:" file too, which libisoburn blanks the way it treats a DVD+RW.
bool IsErasableProfile(int profile);

struct EraseParams {
    std::string drive;
    bool eject = false;  // Check5, after success only
};

struct EraseHooks {
    BurnHooks burn;  // status, the question, message boxes, the message loop
    // The busy picture and the hourglass while the disc is blanked (no progress is shown).
    std::function<void(bool)> busy;
};

enum class EraseOutcome {
    NoDisc,        // "Keine Disk zum Löschen vorhanden!"
    AlreadyBlank,  // "Disk zum Löschen ist schon leer"
    Declined,      // No: nothing touched, nothing more shown
    Done,          // "Löschen erfolgreich abgeschlossen"
    Failed,        // "Fehler beim Löschen!"
};

struct EraseResult {
    EraseOutcome outcome = EraseOutcome::NoDisc;
    std::string status;  // the status line at the end; empty when it was not touched
    std::string detail;  // what the library said, for the command line and the logs
    bool ejected = false;
};

EraseResult EraseDisk(IBurnService& service, const EraseParams& params, const EraseHooks& hooks);

}  // namespace plattmix::authoring
