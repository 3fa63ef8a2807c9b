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
using profile::Line;

// The lines of one section: the header at header, the body up to (not including) end.
struct SectionRange {
    size_t header = 0;
    size_t end = 0;
};

bool IsHeader(const Line& line) {
    std::string_view name;
    return profile::ParseSectionHeader(line.text, name);
}

size_t SectionEnd(const Document& document, size_t header) {
    size_t end = header + 1;
    while (end < document.lines.size() && !IsHeader(document.lines[end])) {
        ++end;
    }
    return end;
}

// The first section of that name; the name as the caller gives it is trimmed first.
std::optional<SectionRange> FindSection(const Document& document, std::string_view section,
                                        size_t from = 0) {
    const std::string wanted = LowerText(profile::TrimBlanks(section));
    for (size_t i = from; i < document.lines.size(); ++i) {
        std::string_view name;
        if (profile::ParseSectionHeader(document.lines[i].text, name) &&
            LowerText(name) == wanted) {
            return SectionRange{i, SectionEnd(document, i)};
        }
    }
    return std::nullopt;
}

// The line of the first entry named key in the section (a line without "=" counts as a key
// without a value).
std::optional<size_t> FindKey(const Document& document, const SectionRange& range,
                              std::string_view key) {
    const std::string wanted = LowerText(profile::TrimBlanks(key));
    for (size_t i = range.header + 1; i < range.end; ++i) {
        const std::string& text = document.lines[i].text;
        if (!profile::IsBlankOrComment(text) &&
            LowerText(profile::ParseEntry(text).key) == wanted) {
            return i;
        }
    }
    return std::nullopt;
}

// Where new lines of a section go: after its last line that is not blank, so that the blank
// lines that part it from the next section stay where they are.
size_t BodyInsertPoint(const Document& document, const SectionRange& range) {
    size_t point = range.end;
    while (point > range.header + 1 &&
           profile::TrimBlanks(document.lines[point - 1].text).empty()) {
        --point;
    }
    return point;
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

Line NewLine(std::string text) {
    return Line{std::move(text), std::nullopt};
}

std::string HeaderText(std::string_view section) {
    return "[" + std::string(profile::TrimBlanks(section)) + "]";
}

bool DeleteSections(Document& document, std::string_view section) {
    bool changed = false;
    size_t from = 0;
    while (const auto range = FindSection(document, section, from)) {
        const auto first = document.lines.begin() + static_cast<std::ptrdiff_t>(range->header);
        document.lines.erase(first,
                             first + static_cast<std::ptrdiff_t>(range->end - range->header));
        from = range->header;
        changed = true;
    }
    return changed;
}

bool DeleteKey(Document& document, std::string_view section, std::string_view key) {
    const auto range = FindSection(document, section);
    const auto line = range ? FindKey(document, *range, key) : std::nullopt;
    if (!line) {
        return false;
    }
    document.lines.erase(document.lines.begin() + static_cast<std::ptrdiff_t>(*line));
    return true;
}

bool SetKey(Document& document, std::string_view section, std::string_view key,
            std::string_view value) {
    const auto range = FindSection(document, section);
    if (!range) {
        document.lines.push_back(NewLine(HeaderText(section)));
        document.lines.push_back(
            NewLine(std::string(profile::TrimBlanks(key)) + "=" + std::string(value)));
        return true;
    }
    const auto line = FindKey(document, *range, key);
    if (!line) {
        const auto at =
            document.lines.begin() + static_cast<std::ptrdiff_t>(BodyInsertPoint(document, *range));
        document.lines.insert(
            at, NewLine(std::string(profile::TrimBlanks(key)) + "=" + std::string(value)));
        return true;
    }
    // The key keeps its spelling in the file; only the value changes.
    const profile::Entry entry = profile::ParseEntry(document.lines[*line].text);
    std::string text = std::string(entry.key) + "=" + std::string(value);
    if (text == document.lines[*line].text) {
        return false;
    }
    document.lines[*line] = NewLine(std::move(text));
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
        const auto range = document ? FindSection(*document, section) : std::nullopt;
        const auto line = range ? FindKey(*document, *range, key) : std::nullopt;
        if (line) {
            const profile::Entry entry = profile::ParseEntry(document->lines[*line].text);
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
        const auto range = document ? FindSection(*document, section) : std::nullopt;
        if (!range) {
            return lines;
        }
        size_t room = bufferChars;
        for (size_t i = range->header + 1; i < range->end && room > 2; ++i) {
            const std::string& text = document->lines[i].text;
            if (profile::IsBlankOrComment(text)) {
                continue;
            }
            // Each line needs its NUL, and the block a final one.
            lines.push_back(CutToUtf16Units(profile::TrimBlanks(text), room - 2));
            room -= Utf16Length(lines.back()) + 1;
        }
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
        std::vector<Line> body;
        for (const std::string& line : lines) {
            if (line.empty()) {
                break;
            }
            body.push_back(NewLine(line));
        }
        auto& all = document->lines;
        const auto range = FindSection(*document, section);
        if (!range) {
            all.push_back(NewLine(HeaderText(section)));
            all.insert(all.end(), body.begin(), body.end());
        } else {
            const auto first = all.begin() + static_cast<std::ptrdiff_t>(range->header + 1);
            const auto last =
                all.begin() + static_cast<std::ptrdiff_t>(BodyInsertPoint(*document, *range));
            const auto at = all.erase(first, last);
            all.insert(at, body.begin(), body.end());
        }
        return Save(*document, path);
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace plattmix::shell::modProfile
