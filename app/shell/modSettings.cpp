#include "modSettings.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "FileIo.h"
#include "TextCase.h"
#include "Utf16.h"
#include "modLanguage.h"
#include "modPaths.h"
#include "modProfile.h"

namespace plattmix::shell {

namespace {

constexpr size_t kValueBufferChars = 1024;
constexpr size_t kSectionBufferChars = 32767;

std::string Environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

std::string AppDataFolder() {
    std::string folder = Environment("APPDATA");
    if (folder.empty()) {
        folder = Environment("XDG_CONFIG_HOME");
    }
    if (folder.empty()) {
        folder = HomeFolder() + ".config";
    }
    return AddBackslash(folder);
}

std::string SuiteFolder(const SettingsPaths& paths) {
    return paths.AppDataFolder + kSuiteFolderName + "/";
}

// path when that file exists, else the settings file.
std::string ExistingOrSettingsFile(const SettingsPaths& paths, const std::string& path) {
    return RegularFileExists(path) ? path : paths.SettingsFile;
}

std::string ReadIniPath(const SettingsPaths& paths, const std::string& file, bool useSuiteFolder) {
    const std::string name = Utf16Length(file) < 4 ? std::string(kSettingsFileName) : file;
    if (useSuiteFolder) {
        return ExistingOrSettingsFile(paths, SuiteFolder(paths) + name);
    }
    return paths.SettingsFolder + name;
}

std::string WriteIniPath(const SettingsPaths& paths, const std::string& file, bool useSuiteFolder) {
    if (useSuiteFolder) {
        return ExistingOrSettingsFile(paths, SuiteFolder(paths) + kSettingsFileName);
    }
    if (file.empty()) {
        return paths.SettingsFile;
    }
    return file.find('/') == std::string::npos ? paths.SettingsFolder + file : file;
}

const std::string& FileOrSettingsFile(const SettingsPaths& paths, const std::string& file) {
    return file.empty() ? paths.SettingsFile : file;
}

}  // namespace

SettingsPaths ComputeSettingsPaths() {
    SettingsPaths paths;
    paths.AppDataFolder = AppDataFolder();
    paths.SettingsFolder = paths.AppDataFolder + kSuiteFolderName + "/";
    paths.SettingsFile = paths.SettingsFolder + kSettingsFileName;
    paths.SuiteOptionsFile = paths.SettingsFolder + kSuiteOptionsFileName;
    return paths;
}

bool EnsureSettingsFile(const SettingsPaths& paths) {
    std::error_code error;
    std::filesystem::create_directories(paths.SettingsFolder, error);
    if (error) {
        return false;
    }
    if (RegularFileExists(paths.SettingsFile)) {
        return true;
    }
    if (std::filesystem::exists(paths.SettingsFile, error)) {
        return false;  // something that is not a file stands in the way
    }
    return UnicodeFile_Create(paths.SettingsFile);
}

std::string ReadIni(const SettingsPaths& paths, const std::string& section, const std::string& key,
                    const std::string& file, const std::string& defaultValue, bool useSuiteFolder) {
    return modProfile::GetPrivateProfileString(
        section, key, defaultValue, ReadIniPath(paths, file, useSuiteFolder), kValueBufferChars);
}

void WriteIni(const SettingsPaths& paths, const std::string& section, const std::string& key,
              const std::string& value, const std::string& file, bool useSuiteFolder) {
    modProfile::WritePrivateProfileString(section, key, value,
                                          WriteIniPath(paths, file, useSuiteFolder));
}

std::vector<std::string> ReadIniSection(const std::string& file, const std::string& section) {
    return modProfile::GetPrivateProfileSection(section, file, kSectionBufferChars);
}

void WriteIniSection(const std::string& file, const std::string& section,
                     const std::vector<std::string>& lines) {
    if (lines.empty()) {
        return;
    }
    std::error_code error;
    if (!std::filesystem::exists(file, error) && !error) {
        UnicodeFile_Create(file);
    }
    modProfile::WritePrivateProfileSection(section, lines, file);
}

void LoadComboFromSection(const SettingsPaths& paths, std::vector<std::string>& entries,
                          const std::string& section, const std::string& file) {
    const std::vector<std::string> lines = ReadIniSection(FileOrSettingsFile(paths, file), section);
    entries.insert(entries.end(), lines.rbegin(), lines.rend());
}

void SaveComboToSection(const SettingsPaths& paths, const std::vector<std::string>& entries,
                        const std::string& section, const std::string& file) {
    if (entries.empty()) {
        return;
    }
    const std::string& path = FileOrSettingsFile(paths, file);
    modProfile::WritePrivateProfileString(section, std::nullopt, std::nullopt, path);
    std::vector<std::string> newestFirst;
    for (auto entry = entries.rbegin();
         entry != entries.rend() && newestFirst.size() < kRecentFoldersKept; ++entry) {
        newestFirst.push_back(*entry);
    }
    WriteIniSection(path, section, newestFirst);
}

bool ComboContains(const std::vector<std::string>& entries, const std::string& text) {
    const std::string wanted = LowerText(text);
    for (const std::string& entry : entries) {
        if (LowerText(entry) == wanted) {
            return true;
        }
    }
    return false;
}

std::vector<std::string> AddRecentFolder(const SettingsPaths& paths,
                                         const std::vector<std::string>& entries,
                                         const std::string& folder) {
    if (folder.empty()) {
        return entries;
    }
    const std::string withSlash = AddBackslash(folder);
    if (ComboContains(entries, withSlash)) {
        return entries;
    }
    std::vector<std::string> added = entries;
    added.push_back(withSlash);
    SaveComboToSection(paths, added, kRecentFoldersSection);
    std::vector<std::string> reloaded;
    LoadComboFromSection(paths, reloaded, kRecentFoldersSection);
    if (reloaded.empty()) {
        // The settings could not be written: the list still shows the choice.
        const size_t drop =
            added.size() > kRecentFoldersKept ? added.size() - kRecentFoldersKept : 0;
        added.erase(added.begin(), added.begin() + static_cast<std::ptrdiff_t>(drop));
        return added;
    }
    return reloaded;
}

}  // namespace plattmix::shell
