// Where the settings live and the few operations every part of the program uses to reach them.
#pragma once

#include <string>
#include <vector>

namespace plattmix::shell {

inline constexpr const char* kSettingsFileName = "Diskolo.ini";
inline constexpr const char* kSuiteOptionsFileName = "Opt.ini";
inline constexpr const char* kSuiteFolderName = "Trovalis";
inline constexpr size_t kRecentFoldersKept = 12;

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

// ReadIni/WriteIni: file shorter than 4 characters means "Diskolo.ini"; useSuiteFolder as the
// program has always resolved it (see modSettings.cpp).
std::string ReadIni(const SettingsPaths& paths, const std::string& section, const std::string& key,
                    const std::string& file = "", const std::string& defaultValue = "",
                    bool useSuiteFolder = false);
void WriteIni(const SettingsPaths& paths, const std::string& section, const std::string& key,
              const std::string& value, const std::string& file = "", bool useSuiteFolder = false);

std::vector<std::string> ReadIniSection(const std::string& file, const std::string& section);
// Nothing for an empty list; creates the file as an empty Unicode file when missing.
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

// The recent-folders rule for a newly chosen target folder: appended when no entry equals it
// ignoring case, the section rewritten and the list read back. Answers the new list.
std::vector<std::string> AddRecentFolder(const SettingsPaths& paths,
                                         const std::vector<std::string>& entries,
                                         const std::string& folder);

}  // namespace plattmix::shell
