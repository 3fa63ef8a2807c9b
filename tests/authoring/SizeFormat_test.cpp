#include "SizeFormat.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <limits>

namespace plattmix::authoring {
namespace {

const NumberFormat kGerman{".", ","};
const NumberFormat kEnglish{",", "."};

TEST(FormatGroesseTest, UnitBoundariesRoundingAndExtremes) {
    constexpr int64_t kGB = 1073741824;
    const std::pair<int64_t, const char*> sizes[] = {
        {1023, "1.023 Byte"},
        {1024, "1 KB"},
        {2560, "3 KB"},  // 2.5, half away from zero, not to the even 2
        {1048575, "1.024 KB"},
        {1048576, "1,00 MB"},
        {1048576 + 131072, "1,13 MB"},  // exactly 1.125
        {kGB, "1,00 GB"},
        {kGB * 5 / 2 + 5368709, "2,50 GB"},
        {kGB * 5 / 2 + 5368710, "2,51 GB"},
        {std::numeric_limits<int64_t>::max(), "8.589.934.592,00 GB"},
        {-1234, "-1.234 Byte"},
    };
    for (const auto& [size, text] : sizes)
        EXPECT_EQ(FormatGroesse(size, kGerman), text) << size;
    EXPECT_EQ(FormatGroesse(std::numeric_limits<int64_t>::min(), kEnglish),
              "-9,223,372,036,854,775,808 Byte");
    EXPECT_EQ(FormatGroesse(kGB - 1, {"\u202f", ","}), "1\u202f024,00 MB");
}

// The signs follow LC_ALL; an unknown locale falls back to the C signs (the C locale itself is the
// command line's compilation test).
TEST(SystemNumberFormatTest, ReadsTheLocaleFromTheEnvironment) {
    const char* old = std::getenv("LC_ALL");
    const std::string saved = old != nullptr ? old : "";
    setenv("LC_ALL", "xx_NOWHERE.UTF-8", 1);
    EXPECT_EQ(SystemNumberFormat(), kEnglish);
    setenv("LC_ALL", "de_DE.UTF-8", 1);  // tools/setup.sh generates it
    EXPECT_EQ(FormatGroesse(1572864), "1,50 MB");
    if (old != nullptr)
        setenv("LC_ALL", saved.c_str(), 1);
    else
        unsetenv("LC_ALL");
}

}  // namespace
}  // namespace plattmix::authoring
