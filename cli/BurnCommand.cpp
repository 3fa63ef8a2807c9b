#include "BurnCommand.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <functional>
#include <iostream>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "BurnJob.h"
#include "BurnService.h"
#include "CompilationList.h"
#include "EraseJob.h"
#include "ProgressBar.h"

namespace plattmix::cli {

namespace {

using authoring::BurnHooks;
using authoring::MessageIcon;

// Ctrl-C is the window's Escape: a running write is cancelled and reported as an abort.
std::atomic<bool> interrupted{false};
extern "C" void OnBurnInterrupt(int) {
    interrupted = true;
}

// SIGINT goes to OnBurnInterrupt for the life of the object.
class InterruptCatcher {
  public:
    InterruptCatcher() : previous_(std::signal(SIGINT, OnBurnInterrupt)) { interrupted = false; }
    ~InterruptCatcher() { std::signal(SIGINT, previous_); }
    InterruptCatcher(const InterruptCatcher&) = delete;
    InterruptCatcher& operator=(const InterruptCatcher&) = delete;

  private:
    void (*previous_)(int);
};

constexpr const char* kBurnUsage =
    "Aufruf: plattmix-cli burn --drive LAUFWERK (--image DATEI.iso | --list LISTE.txt | "
    "PFAD...) [--multisession] [--close] [--eject] [--verify] [--volume NAME]";
constexpr const char* kEraseUsage = "Aufruf: plattmix-cli erase --drive LAUFWERK [--eject] [--yes]";

// Message boxes hold Windows line breaks; a terminal wants plain ones.
std::string Lines(const std::string& text) {
    std::string lines;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r' || i + 1 == text.size() || text[i + 1] != '\n')
            lines += text[i];
    }
    return lines;
}

bool Has(const CliArgs& args, const std::string& name) {
    return args.options.count(name) != 0;
}

std::optional<std::string> Option(const CliArgs& args, const std::string& name) {
    const auto found = args.options.find(name);
    return found == args.options.end() ? std::nullopt : std::optional(found->second);
}

// The usage error's text when the words don't fit the command.
std::optional<std::string> CheckUsage(const CliArgs& args, const std::vector<std::string>& known,
                                      const char* usage, bool takesPaths) {
    for (const auto& [name, value] : args.options) {
        if (std::find(known.begin(), known.end(), name) == known.end())
            return "Die Option " + name + " gilt nicht für " + args.command + ".\n" + usage;
    }
    if (!Has(args, "--drive"))
        return std::string("Das Laufwerk fehlt (--drive).\n") + usage;
    if (!takesPaths && !args.positional.empty())
        return "Unerwartetes Argument: " + args.positional[0] + "\n" + usage;
    return std::nullopt;
}

// Status texts become lines when their kind changes (the running time alone does not count);
// the progress bar runs between them on a terminal. Messages are printed, questions answered.
class JobOutput {
  public:
    JobOutput(std::ostream& out, std::ostream& err, bool terminal)
        : out_(out), err_(err), bar_(out, terminal) {}

    BurnHooks Hooks(std::function<bool(const std::string&)> answer) {
        BurnHooks hooks;
        hooks.scan.escapePressed = [] { return interrupted.load(); };
        hooks.status = [this](const std::string& text) { Status(text); };
        hooks.progress = [this](int percent) { Progress(percent); };
        hooks.askYesNo = std::move(answer);
        hooks.showMessage = [this](const std::string& text, MessageIcon icon) {
            // A failed write's status text follows the failure's own box: one line is enough.
            if (text == lastMessage_)
                return;
            lastMessage_ = text;
            (icon == MessageIcon::Information ? out_ : err_) << Lines(text) << '\n';
        };
        return hooks;
    }

    // The bar's label; the bar itself appears with the first progress.
    void Label(const std::string& label) { label_ = label; }

  private:
    void Progress(int percent) {
        if (!barShown_)
            bar_.Begin(label_);
        barShown_ = true;
        bar_.Update(percent);
    }

    void Status(const std::string& text) {
        const std::string kind = text.substr(0, text.find_first_of("0123456789"));
        if (kind == shownKind_)
            return;
        shownKind_ = kind;
        bar_.Finish(text);
        barShown_ = false;
    }

    std::ostream& out_;
    std::ostream& err_;
    ProgressBar bar_;
    std::string label_;
    bool barShown_ = false;
    std::string shownKind_;
    std::string lastMessage_;
};

int Outcome(bool done, const std::string& detail, std::ostream& err) {
    if (!detail.empty())
        err << detail << '\n';
    return done ? kExitDone : kExitFailed;
}

// The rows to burn: the paths given, or the entries of a list file.
std::optional<std::vector<std::string>> CompilationPaths(const CliArgs& args, std::ostream& err) {
    const auto list = Option(args, "--list");
    if (!list)
        return args.positional;
    const std::vector<std::string> lines = authoring::ReadListFileLines(*list);
    if (lines.empty()) {
        err << "Die Listendatei ist leer oder nicht lesbar: " << *list << '\n';
        return std::nullopt;
    }
    std::vector<std::string> paths = authoring::ReadListFile(*list);
    if (paths.size() != lines.size())
        err << (lines.size() - paths.size())
            << " Einträge der Liste gibt es nicht mehr; sie fehlen.\n";
    return paths;
}

}  // namespace

int RunBurnCommand(const CliArgs& args, std::ostream& out, std::ostream& err, bool terminal) {
    const std::vector<std::string> known = {"--drive",        "--image", "--list",  "--volume",
                                            "--multisession", "--close", "--eject", "--verify"};
    auto usage = CheckUsage(args, known, kBurnUsage, true);
    const int sources = (Has(args, "--image") ? 1 : 0) + (Has(args, "--list") ? 1 : 0) +
                        (args.positional.empty() ? 0 : 1);
    if (!usage && sources != 1)
        usage = std::string("Genau eines brennen: --image, --list oder Pfade.\n") + kBurnUsage;
    if (!usage && Has(args, "--image") && (Has(args, "--multisession") || Has(args, "--volume")))
        usage = std::string("--multisession und --volume gelten nur für Zusammenstellungen.\n") +
                kBurnUsage;
    if (usage) {
        err << *usage << '\n';
        return kExitUsage;
    }
    const std::string drive = *Option(args, "--drive");
    const auto service = authoring::MakeLibburnService();
    const InterruptCatcher interrupt;
    JobOutput output(out, err, terminal);

    if (const auto image = Option(args, "--image")) {
        output.Label(*image);
        const BurnHooks hooks = output.Hooks(nullptr);
        const authoring::BurnResult result = authoring::BurnIsoImage(
            *service,
            {drive, *image, Has(args, "--close"), Has(args, "--eject"), Has(args, "--verify")},
            hooks);
        return Outcome(result.outcome == authoring::BurnOutcome::Done, result.detail, err);
    }

    const auto paths = CompilationPaths(args, err);
    if (!paths)
        return kExitFailed;
    authoring::BurnCompilationParams params;
    params.drive = drive;
    params.paths = *paths;
    params.volumeName = Option(args, "--volume").value_or("");
    params.multisession = Has(args, "--multisession");
    params.closeDisc = Has(args, "--close");
    params.eject = Has(args, "--eject");
    params.verify = Has(args, "--verify");
    output.Label(drive);
    // Nobody to ask: a disc that is not blank is continued only with --multisession.
    const BurnHooks hooks = output.Hooks([&err](const std::string& question) {
        err << Lines(question) << "\nNein: eine weitere Sitzung nur mit --multisession.\n";
        return false;
    });
    const authoring::BurnResult result = authoring::BurnZusammenstellung(*service, params, hooks);
    if (!result.listStatus.empty())
        out << result.listStatus << '\n';
    return Outcome(result.outcome == authoring::BurnOutcome::Done, result.detail, err);
}

int RunEraseCommand(const CliArgs& args, std::ostream& out, std::ostream& err, bool terminal) {
    if (const auto usage = CheckUsage(args, {"--drive", "--eject", "--yes"}, kEraseUsage, false)) {
        err << *usage << '\n';
        return kExitUsage;
    }
    const bool yes = Has(args, "--yes");
    const bool canAsk = terminal && isatty(STDIN_FILENO) == 1;
    JobOutput output(out, err, terminal);
    authoring::EraseHooks hooks;
    hooks.burn = output.Hooks([&](const std::string& question) {
        if (yes)
            return true;
        if (!canAsk) {
            err << Lines(question) << "\nNein: ohne Rückfrage nur mit --yes.\n";
            return false;
        }
        out << Lines(question) << " [j/N] " << std::flush;
        std::string answer;
        std::getline(std::cin, answer);
        return answer == "j" || answer == "J" || answer == "ja" || answer == "Ja";
    });
    const auto service = authoring::MakeLibburnService();
    const authoring::EraseResult result =
        authoring::EraseDisk(*service, {*Option(args, "--drive"), Has(args, "--eject")}, hooks);
    return Outcome(result.outcome == authoring::EraseOutcome::Done, result.detail, err);
}

}  // namespace plattmix::cli
