#include "CompilationCommand.h"

#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <system_error>
#include <vector>

#include "BurnService.h"
#include "CompilationList.h"
#include "DiscProfile.h"
#include "DiscUsage.h"
#include "FileIo.h"
#include "SizeFormat.h"

namespace plattmix::cli {

namespace {

using authoring::CompilationEntry;

constexpr int kBarWidth = 100;

void PrintCommandUsage(std::ostream& err) {
    err << "Aufruf: plattmix-cli compilation save LISTE PFAD... | load LISTE | "
           "size LISTE [--drive LAUFWERK]\n";
}

bool Exists(const std::string& path) {
    std::error_code error;
    return std::filesystem::exists(path, error);
}

// A relative path as seen from here, so the list can be loaded from anywhere.
std::string Absolute(const std::string& path) {
    std::error_code error;
    const auto absolute = std::filesystem::absolute(path, error);
    return error ? path : absolute.string();
}

int Save(const std::string& list, const std::vector<std::string>& chosen, std::ostream& out,
         std::ostream& err) {
    if (chosen.empty()) {
        err << authoring::kTextNothingToSave << '\n';
        return kExitFailed;
    }
    std::vector<std::string> paths;
    for (const auto& path : chosen) {
        if (!Exists(path)) {
            err << "Nicht gefunden: " << path << "\nDie Liste wurde nicht gespeichert.\n";
            return kExitFailed;
        }
        paths.push_back(Absolute(path));
    }
    if (!authoring::UnicodeFile_Write_WithBOM(list, authoring::ListFileText(paths))) {
        err << "Die Listendatei konnte nicht (vollständig) geschrieben werden: " << list << '\n';
        return kExitFailed;
    }
    out << paths.size() << (paths.size() == 1 ? " Eintrag" : " Einträge") << " gespeichert in "
        << list << '\n';
    return kExitDone;
}

// The entries of the list file, each measured; lines naming nothing that exists are reported
// and left out. Nothing when the list file itself cannot be read.
std::optional<std::vector<CompilationEntry>> LoadEntries(const std::string& list,
                                                         std::ostream& err) {
    if (!shell::RegularFileExists(list)) {
        err << "Listendatei nicht gefunden: " << list << '\n';
        return std::nullopt;
    }
    std::vector<CompilationEntry> entries;
    for (const auto& line : authoring::ReadListFileLines(list)) {
        if (Exists(line))
            entries.push_back(authoring::MeasureEntry(line, {}));
        else
            err << "Nicht gefunden, ausgelassen: " << line << '\n';
    }
    return entries;
}

void PrintTotal(int64_t sum, std::ostream& out) {
    out << "Gesamt: " << authoring::FormatGroesse(sum) << '\n';
}

int Load(const std::string& list, std::ostream& out, std::ostream& err) {
    const auto entries = LoadEntries(list, err);
    if (!entries)
        return kExitFailed;
    for (const auto& entry : *entries)
        out << authoring::FormatGroesse(entry.bytes) << '\t' << entry.path << '\n';
    PrintTotal(authoring::CompilationBytes(*entries), out);
    return kExitDone;
}

// The disc in drive as the burning page shows it, and whether the compilation fits: it does
// when no warning is left.
int Size(const std::string& list, const std::optional<std::string>& drive, std::ostream& out,
         std::ostream& err) {
    const auto entries = LoadEntries(list, err);
    if (!entries)
        return kExitFailed;
    const int64_t sum = authoring::CompilationBytes(*entries);
    PrintTotal(sum, out);
    if (!drive)
        return kExitDone;

    const auto service = authoring::MakeLibburnService();
    const authoring::DiskInfo info = authoring::GetDiskInfo(*service, *drive);
    if (const std::string message = service->LastMessage(); !message.empty())
        err << "libburn: " << message << '\n';
    const auto usage = authoring::ShowDiskUsage(info, kBarWidth, {});
    const auto check = authoring::TotalSizeZusammenstellung(sum, usage.DiskCapacity, usage.DiskUsed,
                                                            kBarWidth, usage.usedWidth, {});
    out << "Disk: " << usage.label4;
    if (const int profile = service->LastProfile(); profile != authoring::kProfileNone)
        out << " (" << authoring::ProfileName(profile) << ')';
    out << '\n';
    if (usage.barsShown) {
        out << "Balken: belegt " << usage.usedWidth << ", neu " << check.newWidth << " von "
            << kBarWidth << '\n';
    }
    if (!check.label4.empty()) {
        out << check.label4 << '\n';
        return kExitFailed;
    }
    out << "Die Zusammenstellung passt auf die Disk.\n";
    return kExitDone;
}

}  // namespace

int RunCompilationCommand(const CliArgs& args, std::ostream& out, std::ostream& err) {
    const auto& words = args.positional;
    const std::string verb = words.empty() ? "" : words[0];
    const auto drive = args.options.find("--drive");
    const bool onlyDrive =
        args.options.empty() || (args.options.size() == 1 && drive != args.options.end());
    if (verb == "save" && words.size() >= 2 && args.options.empty())
        return Save(words[1], {words.begin() + 2, words.end()}, out, err);
    if (verb == "load" && words.size() == 2 && args.options.empty())
        return Load(words[1], out, err);
    if (verb == "size" && words.size() == 2 && onlyDrive) {
        const std::optional<std::string> address =
            drive == args.options.end() ? std::nullopt : std::optional(drive->second);
        return Size(words[1], address, out, err);
    }
    PrintCommandUsage(err);
    return kExitUsage;
}

}  // namespace plattmix::cli
