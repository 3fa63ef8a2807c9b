// Interface texts: the language lookup, the language name, the two UTF-16 file helpers and the
// English file the program ships.
#include <gtest/gtest.h>

#include <set>

#include "ShellFiles.h"
#include "common/JunkBytes.h"
#include "common/ScratchFolder.h"
#include "modLanguage.h"
#include "modProfile.h"

namespace plattmix::shell {
namespace {

using test::ReadBytes;
using test::Utf16Le;
using test::WriteBytes;

class LanguageTest : public ::testing::Test {
  protected:
    // A language file "Test.lng" in UTF-16 with its mark, as the translators ship them.
    LanguageTexts WithLanguageFile(std::u16string_view common) {
        WriteBytes(folder_ / "Test.lng",
                   test::kUtf16Mark + Utf16Le(u"[Common]\r\n") + Utf16Le(common));
        return LanguageTexts(folder_.string() + "/", "Test");
    }
    std::filesystem::path folder_ = test::ScratchFolder("shell");
};

TEST_F(LanguageTest, GermanWithoutALanguage) {
    WriteBytes(folder_ / "default.lng", "[Common]\nAlles=Everything\n");
    for (const char* name : {"", "default", "Klingonisch"}) {
        const LanguageTexts texts(folder_.string() + "/", name);
        EXPECT_EQ(texts.LanguageName(), "default");
        EXPECT_EQ(texts.LangText("Alles"), "Alles");
        EXPECT_EQ(texts.LangText("Alles", "Anders"), "Anders");
    }
    EXPECT_EQ(LanguageTexts().LangText("Nichts"), "Nichts");
}

TEST_F(LanguageTest, TranslationOrTheGermanText) {
    const LanguageTexts texts = WithLanguageFile(
        u"Alles=All\r\nNichts=\r\nAbbruch=\"\"\r\nSchlie\u00DFen=Close\r\n"
        u"    CD Brennen  =\"    Burn CD  \"\r\nLang=" +
        std::u16string(1000, u'e') + u"\r\n");
    EXPECT_EQ(texts.LanguageName(), "Test");
    EXPECT_EQ(texts.LangText("Alles"), "All");
    EXPECT_EQ(texts.LangText("Nichts"), "Nichts");  // an empty translation keeps the German
    EXPECT_EQ(texts.LangText("Abbruch"), "Abbruch");
    EXPECT_EQ(texts.LangText("Gerade Tracks"), "Gerade Tracks");
    EXPECT_EQ(texts.LangText("Fehlt", "Vorgabe"), "Vorgabe");
    EXPECT_EQ(texts.LangText("SCHLIESSEN"), "SCHLIESSEN");
    EXPECT_EQ(texts.LangText("schlie\xC3\x9F"
                             "en"),
              "Close");
    EXPECT_EQ(texts.LangText("    CD Brennen  "), "    Burn CD  ");  // blanks on both sides
    EXPECT_EQ(texts.LangText("Lang"), std::string(799, 'e'));
}

// A damaged file gives what can be read from it and the German text for the rest.
TEST_F(LanguageTest, DamagedFilesGiveTheGermanTextWhereNothingCanBeRead) {
    const std::string junk = test::JunkBytes(256 * 1024);
    const std::string common = test::kUtf16Mark + Utf16Le(u"[Common]\r\nAlles=All\r\n");
    const struct {
        const char* what;
        std::string bytes;
        const char* alles;  // what "Alles" gives
    } cases[] = {
        {"binary junk", junk, "Alles"},
        {"junk behind the texts", common + junk, "All"},
        {"odd length", common + "\x41", "All"},
        {"megabyte line", common + Utf16Le(std::u16string(1 << 20, u'x')) + Utf16Le(u"\r\nB=b"),
         "All"},
        {"missing bracket", test::kUtf16Mark + Utf16Le(u"[Common\r\nAlles=All\r\n"), "Alles"},
        {"no mark", Utf16Le(u"[Common]\r\nAlles=All\r\n"), "Alles"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        WriteBytes(folder_ / "Test.lng", c.bytes);
        const LanguageTexts texts(folder_.string() + "/", "Test");
        EXPECT_EQ(texts.LangText("Alles"), c.alles);
        EXPECT_EQ(texts.LangText("Starten"), "Starten");
    }
}

TEST_F(LanguageTest, CreateWritesExactlyTheMarkAndTruncates) {
    const auto path = (folder_ / "new.txt").string();
    WriteBytes(path, "old content");
    EXPECT_TRUE(UnicodeFile_Create(path, "never written"));
    EXPECT_EQ(ReadBytes(path), "\xFF\xFE");
    EXPECT_FALSE(UnicodeFile_Create((folder_ / "no/such/folder.txt").string()));
    EXPECT_FALSE(UnicodeFile_Create(folder_.string()));
}

// The text follows the mark, padded with one blank for every two bytes of the file.
TEST_F(LanguageTest, ReadGivesTheTextFollowedByBlanks) {
    const auto path = folder_ / "f.txt";
    const std::pair<std::string, const char*> files[] = {
        {"\xFF\xFE", " "},
        {test::kUtf16Mark + Utf16Le(u"\u00C4bcd"),
         "\xC3\x84"
         "bcd     "},
        {Utf16Le(u"abcd"), "bcd    "},  // without the mark the first character is taken for it
        {test::kUtf16Mark + Utf16Le(u"ab") + "c", "abc   "},  // shares a blank's upper half
        {"", ""},
        {std::string("\xFF\x00\xFE\x00", 4) + Utf16Le(u"xy"), "xy    "},  // a mark of two
    };
    for (const auto& [bytes, text] : files) {
        WriteBytes(path, bytes);
        EXPECT_EQ(UnicodeFile_Read(path.string()), text) << text;
    }
    EXPECT_EQ(UnicodeFile_Read((folder_ / "missing.txt").string()), "");
    EXPECT_EQ(UnicodeFile_Read(folder_.string()), "");
}

// The English file shipped in Languages/: every entry is found by the lookup and says something
// other than the German text.
TEST(EnglishLanguage, IsUnicodeAndEveryEntryIsFoundAndTranslated) {
    const std::string languages = PLATTMIX_SOURCE_DIR "/Languages/";
    const std::string file = languages + "English.lng";
    const LanguageTexts texts(languages, "English");
    // Texts that read the same in English.
    const std::set<std::string> sameInEnglish = {"Plattmix", "Play", "Stop", "Track", "Audio"};
    const std::string bytes = test::ReadBytes(file);
    ASSERT_TRUE(bytes.starts_with("\xFF\xFE"));
    EXPECT_NE(bytes.find(test::Utf16Le(u"\r\n[Common]\r\n")), std::string::npos);
    EXPECT_EQ(texts.LanguageName(), "English");

    const auto lines = modProfile::GetPrivateProfileSection("Common", file, 32767);
    ASSERT_GE(lines.size(), 90u);
    for (const std::string& line : lines) {
        const size_t equals = line.find('=');
        ASSERT_NE(equals, std::string::npos) << line;
        const std::string key = line.substr(0, equals);
        std::string english = line.substr(equals + 1);
        if (english.size() >= 2 && english.front() == '"' && english.back() == '"') {
            english = english.substr(1, english.size() - 2);
        }
        EXPECT_EQ(texts.LangText(key), english) << key;
        if (!sameInEnglish.contains(key)) {
            EXPECT_NE(english, key) << key;
        }
    }
}

}  // namespace
}  // namespace plattmix::shell
