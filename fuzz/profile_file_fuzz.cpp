// The settings file as the profile functions read and write it, in any encoding (UTF-16LE and
// BE with their marks, UTF-8 with and without one, Windows-1252): read a key and a section, set
// a key, and read the key back.
//
// Input parts: the file's bytes, then section, key and value.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "FuzzInput.h"
#include "ProfileFile.h"
#include "modProfile.h"

namespace {

using namespace plattmix;
using namespace plattmix::shell;

// Letters and digits only: a text every encoding keeps as it is.
bool Plain(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    });
}

// Parsing what a serialisation gave yields the same text.
void CheckDocument(std::string_view bytes) {
    const profile::Document document = profile::ParseDocument(bytes);
    const profile::Document again = profile::ParseDocument(profile::SerializeDocument(document));
    if (again.text != document.text || again.encoding != document.encoding)
        std::abort();
    std::string scratch;
    std::string_view name;
    for (size_t pos = 0; pos < document.text.size();) {
        const profile::LineSpan line = profile::LineAt(document.text, pos);
        if (line.next <= pos)
            std::abort();
        const std::string_view text = profile::LineText(document, line, scratch);
        if (!profile::IsBlankOrComment(text) && !profile::ParseSectionHeader(text, name))
            profile::ParseEntry(text);
        pos = line.next;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Parts parts(data, size);
    const auto file = parts.Next();
    const std::string section(fuzz::AsText(parts.Next()));
    const std::string key(fuzz::AsText(parts.Next()));
    const std::string value(fuzz::AsText(parts.Next()));
    CheckDocument(fuzz::AsText(file));

    const std::string path = fuzz::ScratchFile("input.ini", fuzz::AsText(file));
    modProfile::GetPrivateProfileString(section, key, "", path, 1024);
    modProfile::GetPrivateProfileSection(section, path, 32767);
    if (!modProfile::WritePrivateProfileString(section, key, value, path))
        return 0;
    const std::string back = modProfile::GetPrivateProfileString(section, key, "", path, 1024);
    if (Plain(section) && Plain(key) && Plain(value) && back != value)
        std::abort();
    return 0;
}
