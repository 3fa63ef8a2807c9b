// The English language file shipped in Languages/: every entry is found by the lookup and says
// something other than the German text.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "ShellFiles.h"
#include "modLanguage.h"
#include "modProfile.h"

namespace plattmix::shell {
namespace {

const std::filesystem::path kLanguages = std::filesystem::path(PLATTMIX_SOURCE_DIR) / "Languages";

// Texts that read the same in English.
const std::set<std::string> kSameInEnglish = {"Plattmix", "Play", "Stop", "Track", "Audio"};

class EnglishLanguageTest : public ::testing::Test {
  protected:
    std::string file_ = (kLanguages / "English.lng").string();
    LanguageTexts english_{kLanguages.string() + "/", "English"};
};

TEST_F(EnglishLanguageTest, IsUnicodeAndEveryEntryIsFoundAndTranslated) {
    const std::string bytes = test::ReadBytes(file_);
    ASSERT_TRUE(bytes.starts_with("\xFF\xFE"));
    EXPECT_NE(bytes.find(test::Utf16Le(u"\r\n[Common]\r\n")), std::string::npos);
    EXPECT_EQ(english_.LanguageName(), "English");

    const auto lines = modProfile::GetPrivateProfileSection("Common", file_, 32767);
    ASSERT_GE(lines.size(), 90u);
    for (const std::string& line : lines) {
        const size_t equals = line.find('=');
        ASSERT_NE(equals, std::string::npos) << line;
        const std::string key = line.substr(0, equals);
        std::string english = line.substr(equals + 1);
        if (english.size() >= 2 && english.front() == '"' && english.back() == '"') {
            english = english.substr(1, english.size() - 2);
        }
        EXPECT_EQ(english_.LangText(key), english) << key;
        if (!kSameInEnglish.contains(key)) {
            EXPECT_NE(english, key) << key;
        }
    }
}

}  // namespace
}  // namespace plattmix::shell
