// Sizes as text with the German unit words: " Byte", " KB", " MB", " GB" (1024-based).
#pragma once

#include <cstdint>
#include <string>

namespace plattmix::authoring {

// Digit grouping (groups of three) and decimal sign. The defaults are those of an English
// system and of the C locale.
struct NumberFormat {
    std::string thousandsSep = ",";
    std::string decimalSep = ".";

    bool operator==(const NumberFormat&) const = default;
};

// The signs of the user's locale (LC_ALL, LC_NUMERIC, LANG), read anew on each call. A locale
// that is not installed, or one without a grouping sign, falls back to the defaults.
NumberFormat SystemNumberFormat();

// Below 1024: the bytes, grouped, + " Byte". Below 1 MiB: whole KiB + " KB". Below 1 GiB: MiB
// with two decimals + " MB". Else GiB with two decimals + " GB". Rounded half away from zero.
std::string FormatGroesse(int64_t bytes, const NumberFormat& format);

// The same with the user's locale.
std::string FormatGroesse(int64_t bytes);

}  // namespace plattmix::authoring
