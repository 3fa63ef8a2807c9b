#include "SizeFormat.h"

#include <langinfo.h>
#include <locale.h>

#include <string_view>

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
    std::string text = Grouped(hundredths / 100, format.thousandsSep);
    text.append(format.decimalSep);
    text.push_back(static_cast<char>('0' + cents / 10));
    text.push_back(static_cast<char>('0' + cents % 10));
    return text;
}

std::string Bytes(int64_t bytes, const NumberFormat& format) {
    if (bytes >= 0)
        return Grouped(static_cast<uint64_t>(bytes), format.thousandsSep);
    // The magnitude of the most negative value does not fit an int64_t; it does fit unsigned.
    std::string text = "-";
    text.append(Grouped(0 - static_cast<uint64_t>(bytes), format.thousandsSep));
    return text;
}

}  // namespace

NumberFormat SystemNumberFormat() {
    locale_t user = newlocale(LC_NUMERIC_MASK, "", nullptr);
    if (user == nullptr)
        return NumberFormat{};
    NumberFormat format;
    try {
        const std::string_view thousands = nl_langinfo_l(THOUSEP, user);
        const std::string_view decimal = nl_langinfo_l(RADIXCHAR, user);
        // A locale without a grouping sign still gets one, different from its decimal sign.
        const std::string_view fallback = decimal == "," ? "." : ",";
        format = NumberFormat{std::string(thousands.empty() ? fallback : thousands),
                              std::string(decimal.empty() ? "." : decimal)};
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
