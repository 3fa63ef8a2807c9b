// Where the settings live and the few operations every part of the program uses to reach them.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace plattmix::shell {

inline constexpr const char* kSettingsFileName = "Diskolo.ini";
inline constexpr const char* kSuiteOptionsFileName = "Opt.ini";
inline constexpr const char* kSuiteFolderName = "Trovalis";
inline constexpr size_t kRecentFoldersKept = 12;
inline constexpr const char* kRecentFoldersSection = "ComboBox1";
// Disc images the window offers as drives when no drive works, one path a line.
inline constexpr const char* kImagesSection = "Abbilder";

struct SettingsPaths {
    std::string SettingsFolder;    // ends in "/"
    std::string SettingsFile;      // SettingsFolder + "Diskolo.ini"
    std::string SuiteOptionsFile;  // SettingsFolder + "Opt.ini"
    std::string AppDataFolder;     // the folder that holds "Trovalis/", ends in "/"
};

// $APPDATA when set, else $XDG_CONFIG_HOME, else ~/.config; then "Trovalis/".
SettingsPaths ComputeSettingsPaths();

// Creates the settings folder and, when the settings file is missing, an empty Unicode file
// holding only the mark FF FE. Answers false when that could not be done (the program goes on).
bool EnsureSettingsFile(const SettingsPaths& paths);

// ReadIni: a file name shorter than 4 characters means "Diskolo.ini"; the file is taken inside
// the settings folder, or with useSuiteFolder inside <AppDataFolder>Trovalis/ when it exists
// there (else the settings file). Values are cut to 1023 characters.
// WriteIni: an empty file means the settings file, a name without "/" is taken inside the
// settings folder, a path with "/" as it stands; useSuiteFolder writes
// <AppDataFolder>Trovalis/Diskolo.ini when it exists (else the settings file).
std::string ReadIni(const SettingsPaths& paths, const std::string& section, const std::string& key,
                    const std::string& file = "", const std::string& defaultValue = "",
                    bool useSuiteFolder = false);
void WriteIni(const SettingsPaths& paths, const std::string& section, const std::string& key,
              const std::string& value, const std::string& file = "", bool useSuiteFolder = false);

// Every line of the section as stored (key lines as key=value), at most 32767 characters in all.
std::vector<std::string> ReadIniSection(const std::string& file, const std::string& section);
// Nothing for an empty list; creates the file as an empty Unicode file when missing and then
// replaces the section. An empty line ends the list, as the platform's NUL-separated block does.
void WriteIniSection(const std::string& file, const std::string& section,
                     const std::vector<std::string>& lines);

// The list box helpers, over the list's entry texts. file empty means the settings file.
// Loading appends the section's lines from the last to the first.
void LoadComboFromSection(const SettingsPaths& paths, std::vector<std::string>& entries,
                          const std::string& section, const std::string& file = "");
// Nothing for an empty list; otherwise the section is replaced by the entries taken from the
// last backwards, at most 12.
void SaveComboToSection(const SettingsPaths& paths, const std::vector<std::string>& entries,
                        const std::string& section, const std::string& file = "");
bool ComboContains(const std::vector<std::string>& entries, const std::string& text);

// The recent-folders rule for a newly chosen target folder (section "ComboBox1" of the settings
// file): folder gets a trailing "/"; when no entry equals it ignoring case it is appended, the
// section rewritten and the list read back from it (emptied first, so at most 12 remain).
// Answers the new list; an equal entry or an empty folder leaves the list as it is.
std::vector<std::string> AddRecentFolder(const SettingsPaths& paths,
                                         const std::vector<std::string>& entries,
                                         const std::string& folder);

}  // namespace plattmix::shell
