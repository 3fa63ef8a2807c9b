// One initialisation file in memory: its text, the encoding it came in and the line ends it
// uses, so that a write gives the file back in its own form. Loading never fails on content: a
// damaged or binary file gives whatever lines can be made of it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace plattmix::shell::profile {

enum class Encoding {
    Utf8,     // no mark, valid UTF-8 (also a new file)
    Utf8Bom,  // EF BB BF
    Ansi,     // no mark, not all UTF-8: a line that is not is read as Windows-1252, and new
              // text is written so
    Utf16Le,  // FF FE
    Utf16Be,  // FE FF
};

// The file's text: UTF-8 for a UTF-16 file, the file's own bytes (after any mark) for the
// others. Edits splice this text, so lines a write does not touch stay byte for byte.
struct Document {
    Encoding encoding = Encoding::Utf8;
    std::string lineEnd = "\r\n";
    std::string text;
};

Document ParseDocument(std::string_view bytes);
std::string SerializeDocument(const Document& document);
// New text (UTF-8) in the document's own form: Windows-1252 for an ANSI file.
std::string ToDocumentForm(const Document& document, std::string_view text);

// One line of the text: [start, end) without its line end; next is where the next line starts.
struct LineSpan {
    size_t start = 0;
    size_t end = 0;
    size_t next = 0;
};
// The line that starts at pos (pos below the text's size).
LineSpan LineAt(std::string_view text, size_t pos);
// The line as UTF-8; scratch holds it when it had to be converted.
std::string_view LineText(const Document& document, const LineSpan& line, std::string& scratch);

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
