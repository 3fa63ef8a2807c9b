// The profile module: initialisation files (sections in brackets, key=value lines) with the
// semantics of the Windows private-profile functions. A file that starts with a UTF-16 mark
// stays UTF-16 (CR LF line ends unless it already uses LF); any other file is read as UTF-8,
// a line that is not valid UTF-8 as Windows-1252, and written back in the same form. Section
// and key names match without regard to letter case; blanks around keys and values are trimmed
// and one pair of surrounding quotes is removed from a value. Names given to these functions
// are trimmed too, so a key with padding blanks finds the trimmed key of the file. Writes go to
// a temporary file that is renamed over the original, so a crash never leaves half a file; the
// folder is not created. Errors are swallowed: reads answer the default or nothing, writes
// answer false. A damaged or binary file gives what can be read from it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace plattmix::shell::modProfile {

// The value of key in the first section of that name, or defaultValue (its trailing blanks
// dropped) when the file, section or key is missing or the key's line has no "=". One pair of
// surrounding double or single quotes is removed, as the platform does. The answer is cut to
// bufferChars - 1 UTF-16 characters, as the platform's buffer cuts it (a surrogate pair is
// never split).
std::string GetPrivateProfileString(const std::string& section, const std::string& key,
                                    const std::string& defaultValue, const std::string& path,
                                    size_t bufferChars);

// Sets key in section (section and file are created as needed). No key: the whole section is
// deleted. A key but no value: the key is deleted.
bool WritePrivateProfileString(const std::string& section, const std::optional<std::string>& key,
                               const std::optional<std::string>& value, const std::string& path);

// Every line of the first section of that name as stored, blanks at its ends trimmed (key
// lines whole, key-less lines too; blank lines and comments starting with ';' are left out),
// limited to what fits into bufferChars UTF-16 characters with a NUL after each line and a
// final NUL (the last line that fits in part is cut).
std::vector<std::string> GetPrivateProfileSection(const std::string& section,
                                                  const std::string& path, size_t bufferChars);

// Replaces the section's lines with these, written as they are (the section is created at the
// end of the file when missing). An empty line ends the list, as a double NUL ends the
// platform's block.
bool WritePrivateProfileSection(const std::string& section, const std::vector<std::string>& lines,
                                const std::string& path);

}  // namespace plattmix::shell::modProfile
