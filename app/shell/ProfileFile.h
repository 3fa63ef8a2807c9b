// One initialisation file in memory: its lines as text, the encoding it came in and the line
// ends it uses, so that a write gives the file back in its own form. Loading never fails on
// content: a damaged or binary file gives whatever lines can be made of it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace plattmix::shell::profile {

enum class Encoding {
    Utf8,     // no mark, valid UTF-8 (also a new file)
    Utf8Bom,  // EF BB BF
    Ansi,     // no mark, not valid UTF-8: read and written as Windows-1252
    Utf16Le,  // FF FE
    Utf16Be,  // FE FF
};

struct Line {
    std::string text;                // UTF-8
    std::optional<std::string> raw;  // the bytes read from an 8-bit file, written back unchanged
};

struct Document {
    Encoding encoding = Encoding::Utf8;
    std::string lineEnd = "\r\n";
    std::vector<Line> lines;
};

Document ParseDocument(std::string_view bytes);
std::string SerializeDocument(const Document& document);

// Blanks as the profile functions trim them (also a stray CR and the old end-of-file mark).
std::string_view TrimBlanks(std::string_view text);

// "[name]" (blanks allowed around it): true and the name between the brackets, trimmed.
bool ParseSectionHeader(std::string_view line, std::string_view& name);

struct Entry {
    std::string_view key;    // the whole trimmed line for a line without "="
    std::string_view value;  // trimmed
    bool hasValue = false;
};
Entry ParseEntry(std::string_view line);

// Blank lines and comments (";" first) carry no entry.
bool IsBlankOrComment(std::string_view line);

}  // namespace plattmix::shell::profile
