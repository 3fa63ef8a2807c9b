#include "Utf16.h"

#include <array>

namespace plattmix::shell {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

// 0x80..0x9F of Windows-1252; zero where the code page defines nothing.
constexpr std::array<char16_t, 32> kCp1252High = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

bool IsContinuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}
bool IsSurrogate(char32_t c) {
    return c >= 0xD800 && c <= 0xDFFF;
}

// Length and lowest legal value of a sequence by its lead byte; 0 for a byte that leads none.
struct LeadInfo {
    size_t length;
    char32_t minimum;
    char32_t bits;
};

LeadInfo Lead(unsigned char byte) {
    if (byte < 0x80) {
        return {1, 0, byte};
    }
    if ((byte & 0xE0) == 0xC0) {
        return {2, 0x80, byte & 0x1Fu};
    }
    if ((byte & 0xF0) == 0xE0) {
        return {3, 0x800, byte & 0x0Fu};
    }
    if ((byte & 0xF8) == 0xF0) {
        return {4, 0x10000, byte & 0x07u};
    }
    return {0, 0, 0};
}

// The code point at pos, or nothing (length 0) when the bytes there are not valid UTF-8.
LeadInfo Decode(std::string_view text, size_t pos) {
    const LeadInfo lead = Lead(static_cast<unsigned char>(text[pos]));
    if (lead.length == 0 || text.size() - pos < lead.length) {
        return {0, 0, 0};
    }
    char32_t value = lead.bits;
    for (size_t i = 1; i < lead.length; ++i) {
        const auto byte = static_cast<unsigned char>(text[pos + i]);
        if (!IsContinuation(byte)) {
            return {0, 0, 0};
        }
        value = (value << 6) | (byte & 0x3Fu);
    }
    if (value < lead.minimum || value > 0x10FFFF || IsSurrogate(value)) {
        return {0, 0, 0};
    }
    return {lead.length, 0, value};
}

}  // namespace

char32_t NextCodePoint(std::string_view text, size_t& pos) {
    const LeadInfo decoded = Decode(text, pos);
    if (decoded.length == 0) {
        ++pos;
        return kReplacement;
    }
    pos += decoded.length;
    return decoded.bits;
}

void AppendUtf8(std::string& out, char32_t c) {
    if (c > 0x10FFFF || IsSurrogate(c)) {
        c = kReplacement;
    }
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

bool IsValidUtf8(std::string_view bytes) {
    size_t pos = 0;
    while (pos < bytes.size()) {
        const LeadInfo decoded = Decode(bytes, pos);
        if (decoded.length == 0) {
            return false;
        }
        pos += decoded.length;
    }
    return true;
}

std::u16string Utf8ToUtf16(std::string_view text) {
    std::u16string out;
    out.reserve(text.size());
    size_t pos = 0;
    while (pos < text.size()) {
        const char32_t c = NextCodePoint(text, pos);
        if (c < 0x10000) {
            out += static_cast<char16_t>(c);
        } else {
            const char32_t v = c - 0x10000;
            out += static_cast<char16_t>(0xD800 + (v >> 10));
            out += static_cast<char16_t>(0xDC00 + (v & 0x3FF));
        }
    }
    return out;
}

std::string Utf16ToUtf8(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        const char32_t unit = text[i];
        const bool high = unit >= 0xD800 && unit <= 0xDBFF;
        if (high && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
            AppendUtf8(out, 0x10000 + ((unit - 0xD800) << 10) + (text[i + 1] - 0xDC00u));
            ++i;
        } else {
            AppendUtf8(out, IsSurrogate(unit) ? kReplacement : unit);
        }
    }
    return out;
}

std::string Cp1252ToUtf8(std::string_view bytes) {
    std::string out;
    out.reserve(bytes.size() + bytes.size() / 2);
    for (const char ch : bytes) {
        const auto byte = static_cast<unsigned char>(ch);
        char32_t c = byte;
        if (byte >= 0x80 && byte < 0xA0 && kCp1252High[byte - 0x80u] != 0) {
            c = kCp1252High[byte - 0x80u];
        }
        AppendUtf8(out, c);
    }
    return out;
}

std::string Utf8ToCp1252(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    size_t pos = 0;
    while (pos < text.size()) {
        const char32_t c = NextCodePoint(text, pos);
        char byte = '?';
        if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) {
            byte = static_cast<char>(c);
        } else {
            for (size_t i = 0; i < kCp1252High.size(); ++i) {
                const char16_t mapped = kCp1252High[i];
                if ((mapped != 0 && mapped == c) || (mapped == 0 && c == 0x80 + i)) {
                    byte = static_cast<char>(0x80 + i);
                    break;
                }
            }
        }
        out += byte;
    }
    return out;
}

size_t Utf16Length(std::string_view text) {
    size_t units = 0;
    size_t pos = 0;
    while (pos < text.size()) {
        units += NextCodePoint(text, pos) >= 0x10000 ? size_t{2} : size_t{1};
    }
    return units;
}

std::string CutToUtf16Units(std::string_view text, size_t units) {
    size_t used = 0;
    size_t pos = 0;
    while (pos < text.size()) {
        size_t next = pos;
        const size_t width = NextCodePoint(text, next) >= 0x10000 ? 2 : 1;
        if (used + width > units) {
            break;
        }
        used += width;
        pos = next;
    }
    return std::string(text.substr(0, pos));
}

}  // namespace plattmix::shell
