// Interface texts: the language lookup, the language name and the UTF-16 file reader (the
// settings tests create UTF-16 files).
#include <gtest/gtest.h>

#include "ShellFiles.h"
#include "common/JunkBytes.h"
#include "common/ScratchFolder.h"
#include "modLanguage.h"

namespace plattmix::shell {
namespace {

using test::Utf16Le;
using test::WriteBytes;

class LanguageTest : public ::testing::Test {
  protected:
    std::filesystem::path folder_ = test::ScratchFolder("shell");
};

// No language, "default" or a file that is not there: the German texts.
TEST_F(LanguageTest, GermanWithoutALanguageFile) {
    WriteBytes(folder_ / "default.lng", "[Common]\nAlles=Everything\n");
    for (const char* name : {"", "default", "Klingonisch"}) {
        const LanguageTexts texts(folder_.string() + "/", name);
        EXPECT_EQ(texts.LanguageName(), "default");
        EXPECT_EQ(texts.LangText("Alles"), "Alles");
        EXPECT_EQ(texts.LangText("Alles", "Anders"), "Anders");
    }
    EXPECT_EQ(LanguageTexts().LangText("Nichts"), "Nichts");
}

// A UTF-16 file with its mark, as the translators ship them.
TEST_F(LanguageTest, TranslationOrTheGermanText) {
    WriteBytes(
        folder_ / "Test.lng",
        test::kUtf16Mark +
            Utf16Le(u"[Common]\r\nAlles=All\r\nNichts=\r\nAbbruch=\"\"\r\nSchlie\u00DFen=Close\r\n"
                    u"    CD Brennen  =\"    Burn CD  \"\r\nLang=" +
                    std::u16string(1000, u'e') + u"\r\n"));
    const LanguageTexts texts(folder_.string() + "/", "Test");
    EXPECT_EQ(texts.LanguageName(), "Test");
    EXPECT_EQ(texts.LangText("Alles"), "All");
    EXPECT_EQ(texts.LangText("Nichts"), "Nichts");  // an empty translation keeps the German
    EXPECT_EQ(texts.LangText("Abbruch"), "Abbruch");
    EXPECT_EQ(texts.LangText("Fehlt", "Vorgabe"), "Vorgabe");
    EXPECT_EQ(texts.LangText("SCHLIESSEN"), "SCHLIESSEN");
    EXPECT_EQ(texts.LangText("schließen"), "Close");
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

}  // namespace
}  // namespace plattmix::shell
