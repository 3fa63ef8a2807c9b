#include "ProfileFile.h"

#include "Utf16.h"

namespace plattmix::shell::profile {

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16LeMark = "\xFF\xFE";
constexpr std::string_view kUtf16BeMark = "\xFE\xFF";

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f' || c == '\x1A';
}

Encoding DetectMark(std::string_view bytes) {
    if (bytes.starts_with(kUtf16LeMark)) {
        return Encoding::Utf16Le;
    }
    if (bytes.starts_with(kUtf16BeMark)) {
        return Encoding::Utf16Be;
    }
    if (bytes.starts_with(kUtf8Mark)) {
        return Encoding::Utf8Bom;
    }
    return Encoding::Utf8;
}

// A trailing odd byte of a UTF-16 file carries no character and is left out.
std::u16string DecodeUtf16(std::string_view bytes, bool bigEndian) {
    std::u16string text;
    text.reserve(bytes.size() / 2);
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto first = static_cast<unsigned>(static_cast<unsigned char>(bytes[i]));
        const auto second = static_cast<unsigned>(static_cast<unsigned char>(bytes[i + 1]));
        const unsigned unit = bigEndian ? (first << 8) | second : (second << 8) | first;
        text += static_cast<char16_t>(unit);
    }
    return text;
}

std::string EncodeUtf16(std::string_view text, bool bigEndian) {
    const std::u16string units = Utf8ToUtf16(text);
    std::string bytes;
    bytes.reserve(units.size() * 2);
    for (const char16_t unit : units) {
        const auto low = static_cast<char>(unit & 0xFF);
        const auto high = static_cast<char>(unit >> 8);
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    }
    return bytes;
}

std::string DetectLineEnd(std::string_view text) {
    const size_t lf = text.find('\n');
    return (lf != std::string_view::npos && (lf == 0 || text[lf - 1] != '\r')) ? "\n" : "\r\n";
}

Document MakeDocument(Encoding encoding, std::string text) {
    Document document;
    document.encoding = encoding;
    document.lineEnd = DetectLineEnd(text);
    document.text = std::move(text);
    return document;
}

std::string Mark(Encoding encoding) {
    switch (encoding) {
        case Encoding::Utf16Le:
            return std::string(kUtf16LeMark);
        case Encoding::Utf16Be:
            return std::string(kUtf16BeMark);
        case Encoding::Utf8Bom:
            return std::string(kUtf8Mark);
        case Encoding::Utf8:
        case Encoding::Ansi:
            break;
    }
    return {};
}

}  // namespace

Document ParseDocument(std::string_view bytes) {
    const Encoding encoding = DetectMark(bytes);
    switch (encoding) {
        case Encoding::Utf16Le:
        case Encoding::Utf16Be:
            return MakeDocument(
                encoding, Utf16ToUtf8(DecodeUtf16(bytes.substr(2), encoding == Encoding::Utf16Be)));
        case Encoding::Utf8Bom:
            return MakeDocument(encoding, std::string(bytes.substr(kUtf8Mark.size())));
        case Encoding::Utf8:
        case Encoding::Ansi:
            break;
    }
    return MakeDocument(IsValidUtf8(bytes) ? Encoding::Utf8 : Encoding::Ansi, std::string(bytes));
}

std::string SerializeDocument(const Document& document) {
    const bool utf16 =
        document.encoding == Encoding::Utf16Le || document.encoding == Encoding::Utf16Be;
    return Mark(document.encoding) +
           (utf16 ? EncodeUtf16(document.text, document.encoding == Encoding::Utf16Be)
                  : document.text);
}

std::string ToDocumentForm(const Document& document, std::string_view text) {
    return document.encoding == Encoding::Ansi ? Utf8ToCp1252(text) : std::string(text);
}

LineSpan LineAt(std::string_view text, size_t pos) {
    const size_t lf = text.find('\n', pos);
    LineSpan line;
    line.start = pos;
    line.next = lf == std::string_view::npos ? text.size() : lf + 1;
    line.end = lf == std::string_view::npos ? text.size() : lf;
    if (line.end > pos && text[line.end - 1] == '\r') {
        --line.end;  // the CR belongs to the line end
    }
    return line;
}

std::string_view LineText(const Document& document, const LineSpan& line, std::string& scratch) {
    const std::string_view bytes =
        std::string_view(document.text).substr(line.start, line.end - line.start);
    if (document.encoding != Encoding::Ansi || IsValidUtf8(bytes)) {
        return bytes;
    }
    scratch = Cp1252ToUtf8(bytes);
    return scratch;
}

std::string_view TrimBlanks(std::string_view text) {
    while (!text.empty() && IsBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

bool ParseSectionHeader(std::string_view line, std::string_view& name) {
    line = TrimBlanks(line);
    const size_t close = line.rfind(']');
    if (!line.starts_with('[') || close == std::string_view::npos) {
        return false;
    }
    name = TrimBlanks(line.substr(1, close - 1));
    return true;
}

Entry ParseEntry(std::string_view line) {
    const size_t equals = line.find('=');
    if (equals == std::string_view::npos) {
        return {TrimBlanks(line), {}, false};
    }
    return {TrimBlanks(line.substr(0, equals)), TrimBlanks(line.substr(equals + 1)), true};
}

bool IsBlankOrComment(std::string_view line) {
    line = TrimBlanks(line);
    return line.empty() || line.front() == ';';
}

}  // namespace plattmix::shell::profile
