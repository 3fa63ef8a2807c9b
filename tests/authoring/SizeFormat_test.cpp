#include "SizeFormat.h"

#include <gtest/gtest.h>
#include <locale.h>

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <optional>
#include <string>

namespace plattmix::authoring {
namespace {

const NumberFormat kGerman{".", ","};
const NumberFormat kEnglish{",", "."};

TEST(FormatGroesseTest, UnitBoundariesInGerman) {
    EXPECT_EQ(FormatGroesse(0, kGerman), "0 Byte");
    EXPECT_EQ(FormatGroesse(999, kGerman), "999 Byte");
    EXPECT_EQ(FormatGroesse(1023, kGerman), "1.023 Byte");
    EXPECT_EQ(FormatGroesse(1024, kGerman), "1 KB");
    EXPECT_EQ(FormatGroesse(1048575, kGerman), "1.024 KB");
    EXPECT_EQ(FormatGroesse(1048576, kGerman), "1,00 MB");
    EXPECT_EQ(FormatGroesse(1572864, kGerman), "1,50 MB");
    EXPECT_EQ(FormatGroesse(1073741823, kGerman), "1.024,00 MB");
    EXPECT_EQ(FormatGroesse(1073741824, kGerman), "1,00 GB");
}

TEST(FormatGroesseTest, RoundsHalfAwayFromZero) {
    EXPECT_EQ(FormatGroesse(1535, kGerman), "1 KB");
    EXPECT_EQ(FormatGroesse(1536, kGerman), "2 KB");
    EXPECT_EQ(FormatGroesse(2560, kGerman), "3 KB");  // 2.5: not to the even 2
    // 1.125 MB is an exact half of a hundredth
    EXPECT_EQ(FormatGroesse(1048576 + 131072, kGerman), "1,13 MB");
    EXPECT_EQ(FormatGroesse(1048576 + 131071, kGerman), "1,12 MB");
    EXPECT_EQ(FormatGroesse(int64_t{1073741824} * 5 / 2 + 5368709, kGerman), "2,50 GB");
    EXPECT_EQ(FormatGroesse(int64_t{1073741824} * 5 / 2 + 5368710, kGerman), "2,51 GB");
    EXPECT_EQ(FormatGroesse(1073741823 + 1073741824, kGerman), "2,00 GB");
}

TEST(FormatGroesseTest, LargeAndNegativeValuesAndOtherSigns) {
    EXPECT_EQ(FormatGroesse(1234567, kEnglish), "1.18 MB");
    EXPECT_EQ(FormatGroesse(123456789012, kEnglish), "114.98 GB");
    EXPECT_EQ(FormatGroesse(int64_t{1} << 52, kEnglish), "4,194,304.00 GB");
    EXPECT_EQ(FormatGroesse(std::numeric_limits<int64_t>::max(), kGerman), "8.589.934.592,00 GB");
    EXPECT_EQ(FormatGroesse(-1, kGerman), "-1 Byte");
    EXPECT_EQ(FormatGroesse(-1234, kGerman), "-1.234 Byte");
    EXPECT_EQ(FormatGroesse(std::numeric_limits<int64_t>::min(), kEnglish),
              "-9,223,372,036,854,775,808 Byte");
    EXPECT_EQ(FormatGroesse(1023 * 1048576 + 1048575, NumberFormat{"\u202f", ","}),
              "1\u202f024,00 MB");
}

// Sets one environment variable for the lifetime of the object.
class EnvironmentOverride {
  public:
    EnvironmentOverride(const char* name, const char* value) : name_(name) {
        if (const char* old = std::getenv(name))
            old_ = old;
        setenv(name, value, 1);
    }
    ~EnvironmentOverride() {
        if (old_)
            setenv(name_, old_->c_str(), 1);
        else
            unsetenv(name_);
    }

  private:
    const char* name_;
    std::optional<std::string> old_;
};

bool LocaleInstalled(const char* name) {
    locale_t locale = newlocale(LC_NUMERIC_MASK, name, nullptr);
    if (locale == nullptr)
        return false;
    freelocale(locale);
    return true;
}

TEST(SystemNumberFormatTest, CLocaleLooksLikeEnglish) {
    const EnvironmentOverride all("LC_ALL", "C");
    EXPECT_EQ(SystemNumberFormat(), kEnglish);
    EXPECT_EQ(FormatGroesse(1234567), "1.18 MB");
    EXPECT_EQ(FormatGroesse(1023), "1,023 Byte");
}

TEST(SystemNumberFormatTest, MissingLocaleFallsBackToTheCConventions) {
    const EnvironmentOverride all("LC_ALL", "xx_NOWHERE.UTF-8");
    EXPECT_EQ(SystemNumberFormat(), kEnglish);
}

TEST(SystemNumberFormatTest, GermanLocale) {
    const EnvironmentOverride all("LC_ALL", "de_DE.UTF-8");
    if (LocaleInstalled("de_DE.UTF-8")) {
        EXPECT_EQ(SystemNumberFormat(), kGerman);
        EXPECT_EQ(FormatGroesse(1023), "1.023 Byte");
        EXPECT_EQ(FormatGroesse(1572864), "1,50 MB");
    } else {
        // Not installed here (package "locales", de_DE.UTF-8 generated): only the German signs
        // given explicitly can be checked, and the reader falls back.
        std::cout << "de_DE.UTF-8 is not installed: German signs checked as given only\n";
        RecordProperty("de_DE.UTF-8", "not installed");
        EXPECT_EQ(SystemNumberFormat(), kEnglish);
    }
    EXPECT_EQ(FormatGroesse(1023, kGerman), "1.023 Byte");
    EXPECT_EQ(FormatGroesse(1073741824, kGerman), "1,00 GB");
}

}  // namespace
}  // namespace plattmix::authoring
