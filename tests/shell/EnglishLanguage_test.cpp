// The English language file shipped in Languages/: every entry is found by the lookup, and every
// text the window looks up has an entry.
#include <gtest/gtest.h>

#include <array>
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

// The German texts the window and its pages look up, blanks exactly as shown.
const std::array kWindowTexts = {
    // Window, controls and their tips
    "Plattmix", "Ordnerauswahl...", "Aktualisieren", "Abbrechen", "INI Datei starten",
    "Disk auswerfen", "Disk Auswerfen", "Schließen", "Play", "Stop", "Laufende Nummer",
    "Tracknummer", "Track", "Nummer vor den Dateinamen setzen", "Nach Abschluss Dialog beenden",
    "Starten", "Ordner von dem ein ISO-Image erstellt werden soll", "ISO Format", "Volumenname",
    "Daten brennen", "ISO Datei brennen", "+ Ordner", "+ Datei", "Neue Zusammenstellung",
    "Entfernen", "Speichern", "Laden", "Fügt einen Ordner zur Zusammenstellung hinzu",
    "Fügt eine oder mehrer Datei(en) zur Zusammenstellung hinzu",
    "Eine neue Zusammenstellung von Ordner oder Dateien",
    "Entfernt einen markierten Eintrag aus der Liste oben", "Speichert die obige Zusammenstellung",
    "Lädt eine gespeicherte Zusammenstellung", "Multisession Disk brennen",
    "Disk abschließen (kein weiteres Brennen möglich)", "Disk löschen",
    "ISO-Datei als Laufwerk verbinden...", "ISO-Datei als Laufwerk trennen...",
    "Sehr zeitintensiver Vorgang, bitte unbedingt warten...", "Zielpfad", "Disk-Name",
    "Dateiname:", "Fortschritt:",
    // Tabs
    "CD/DVD Rippen      ", "    ISO Image erstellen  ", "    CD Brennen  ",
    // Track list columns
    "Track", "Dauer", "Anfang", "Ende", "Inhalt", "Ergebnis",
    // Output formats
    "MP3 Format", "MP4 Format", "MP2 Format", "Flac Format", "AC3 Format", "WMA Format",
    "WAV Format",
    // Selection commands
    "Alles", "Nichts", "Auswahl umkehren", "Gerade Tracks", "Ungerade Tracks",
    "Unterhalb der Markierung", "Oberhalb der Markierung", "Alle Selektierten",
    // Prompts and status texts
    "Bitte Zielpfad auswählen --->", "Bitte ISO Datei auswählen --->",
    "Bitte fügen Sie Ordner oder Dateien hinzu...", "Keine Tracks vorhannden!", "Schreibe...",
    "Abbruch", "Keine Disk im Laufwerk", "Laufwerk nicht bereit! Button --> Aktualisieren",
    "Leere CD im Laufwerk!", "Keine Audio CD im Laufwerk ---> Button Aktualisieren", "Audio",
    "Daten", "Keine CD im Laufwerk!", "100 % der Disk belegt", "100 % der Disk belegt!",
    "Kein freier Speicher auf der Disk!", "Zusammenstellung zu groß für die Disk!",
    "Lösche Disk...", "Löschen erfolgreich abgeschlossen", "Fehler beim Löschen!"};

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

TEST_F(EnglishLanguageTest, EveryWindowTextHasAnEntry) {
    for (const std::string german : kWindowTexts) {
        const std::string english = english_.LangText(german);
        if (kSameInEnglish.contains(german)) {
            EXPECT_EQ(modProfile::GetPrivateProfileString("Common", german, "", file_, 800),
                      german);
        } else {
            EXPECT_NE(english, german) << '"' << german << '"';
        }
    }
}

TEST_F(EnglishLanguageTest, TabCaptionsKeepTheirPadding) {
    EXPECT_EQ(english_.LangText("CD/DVD Rippen      "), "Rip CD/DVD      ");
    EXPECT_EQ(english_.LangText("    ISO Image erstellen  "), "    Create ISO image  ");
    EXPECT_EQ(english_.LangText("    CD Brennen  "), "    Burn CD  ");
}

}  // namespace
}  // namespace plattmix::shell
