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
        const auto first = static_cast<unsigned char>(bytes[i]);
        const auto second = static_cast<unsigned char>(bytes[i + 1]);
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

// Splits at LF; a CR before it belongs to the line end. No line after a final LF.
template <typename Visit>
void ForEachLine(std::string_view text, Visit visit) {
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        const size_t next = end == std::string_view::npos ? text.size() : end + 1;
        if (end == std::string_view::npos) {
            end = text.size();
        }
        std::string_view line = text.substr(start, end - start);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        visit(line);
        start = next;
    }
}

std::string DetectLineEnd(std::string_view text) {
    const size_t lf = text.find('\n');
    return (lf != std::string_view::npos && (lf == 0 || text[lf - 1] != '\r')) ? "\n" : "\r\n";
}

// Each line of an 8-bit file is UTF-8 when it can be, else the ANSI code page; the file counts
// as ANSI as soon as one line is not UTF-8.
Document ParseEightBit(std::string_view bytes, Encoding encoding) {
    Document document;
    document.encoding = encoding;
    document.lineEnd = DetectLineEnd(bytes);
    ForEachLine(bytes, [&](std::string_view line) {
        const bool utf8 = IsValidUtf8(line);
        if (!utf8 && encoding == Encoding::Utf8) {
            document.encoding = Encoding::Ansi;
        }
        document.lines.push_back(
            {utf8 ? std::string(line) : Cp1252ToUtf8(line), std::string(line)});
    });
    return document;
}

Document ParseUtf16(std::string_view bytes, Encoding encoding) {
    Document document;
    document.encoding = encoding;
    const std::string text = Utf16ToUtf8(DecodeUtf16(bytes, encoding == Encoding::Utf16Be));
    document.lineEnd = DetectLineEnd(text);
    ForEachLine(text, [&](std::string_view line) {
        document.lines.push_back({std::string(line), std::nullopt});
    });
    return document;
}

std::string EncodeLine(const Line& line, Encoding encoding) {
    switch (encoding) {
        case Encoding::Utf16Le:
            return EncodeUtf16(line.text, false);
        case Encoding::Utf16Be:
            return EncodeUtf16(line.text, true);
        case Encoding::Ansi:
            return line.raw ? *line.raw : Utf8ToCp1252(line.text);
        case Encoding::Utf8:
        case Encoding::Utf8Bom:
            break;
    }
    return line.raw ? *line.raw : line.text;
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
            return ParseUtf16(bytes.substr(2), encoding);
        case Encoding::Utf8Bom:
            return ParseEightBit(bytes.substr(kUtf8Mark.size()), encoding);
        case Encoding::Utf8:
        case Encoding::Ansi:
            break;
    }
    return ParseEightBit(bytes, Encoding::Utf8);
}

std::string SerializeDocument(const Document& document) {
    const Line lineEnd{document.lineEnd, std::nullopt};
    const std::string encodedEnd = EncodeLine(lineEnd, document.encoding);
    std::string bytes = Mark(document.encoding);
    for (const Line& line : document.lines) {
        bytes += EncodeLine(line, document.encoding);
        bytes += encodedEnd;
    }
    return bytes;
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
