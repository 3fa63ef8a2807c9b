#include "ImageList.h"

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <vector>

#include "Commands.h"
#include "DemoDisc.h"
#include "imagedrive/clsImageDrive.h"
#include "modProfile.h"
#include "modSettings.h"

namespace plattmix::cli {

namespace {

using shell::kImagesSection;

std::vector<std::string> Images(const shell::SettingsPaths& paths) {
    return shell::ReadIniSection(paths.SettingsFile, kImagesSection);
}

void Store(const shell::SettingsPaths& paths, const std::vector<std::string>& images) {
    if (images.empty()) {
        shell::modProfile::WritePrivateProfileString(kImagesSection, std::nullopt, std::nullopt,
                                                     paths.SettingsFile);
    } else {
        shell::WriteIniSection(paths.SettingsFile, kImagesSection, images);
    }
}

int Add(const shell::SettingsPaths& paths, std::string path, std::ostream& out, std::ostream& err) {
    std::error_code ec;
    const auto absolute = std::filesystem::absolute(path, ec);
    if (!ec)
        path = absolute.lexically_normal().string();
    // Only an image the drive can load is worth offering.
    scsi::imagedrive::clsImageDrive probe;
    const auto loaded = probe.AddDrive(path);
    if (!loaded.ok()) {
        err << loaded.Error() << '\n';
        return kExitFailed;
    }
    auto images = Images(paths);
    if (std::find(images.begin(), images.end(), path) == images.end()) {
        images.push_back(path);
        Store(paths, images);
    }
    out << path << '\n';
    return kExitDone;
}

int Remove(const shell::SettingsPaths& paths, const std::string& path, std::ostream& err) {
    auto images = Images(paths);
    const auto it = std::find(images.begin(), images.end(), path);
    if (it == images.end()) {
        err << "Nicht in der Liste: " << path << '\n';
        return kExitFailed;
    }
    images.erase(it);
    Store(paths, images);
    return kExitDone;
}

}  // namespace

int RunImageCommand(const CliArgs& args, std::ostream& out, std::ostream& err) {
    const shell::SettingsPaths paths = shell::ComputeSettingsPaths();
    const std::string verb = args.positional.empty() ? "list" : args.positional[0];
    const bool demo = args.options.contains("--demo");
    if (verb == "list" && args.positional.size() <= 1 && !demo) {
        for (const auto& image : Images(paths))
            out << image << '\n';
        return kExitDone;
    }
    if (verb == "add" && demo && args.positional.size() == 1) {
        const auto cue = discgen::DemoDisc();
        if (!cue.ok()) {
            err << cue.error << '\n';
            return kExitFailed;
        }
        if (!shell::EnsureSettingsFile(paths)) {
            err << "Einstellungsdatei nicht beschreibbar: " << paths.SettingsFile << '\n';
            return kExitFailed;
        }
        return Add(paths, cue.value->string(), out, err);
    }
    if ((verb == "add" || verb == "remove") && args.positional.size() == 2 && !demo) {
        if (!shell::EnsureSettingsFile(paths)) {
            err << "Einstellungsdatei nicht beschreibbar: " << paths.SettingsFile << '\n';
            return kExitFailed;
        }
        return verb == "add" ? Add(paths, args.positional[1], out, err)
                             : Remove(paths, args.positional[1], err);
    }
    err << "Aufruf: plattmix-cli image list | add PFAD | add --demo | remove PFAD\n";
    return kExitUsage;
}

}  // namespace plattmix::cli
