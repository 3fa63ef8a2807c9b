// Letter case for names and entries that are compared without regard to case: the Latin,
// Greek and Cyrillic capitals are lowered (so "Ä" matches "ä"); "ß" stays as it is.
#pragma once

#include <string>
#include <string_view>

namespace plattmix::shell {

char32_t LowerCodePoint(char32_t c);
std::string LowerText(std::string_view text);
bool EqualsIgnoreCase(std::string_view a, std::string_view b);

}  // namespace plattmix::shell
