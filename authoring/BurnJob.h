// Burning an ISO image file or a compilation onto the disc in the chosen drive. The window, the
// command line and the tests run the same jobs; everything the user sees goes through the hooks
// (status line, progress bar, questions, message boxes) and comes back in the result.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "BurnService.h"
#include "ScanHooks.h"

namespace plattmix::authoring {

// Status-line texts (Label4).
inline constexpr const char* kTextRecorderNotSupported = "RECORDER NOT SUPPORTED";
inline constexpr const char* kTextNoMultisession =
    "Multisession wird für diese Disc nicht unterstützt";
inline constexpr const char* kTextImporting = "Daten aus der vorherigen Sitzung importieren ...";
inline constexpr const char* kTextCompilationTooLarge = "Zusammenstellung zu groß für diese Disk!";
inline constexpr const char* kTextEscapePressed = "Aktion abgebrochen";   // when Escape is seen
inline constexpr const char* kTextActionAborted = "Aktion abgebrochen!";  // when the run ends
// The error table of a write (status line, and a message box for an image).
inline constexpr const char* kTextMediaNotBlank = "Fehler: Disk ist nicht leer!";
inline constexpr const char* kTextMediaNotSupported = "Fehler: Keine Disk im Laufwerk?";
inline constexpr const char* kTextIsoTooLarge = "Fehler: Disk zu klein für diese ISO!";
inline constexpr const char* kTextBurnFailed = "Fehler beim Brennen!";
// Message boxes.
inline constexpr const char* kTextBurnDone = "Brennen erfolgreich!";     // information
inline constexpr const char* kTextBurnAborted = "Brennen abgebrochen!";  // critical
// The question before a further session is added to a disc that is not blank (Yes/No).
inline constexpr const char* kTextContinueMultisession =
    "Die Disk ist nicht leer!\r\nWollen die Multission Disk fortsetzen?";

enum class MessageIcon { Information, Exclamation, Critical, Question };

struct BurnHooks {
    // Escape (the window's key flag, Ctrl-C on the command line) and the message loop.
    ScanHooks scan;
    std::function<void(const std::string&)> status;  // Label4
    std::function<void(int)> progress;               // ProgressBar1, 0..100
    // A Yes/No question with the question icon; true for Yes. Without it the answer is No.
    std::function<bool(const std::string&)> askYesNo;
    std::function<void(const std::string&, MessageIcon)> showMessage;
};

enum class BurnOutcome {
    Done,      // written (and ejected when asked)
    Aborted,   // Escape: "Aktion abgebrochen!", "Brennen abgebrochen!"
    Declined,  // the question was answered No: nothing written, nothing more shown
    NoFiles,   // the compilation holds no file: nothing written
    Failed,    // nothing written, or the write went wrong
};

struct BurnResult {
    BurnOutcome outcome = BurnOutcome::Failed;
    std::string status;      // the status line at the end
    std::string listStatus;  // the list view's status: "Fertig", "Fehler!", "Abbruch" or empty
    std::string detail;      // what went wrong, for the command line and the logs
    bool ejected = false;
};

// The close rule: a disc stays open for a further session only when it is burnt as multisession
// (Check3) without the closing option (Check4).
bool ShouldCloseDisc(bool multisession, bool closeDisc);

// The status text of a write error, from the error table.
const char* WriteErrorText(WriteError error);

struct BurnIsoParams {
    std::string drive;       // as chosen in cboDrv: "/dev/sr0" or "stdio:PATH"
    std::string isoPath;     // the image to burn
    bool closeDisc = false;  // the image writer leaves the disc open unless told otherwise
    bool eject = false;      // Check5, after success only
    bool verify = false;     // Check6: read the disc back before the success is told
};

// Burns the image in isoPath. The file is checked to be an ISO 9660 image before anything is
// written; the disc must be blank and large enough. Failures put the error table's text into the
// status line and into a message box (exclamation); success shows "Brennen erfolgreich!", after
// the disc was read back when verify asks for it (BurnVerify.h).
BurnResult BurnIsoImage(IBurnService& service, const BurnIsoParams& params, const BurnHooks& hooks);

struct BurnCompilationParams {
    std::string drive;
    // The checked rows, in their order: a folder's content goes into a folder of its own name at
    // the disc's root, a file to the root.
    std::vector<std::string> paths;
    std::string volumeName;     // Text3; empty: "PlattmixDisk"
    bool multisession = false;  // Check3
    bool closeDisc = false;     // Check4
    bool eject = false;         // Check5
    bool verify = false;        // Check6
};

// Burns the compilation. A disc that is not blank is continued (its last session imported, the
// compilation added to its tree) when it supports a further session: without Check3 the user is
// asked first. Files of the new session that already exist on the disc are replaced, folders
// are joined. With verify the new session is read back before the success is told.
BurnResult BurnZusammenstellung(IBurnService& service, const BurnCompilationParams& params,
                                const BurnHooks& hooks);

}  // namespace plattmix::authoring
