#include "TextCase.h"

#include "Utf16.h"

namespace plattmix::shell {

namespace {

bool InRange(char32_t c, char32_t first, char32_t last) {
    return c >= first && c <= last;
}

// Latin Extended-A pairs capital and small letters side by side; the run 0x0139..0x0148 and
// 0x0179..0x017E starts its pairs on an odd code point.
char32_t LowerLatinExtendedA(char32_t c) {
    if (c == 0x0130) {
        return U'i';
    }
    if (c == 0x0178) {
        return 0x00FF;
    }
    const bool oddPairs = InRange(c, 0x0139, 0x0148) || InRange(c, 0x0179, 0x017E);
    if (oddPairs) {
        return (c % 2 == 1) ? c + 1 : c;
    }
    if (InRange(c, 0x0100, 0x0137) || InRange(c, 0x014A, 0x0177)) {
        return (c % 2 == 0) ? c + 1 : c;
    }
    return c;
}

}  // namespace

char32_t LowerCodePoint(char32_t c) {
    if (InRange(c, U'A', U'Z')) {
        return c + 0x20;
    }
    if (c < 0xC0) {
        return c;
    }
    if (InRange(c, 0x00C0, 0x00DE) && c != 0x00D7) {
        return c + 0x20;
    }
    if (InRange(c, 0x0100, 0x017F)) {
        return LowerLatinExtendedA(c);
    }
    if (InRange(c, 0x0391, 0x03AB) && c != 0x03A2) {
        return c + 0x20;
    }
    if (InRange(c, 0x0400, 0x040F)) {
        return c + 0x50;
    }
    if (InRange(c, 0x0410, 0x042F)) {
        return c + 0x20;
    }
    return c;
}

std::string LowerText(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    size_t pos = 0;
    while (pos < text.size()) {
        const size_t start = pos;
        const char32_t c = NextCodePoint(text, pos);
        const char32_t lower = LowerCodePoint(c);
        if (lower == c) {
            out.append(text.substr(start, pos - start));  // also keeps broken bytes as they are
        } else {
            AppendUtf8(out, lower);
        }
    }
    return out;
}

bool EqualsIgnoreCase(std::string_view a, std::string_view b) {
    return LowerText(a) == LowerText(b);
}

}  // namespace plattmix::shell
