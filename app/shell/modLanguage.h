// Interface texts: the German text is the key under which a translation is looked up in the
// chosen language file (section "Common"). Also the two UTF-16 file helpers other parts share.
#pragma once

#include <string>

namespace plattmix::shell {

class LanguageTexts {
  public:
    // languagesFolder ends in "/"; name is the language name without ".lng".
    LanguageTexts() = default;
    LanguageTexts(std::string languagesFolder, std::string name);

    // "default" or empty: no file, the German texts. A name whose file is missing becomes
    // "default" (done once, at load).
    const std::string& LanguageName() const { return name_; }

    // The translation of key, or defaultValue (key itself when empty) when there is none or it
    // is empty. Translations are cut to 799 characters. A key with padding blanks (the tab
    // captions) finds the trimmed key of the file; a translation that keeps padding blanks is
    // written in quotes in the file ("    CD Brennen  ="    Burn CD  ").
    std::string LangText(const std::string& key, const std::string& defaultValue = "") const;

  private:
    std::string file_;
    std::string name_ = "default";
};

// The language name from the suite's options file: key "Languages" of section "Pfad1".
std::string ReadLanguageName(const std::string& suiteOptionsFile);

// The whole UTF-16LE file as UTF-8, its mark dropped, followed by blanks: the file is read
// into a buffer of as many characters as it has bytes, pre-filled with blanks, so the second
// half stays blank (a 10-byte file, mark and 4 characters, gives the 4 characters and 5
// blanks). The first character is taken for the mark and dropped (two when the buffer starts
// U+00FF U+00FE), so a file without the mark loses its first character. Empty for an empty or
// unreadable file.
std::string UnicodeFile_Read(const std::string& path);
// Creates or truncates the file with just FF FE. The text is never written (kept for callers).
bool UnicodeFile_Create(const std::string& path, const std::string& text = "");

}  // namespace plattmix::shell
