#include "SizeFormat.h"

#include <langinfo.h>
#include <locale.h>

namespace plattmix::authoring {

namespace {

constexpr int64_t kKB = 1024;
constexpr int64_t kMB = 1048576;
constexpr int64_t kGB = 1073741824;

// value with the thousands sign between groups of three digits.
std::string Grouped(uint64_t value, const std::string& sep) {
    const std::string digits = std::to_string(value);
    std::string text;
    text.reserve(digits.size() + digits.size() / 3 * sep.size());
    for (std::string::size_type i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0)
            text += sep;
        text += digits[i];
    }
    return text;
}

// bytes * scale / unit rounded half away from zero, for bytes >= 0, without overflow.
uint64_t Rounded(int64_t bytes, int64_t unit, uint64_t scale) {
    const auto value = static_cast<uint64_t>(bytes);
    const auto divisor = static_cast<uint64_t>(unit);
    const uint64_t scaledRest = value % divisor * scale;
    uint64_t result = value / divisor * scale + scaledRest / divisor;
    if (scaledRest % divisor * 2 >= divisor)
        ++result;
    return result;
}

std::string WithTwoDecimals(uint64_t hundredths, const NumberFormat& format) {
    const uint64_t cents = hundredths % 100;
    return Grouped(hundredths / 100, format.thousandsSep) + format.decimalSep +
           static_cast<char>('0' + cents / 10) + static_cast<char>('0' + cents % 10);
}

std::string Bytes(int64_t bytes, const NumberFormat& format) {
    if (bytes >= 0)
        return Grouped(static_cast<uint64_t>(bytes), format.thousandsSep);
    // The magnitude of the most negative value does not fit an int64_t; it does fit unsigned.
    return "-" + Grouped(0 - static_cast<uint64_t>(bytes), format.thousandsSep);
}

}  // namespace

NumberFormat SystemNumberFormat() {
    NumberFormat format;
    locale_t user = newlocale(LC_NUMERIC_MASK, "", nullptr);
    if (user == nullptr)
        return format;
    try {
        const std::string thousands = nl_langinfo_l(THOUSEP, user);
        const std::string decimal = nl_langinfo_l(RADIXCHAR, user);
        if (!decimal.empty())
            format.decimalSep = decimal;
        if (!thousands.empty())
            format.thousandsSep = thousands;
        else if (format.decimalSep == ",")
            format.thousandsSep = ".";
    } catch (...) {
        format = NumberFormat{};
    }
    freelocale(user);
    return format;
}

std::string FormatGroesse(int64_t bytes, const NumberFormat& format) {
    try {
        if (bytes < kKB)
            return Bytes(bytes, format) + " Byte";
        if (bytes < kMB)
            return Grouped(Rounded(bytes, kKB, 1), format.thousandsSep) + " KB";
        if (bytes < kGB)
            return WithTwoDecimals(Rounded(bytes, kMB, 100), format) + " MB";
        return WithTwoDecimals(Rounded(bytes, kGB, 100), format) + " GB";
    } catch (...) {
        return "";
    }
}

std::string FormatGroesse(int64_t bytes) {
    return FormatGroesse(bytes, SystemNumberFormat());
}

}  // namespace plattmix::authoring
