#include "IsoCommand.h"

#include <atomic>
#include <csignal>
#include <filesystem>
#include <ostream>

#include "FolderListing.h"
#include "IsoImage.h"
#include "ProgressBar.h"

namespace plattmix::cli {

namespace {

// Ctrl-C stops the image as "Abbrechen" does in the window: the unfinished file is removed.
std::atomic<bool> interrupted{false};
extern "C" void OnIsoInterrupt(int) {
    interrupted = true;
}

constexpr const char* kUsage = "Aufruf: plattmix-cli iso QUELLORDNER ZIEL.iso [--volume NAME]";

// The usage error's text when the words don't fit the command.
std::optional<std::string> CheckUsage(const CliArgs& args) {
    for (const auto& [name, value] : args.options) {
        if (name != "--volume")
            return "Die Option " + name + " gilt nicht für iso.\n" + kUsage;
    }
    if (args.positional.size() < 2)
        return std::string("Quellordner und Zieldatei fehlen.\n") + kUsage;
    if (args.positional.size() > 2)
        return "Unerwartetes Argument: " + args.positional[2] + "\n" + kUsage;
    return std::nullopt;
}

}  // namespace

int RunIsoCommand(const CliArgs& args, std::ostream& out, std::ostream& err, bool terminal) {
    if (const auto usage = CheckUsage(args)) {
        err << *usage << '\n';
        return kExitUsage;
    }
    const std::string& source = args.positional[0];
    const std::string& target = args.positional[1];
    std::error_code ec;
    if (!std::filesystem::is_directory(source, ec)) {
        err << "Der Quellordner ist kein Ordner: " << source << '\n';
        return kExitFailed;
    }

    interrupted = false;
    const auto previous = std::signal(SIGINT, OnIsoInterrupt);
    authoring::IsoJobHooks hooks;
    hooks.scan.escapePressed = [] { return interrupted.load(); };
    authoring::FolderListing listing;
    const std::string total = authoring::ShowOrdnerInhalt(source, listing, hooks.scan);
    out << listing.ListFiles.size() << " Dateien, " << listing.ListFolders.size() << " Ordner, "
        << total << '\n';

    ProgressBar bar(out, terminal);
    hooks.progress = [&bar](int percent) { bar.Update(percent); };
    hooks.cancelled = [] { return interrupted.load(); };
    if (!listing.ListFiles.empty())
        bar.Begin(std::filesystem::path(target).filename().string());
    const auto volume = args.options.find("--volume");
    const authoring::IsoImageResult result = authoring::CreateIsoImage(
        {source, volume != args.options.end() ? volume->second : "", target}, listing, hooks);
    std::signal(SIGINT, previous);

    if (result.outcome == authoring::IsoOutcome::NoFiles) {
        err << authoring::NoFilesMessage(source) << '\n';
        return kExitFailed;
    }
    std::string line = authoring::IsoStatusText(result.outcome);
    if (!result.detail.empty())
        line += ": " + result.detail;
    bar.Finish(line);
    if (result.outcome != authoring::IsoOutcome::Done)
        return kExitFailed;
    out << target << ": " << result.imageBytes << " Bytes\n";
    return kExitDone;
}

}  // namespace plattmix::cli
