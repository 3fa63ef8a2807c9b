// The interface in another language: the suite's language setting names a file in the
// Languages folder, and every caption is looked up under its German text.
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <fstream>

#include "TabStrip.h"
#include "TrackListView.h"
#include "WindowTestSupport.h"
#include "imagedrive/clsImageDrive.h"
#include "modProfile.h"

using namespace plattmix;
using namespace plattmix::window;
using namespace plattmix::window::test;

namespace {

class Translated : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        UseImages({WriteDisc("AudioThreeTracks", root / "disc")});
    }
    void ChooseLanguage(const std::string& name) {
        shell::modProfile::WritePrivateProfileString("Pfad1", "Languages", name,
                                                     SuiteOptionsFile().string());
    }
    void WriteLanguage(const std::string& name, const std::string& lines) {
        std::ofstream(languages / (name + ".lng")) << "[Common]\n" << lines;
    }
    MsgBoxRecorder boxes;
};

}  // namespace

TEST_F(Translated, CaptionsColumnsTabsAndCommandsAreTranslated) {
    WriteLanguage("Test",
                  "Plattmix=Plattmix T\n"
                  "Track=Nr.\n"
                  "Ergebnis=Result\n"
                  "    CD Brennen  =\"   Burn  \"\n"
                  "Abbrechen=Cancel\n"
                  "Zielpfad=Target\n"
                  "Alles=All\n"
                  "Nach Abschluss Dialog beenden=Quit when done\n"
                  "Starten=Start\n"
                  "Volumenname=Volume\n"
                  "Bitte Zielpfad auswählen --->=Choose a target --->\n");
    ChooseLanguage("Test");
    frmMain* window = StartAndFill();
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(window->Language().LanguageName(), "Test");
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Plattmix T"));
    EXPECT_EQ(window->ExplorerListView1->headerItem()->text(0), QStringLiteral("Nr."));
    EXPECT_EQ(window->ExplorerListView1->headerItem()->text(1), QStringLiteral("Dauer"));
    EXPECT_EQ(window->ExplorerListView1->headerItem()->text(5), QStringLiteral("Result"));
    EXPECT_EQ(window->TabStrip1->tabText(2), QStringLiteral("   Burn  "));
    EXPECT_EQ(window->TabStrip1->tabText(0), QStringLiteral("CD/DVD Rippen      "));
    EXPECT_EQ(window->Command2->text(), QStringLiteral("Cancel"));
    EXPECT_EQ(window->Label1->text(), QStringLiteral("Target"));
    EXPECT_EQ(window->ComboBox2->itemText(0), QStringLiteral("All"));
    EXPECT_EQ(window->ComboBox2->itemText(1), QStringLiteral("Nichts"));
    EXPECT_EQ(window->Check1->text(), QStringLiteral("Quit when done"));
    EXPECT_EQ(window->mnuSave->text(), QStringLiteral("Start"));
    EXPECT_EQ(window->Text3->text(), QStringLiteral("Volume"));
    EXPECT_EQ(window->ComboBox1->lineEdit()->placeholderText(),
              QStringLiteral("Choose a target --->"));
    // Message boxes keep their German texts whatever the language.
    EXPECT_EQ(window->Command4->text(), QStringLiteral("Disk auswerfen"));
}

TEST_F(Translated, EnglishFileOfTheProgramTranslatesTheTabs) {
    const QString english = QStringLiteral(PLATTMIX_SOURCE_LANGUAGES "/English.lng");
    if (!QFile::exists(english))
        FAIL() << "Languages/English.lng fehlt im Quellbaum";
    std::filesystem::copy_file(english.toStdString(), languages / "English.lng");
    ChooseLanguage("English");
    frmMain* window = StartAndFill();
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(window->Command2->text(), QStringLiteral("Cancel"));
    for (int i = 0; i < 3; ++i)
        EXPECT_NE(window->TabStrip1->tabText(i).trimmed().toStdString(),
                  std::string(i == 0   ? "CD/DVD Rippen"
                              : i == 1 ? "ISO Image erstellen"
                                       : "CD Brennen"));
}

TEST_F(Translated, MissingLanguageFileGivesTheGermanInterface) {
    ChooseLanguage("Klingonisch");
    frmMain* window = StartAndFill();
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(window->Language().LanguageName(), "default");
    EXPECT_EQ(window->Command2->text(), QStringLiteral("Abbrechen"));
    EXPECT_EQ(window->ComboBox2->count(), 8);
    EXPECT_EQ(window->ComboBox2->itemText(7), QStringLiteral("Alle Selektierten"));
}

TEST_F(Translated, EmptyListTextIsLookedUpToo) {
    WriteLanguage("Test", "Keine Disk im Laufwerk=No disc\n");
    ChooseLanguage("Test");
    frmMain* window = StartAndFill();
    ASSERT_NE(window, nullptr);
    auto* drives = dynamic_cast<scsi::imagedrive::clsImageDrive*>(window->Transport());
    ASSERT_NE(drives, nullptr);
    int16_t first = 1;
    ASSERT_TRUE(drives->RemoveMedium(drives->DriveHandle(first)));
    window->cboDrv_Click();
    EXPECT_EQ(window->ExplorerListView1->topLevelItemCount(), 0);
    EXPECT_EQ(window->ExplorerListView1->EmptyListText(), QStringLiteral("No disc"));
}
