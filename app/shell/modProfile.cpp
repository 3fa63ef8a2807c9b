#include "modProfile.h"

#include <filesystem>
#include <system_error>

#include "FileIo.h"
#include "ProfileFile.h"
#include "TextCase.h"
#include "Utf16.h"

namespace plattmix::shell::modProfile {

namespace {

using profile::Document;
using profile::LineSpan;

// One section: its header line, the body from bodyStart to end (where the next header starts),
// and contentEnd, just after its last line that is not blank; blank lines after it part the
// section from the next one and stay where they are on a write.
struct Section {
    LineSpan header;
    size_t bodyStart = 0;
    size_t contentEnd = 0;
    size_t end = 0;
};

bool IsHeader(std::string_view line) {
    std::string_view name;
    return profile::ParseSectionHeader(line, name);
}

Section SectionFrom(const Document& document, const LineSpan& header) {
    Section section{header, header.next, header.next, document.text.size()};
    std::string scratch;
    for (size_t pos = header.next; pos < document.text.size();) {
        const LineSpan line = profile::LineAt(document.text, pos);
        const std::string_view text = profile::LineText(document, line, scratch);
        if (IsHeader(text)) {
            section.end = line.start;
            break;
        }
        if (!profile::TrimBlanks(text).empty()) {
            section.contentEnd = line.next;
        }
        pos = line.next;
    }
    return section;
}

// The first section of that name from from on; the name as the caller gives it is trimmed.
std::optional<Section> FindSection(const Document& document, std::string_view name,
                                   size_t from = 0) {
    const std::string wanted = LowerText(profile::TrimBlanks(name));
    std::string scratch;
    for (size_t pos = from; pos < document.text.size();) {
        const LineSpan line = profile::LineAt(document.text, pos);
        std::string_view found;
        if (profile::ParseSectionHeader(profile::LineText(document, line, scratch), found) &&
            LowerText(found) == wanted) {
            return SectionFrom(document, line);
        }
        pos = line.next;
    }
    return std::nullopt;
}

// Calls visit(line, text) for each line of the body that is neither blank nor a comment, until
// visit answers false.
template <typename Visit>
void ForEachEntryLine(const Document& document, const Section& section, Visit visit) {
    std::string scratch;
    for (size_t pos = section.bodyStart; pos < section.end;) {
        const LineSpan line = profile::LineAt(document.text, pos);
        const std::string_view text = profile::LineText(document, line, scratch);
        if (!profile::IsBlankOrComment(text) && !visit(line, text)) {
            return;
        }
        pos = line.next;
    }
}

// The line of the first entry named key (a line without "=" is a key without a value) and its
// entry, whose views point into text.
struct FoundKey {
    LineSpan line;
    std::string text;
};

std::optional<FoundKey> FindKey(const Document& document, const Section& section,
                                std::string_view key) {
    const std::string wanted = LowerText(profile::TrimBlanks(key));
    std::optional<FoundKey> found;
    ForEachEntryLine(document, section, [&](const LineSpan& line, std::string_view text) {
        if (LowerText(profile::ParseEntry(text).key) != wanted) {
            return true;
        }
        found = FoundKey{line, std::string(text)};
        return false;
    });
    return found;
}

std::string_view StripQuotes(std::string_view value) {
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
        value.back() == value.front()) {
        return value.substr(1, value.size() - 2);
    }
    return value;
}

std::string_view TrimTrailingSpaces(std::string_view text) {
    while (!text.empty() && text.back() == ' ') {
        text.remove_suffix(1);
    }
    return text;
}

std::optional<Document> Load(const std::string& path) {
    const auto bytes = ReadWholeFile(path);
    if (!bytes) {
        return std::nullopt;
    }
    return profile::ParseDocument(*bytes);
}

// For a write: the file as it is, a new empty one when it does not exist yet, nothing when it
// exists but cannot be read.
std::optional<Document> LoadForWrite(const std::string& path) {
    auto document = Load(path);
    if (document) {
        return document;
    }
    std::error_code error;
    if (std::filesystem::exists(path, error) || error) {
        return std::nullopt;
    }
    return Document{};
}

bool Save(const Document& document, const std::string& path) {
    return WriteFileAtomically(path, profile::SerializeDocument(document));
}

// Whole lines in the document's form, each with its line end.
std::string LinesBlock(const Document& document, const std::vector<std::string_view>& lines) {
    std::string block;
    for (const std::string_view line : lines) {
        block += profile::ToDocumentForm(document, line);
        block += document.lineEnd;
    }
    return block;
}

// Replaces [from, to) with block; at the end of a last line that has no line end, it gets one.
void Splice(Document& document, size_t from, size_t to, std::string block) {
    std::string& text = document.text;
    if (from == text.size() && !text.empty() && text.back() != '\n') {
        block.insert(0, document.lineEnd);
    }
    text.replace(from, to - from, block);
}

std::string HeaderText(std::string_view section) {
    std::string header = "[";
    header += profile::TrimBlanks(section);
    header += ']';
    return header;
}

std::string KeyLine(std::string_view key, std::string_view value) {
    std::string line(profile::TrimBlanks(key));
    line += '=';
    line += value;
    return line;
}

bool DeleteSections(Document& document, std::string_view name) {
    bool changed = false;
    size_t from = 0;
    while (const auto section = FindSection(document, name, from)) {
        Splice(document, section->header.start, section->end, {});
        from = section->header.start;
        changed = true;
    }
    return changed;
}

bool DeleteKey(Document& document, std::string_view name, std::string_view key) {
    const auto section = FindSection(document, name);
    const auto found = section ? FindKey(document, *section, key) : std::nullopt;
    if (!found) {
        return false;
    }
    Splice(document, found->line.start, found->line.next, {});
    return true;
}

bool SetKey(Document& document, std::string_view name, std::string_view key,
            std::string_view value) {
    const auto section = FindSection(document, name);
    if (!section) {
        const size_t end = document.text.size();
        Splice(document, end, end, LinesBlock(document, {HeaderText(name), KeyLine(key, value)}));
        return true;
    }
    const auto found = FindKey(document, *section, key);
    if (!found) {
        const size_t at = section->contentEnd;
        Splice(document, at, at, LinesBlock(document, {KeyLine(key, value)}));
        return true;
    }
    // The key keeps its spelling in the file; only the value changes.
    const std::string line = KeyLine(profile::ParseEntry(found->text).key, value);
    if (line == found->text) {
        return false;
    }
    document.text.replace(found->line.start, found->line.end - found->line.start,
                          profile::ToDocumentForm(document, line));
    return true;
}

}  // namespace

std::string GetPrivateProfileString(const std::string& section, const std::string& key,
                                    const std::string& defaultValue, const std::string& path,
                                    size_t bufferChars) {
    if (bufferChars == 0) {
        return {};
    }
    std::string answer(TrimTrailingSpaces(defaultValue));
    try {
        const auto document = Load(path);
        const auto found = document ? FindSection(*document, section) : std::nullopt;
        const auto line = found ? FindKey(*document, *found, key) : std::nullopt;
        if (line) {
            const profile::Entry entry = profile::ParseEntry(line->text);
            if (entry.hasValue) {
                answer = StripQuotes(entry.value);
            }
        }
    } catch (const std::exception&) {
        // Out of memory on a huge file: the default stands.
    }
    return CutToUtf16Units(answer, bufferChars - 1);
}

bool WritePrivateProfileString(const std::string& section, const std::optional<std::string>& key,
                               const std::optional<std::string>& value, const std::string& path) {
    try {
        auto document = LoadForWrite(path);
        if (!document) {
            return false;
        }
        bool changed = false;
        if (!key) {
            changed = DeleteSections(*document, section);
        } else if (!value) {
            changed = DeleteKey(*document, section, *key);
        } else {
            changed = SetKey(*document, section, *key, *value);
        }
        return !changed || Save(*document, path);
    } catch (const std::exception&) {
        return false;
    }
}

std::vector<std::string> GetPrivateProfileSection(const std::string& section,
                                                  const std::string& path, size_t bufferChars) {
    std::vector<std::string> lines;
    try {
        const auto document = Load(path);
        const auto found = document ? FindSection(*document, section) : std::nullopt;
        if (!found) {
            return lines;
        }
        size_t room = bufferChars;
        ForEachEntryLine(*document, *found, [&](const LineSpan&, std::string_view text) {
            if (room <= 2) {
                return false;
            }
            // Each line needs its NUL, and the block a final one.
            lines.push_back(CutToUtf16Units(profile::TrimBlanks(text), room - 2));
            room -= Utf16Length(lines.back()) + 1;
            return true;
        });
    } catch (const std::exception&) {
        // Whatever was read so far is the answer.
    }
    return lines;
}

bool WritePrivateProfileSection(const std::string& section, const std::vector<std::string>& lines,
                                const std::string& path) {
    try {
        auto document = LoadForWrite(path);
        if (!document) {
            return false;
        }
        // The platform takes the lines as one NUL-separated block, so an empty line ends it.
        std::vector<std::string_view> body;
        for (const std::string& line : lines) {
            if (line.empty()) {
                break;
            }
            body.push_back(line);
        }
        const auto found = FindSection(*document, section);
        if (!found) {
            const size_t end = document->text.size();
            Splice(*document, end, end,
                   LinesBlock(*document, {HeaderText(section)}) + LinesBlock(*document, body));
        } else {
            Splice(*document, found->bodyStart, found->contentEnd, LinesBlock(*document, body));
        }
        return Save(*document, path);
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace plattmix::shell::modProfile
