// Text conversions between the program's UTF-8 strings and the UTF-16 and 8-bit encodings the
// settings and language files come in. Nothing here throws; a broken sequence becomes U+FFFD.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace plattmix::shell {

// The next code point of text at pos; pos moves past it. A byte that starts no valid sequence
// gives U+FFFD and moves pos by one.
char32_t NextCodePoint(std::string_view text, size_t& pos);
void AppendUtf8(std::string& out, char32_t codePoint);

bool IsValidUtf8(std::string_view bytes);

std::u16string Utf8ToUtf16(std::string_view text);
// Unpaired surrogates become U+FFFD.
std::string Utf16ToUtf8(std::u16string_view text);

// Windows-1252, the Western ANSI code page; the five bytes it leaves undefined map to the code
// points of the same value, as Latin-1 does.
std::string Cp1252ToUtf8(std::string_view bytes);
// Characters the code page lacks become "?".
std::string Utf8ToCp1252(std::string_view text);

// Length in UTF-16 code units, the unit the platform's buffers are counted in.
size_t Utf16Length(std::string_view text);
// The longest start of text of at most units UTF-16 code units; a surrogate pair is never split.
std::string CutToUtf16Units(std::string_view text, size_t units);

}  // namespace plattmix::shell
