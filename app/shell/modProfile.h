// The profile module: initialisation files (sections in brackets, key=value lines) with the
// semantics of the Windows private-profile functions. A file that starts with the UTF-16LE
// mark stays UTF-16LE; any other file is read and written as UTF-8. Section and key names match
// without regard to letter case; blanks around keys and values are trimmed and one pair of
// surrounding quotes is removed from a value. Writes go to a temporary file that is renamed
// over the original, so a crash never leaves half a file. Errors are swallowed: reads answer
// the default or nothing, writes answer false.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace plattmix::shell::modProfile {

// The value of key in section, or defaultValue when the file, section or key is missing. The
// answer is cut to bufferChars - 1 characters (code points), as the platform's buffer cuts it.
std::string GetPrivateProfileString(const std::string& section, const std::string& key,
                                    const std::string& defaultValue, const std::string& path,
                                    size_t bufferChars);

// Sets key in section (section and file are created as needed). No key: the whole section is
// deleted. A key but no value: the key is deleted.
bool WritePrivateProfileString(const std::string& section, const std::optional<std::string>& key,
                               const std::optional<std::string>& value, const std::string& path);

// Every line of the section as stored (key lines whole, key-less lines too; blank lines and
// comments starting with ';' are left out), limited to what fits into bufferChars characters
// with a NUL after each line and a final NUL.
std::vector<std::string> GetPrivateProfileSection(const std::string& section,
                                                  const std::string& path, size_t bufferChars);

// Replaces the section's lines with these (the section is created at the end of the file when
// missing).
bool WritePrivateProfileSection(const std::string& section, const std::vector<std::string>& lines,
                                const std::string& path);

}  // namespace plattmix::shell::modProfile
