// The window as it stands after the load: its lists and captions, and the controls each page of
// the tab strip shows.
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "TabStrip.h"
#include "TrackListView.h"
#include "WindowTestSupport.h"

using namespace plattmix::window;
using namespace plattmix::window::test;

namespace {

class LoadedWindow : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        UseImages({WriteDisc("AudioThreeTracks", root / "disc")});
        window = StartAndFill();
        ASSERT_NE(window, nullptr);
        window->show();
    }
    void ShowTab(int index) { window->TabStrip1->setCurrentIndex(index); }

    MsgBoxRecorder boxes;
    frmMain* window = nullptr;
};

QStringList Items(const QComboBox* box) {
    QStringList items;
    for (int i = 0; i < box->count(); ++i)
        items << box->itemText(i);
    return items;
}

}  // namespace

TEST_F(LoadedWindow, ListsAndCaptionsAreThoseOfTheLoad) {
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Plattmix"));
    EXPECT_EQ(Items(window->ComboBox3),
              (QStringList{"MP3 Format", "MP4 Format", "MP2 Format", "Flac Format", "AC3 Format",
                           "WMA Format", "WAV Format"}));
    EXPECT_EQ(
        Items(window->ComboBox2),
        (QStringList{"Alles", "Nichts", "Auswahl umkehren", "Gerade Tracks", "Ungerade Tracks",
                     "Unterhalb der Markierung", "Oberhalb der Markierung", "Alle Selektierten"}));

    const QStringList columns = {"Track", "Dauer", "Anfang", "Ende", "Inhalt", "Ergebnis"};
    const int widths[] = {80, 80, 100, 100, 100};  // the last one stretches with the window
    auto* header = window->ExplorerListView1->headerItem();
    ASSERT_EQ(header->columnCount(), 6);
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(header->text(i), columns[i]);
        EXPECT_EQ(header->textAlignment(i) & Qt::AlignHorizontal_Mask, Qt::AlignLeft);
        if (i < 5) {
            EXPECT_EQ(window->ExplorerListView1->columnWidth(i), widths[i]);
        }
    }
    ASSERT_EQ(window->TabStrip1->count(), 3);
    EXPECT_EQ(window->TabStrip1->tabText(0), QStringLiteral("CD/DVD Rippen      "));
    EXPECT_EQ(window->TabStrip1->tabText(1), QStringLiteral("    ISO Image erstellen  "));
    EXPECT_EQ(window->TabStrip1->tabText(2), QStringLiteral("    CD Brennen  "));

    EXPECT_EQ(window->mnuSave->text(), QStringLiteral("Starten"));
    EXPECT_EQ(window->Command2->text(), QStringLiteral("Abbrechen"));
    EXPECT_EQ(window->Command10->toolTip(),
              QStringLiteral("Fügt eine oder mehrer Datei(en) zur Zusammenstellung hinzu"));
    EXPECT_EQ(window->OptNameCounter[1]->text(), QStringLiteral("Laufende Nummer"));
    EXPECT_EQ(window->OptNameCounter[0]->text(), QStringLiteral("Tracknummer"));
    EXPECT_EQ(window->Label3->text(),
              QStringLiteral("Sehr zeitintensiver Vorgang, bitte unbedingt warten..."));
}

TEST_F(LoadedWindow, EachPageShowsItsOwnControls) {
    // Per page (ripping, image, burning): '+' shown, '.' hidden, '?' either.
    const std::pair<QWidget*, const char*> controls[] = {
        {window->cboDrv, "+.+"},         {window->Command1, "+.+"},
        {window->Command4, "+.+"},       {window->Command5[0], "+.."},
        {window->Command6, "+.."},       {window->ComboBox3, "+.."},
        {window->Frame1, "+.."},         {window->Text1, "++."},
        {window->Check2, "+.."},         {window->ComboBox2, "++."},
        {window->Label1, "+?."},         {window->Label2[1], "++."},
        {window->Label4, "+.+"},         {window->Text2, ".+."},
        {window->Command7, ".+."},       {window->OptFormat, ".+."},
        {window->Text3, "..+"},          {window->Frame2, "..+"},
        {window->Command15[0], ".+."},   {window->Command15[1], ".+?"},
        {window->Check3, ".?+"},         {window->Check4, ".?+"},
        {window->Check5, "..+"},         {window->OptNameBurn[0], ".?+"},
        {window->OptNameBurn[1], "??+"}, {window->Command11, "??+"},
        {window->Command14, "??+"},      {window->Label2[0], "??."},
        {window->Command13, "??."},      {window->CheckMusicBrainz, "+.."},
        {window->CheckSecure, "+.."},
    };
    const char* const extensions[] = {"+ .mp3", "+ .iso", nullptr};
    const char* const placeholders[] = {"Bitte Zielpfad auswählen --->",
                                        "Bitte Zielpfad auswählen --->",
                                        "Bitte ISO Datei auswählen --->"};
    // The way back to the ripping page must bring its controls back too.
    for (const int page : {kPageRip, kPageIso, kPageBurn, kPageRip}) {
        ShowTab(page);
        for (size_t i = 0; i < std::size(controls); ++i) {
            const char want = controls[i].second[page];
            if (want != '?') {
                EXPECT_EQ(controls[i].first->isVisible(), want == '+')
                    << "page " << page << ", control #" << i;
            }
        }
        if (extensions[page] != nullptr) {
            EXPECT_EQ(window->Label2[1]->text(), QString::fromUtf8(extensions[page]));
        }
        EXPECT_EQ(window->ComboBox1->lineEdit()->placeholderText(),
                  QString::fromUtf8(placeholders[page]));
        if (page == kPageIso) {
            EXPECT_TRUE(window->OptFormat->isChecked());
            EXPECT_EQ(window->ExplorerListView1->topLevelItem(0)->checkState(0), Qt::Checked);
            EXPECT_TRUE(window->Timer2->isActive());  // every page change refreshes
        }
    }
    EXPECT_TRUE(boxes.boxes.empty());  // nothing unsaved on the burning page
}

TEST_F(LoadedWindow, BurnModeAndMultisessionDecideTheBurningControls) {
    ShowTab(kPageBurn);
    EXPECT_FALSE(window->cmdOpen->isEnabled());
    window->OptNameBurn[1]->click();  // an ISO file
    EXPECT_TRUE(window->cmdOpen->isEnabled());
    EXPECT_FALSE(window->Check3->isVisible());
    EXPECT_FALSE(window->Check4->isVisible());
    EXPECT_FALSE(window->Command11->isVisible());
    EXPECT_TRUE(window->ComboBox1->currentText().isEmpty());
    window->OptNameBurn[0]->click();
    EXPECT_FALSE(window->cmdOpen->isEnabled());
    EXPECT_TRUE(window->Check3->isVisible());
    EXPECT_TRUE(window->Command11->isVisible());

    // Without multisession the disc is always closed.
    for (bool multisession : {false, true, false}) {
        EXPECT_EQ(window->Check4->isChecked(), !multisession);
        EXPECT_EQ(window->Check4->isEnabled(), multisession);
        window->Check3->click();
    }
}

TEST_F(LoadedWindow, LeavingTheBurningPageWithUnsavedChangesAsks) {
    ShowTab(kPageBurn);
    window->Command13->show();  // the compilation has changed
    ShowTab(kPageRip);
    ASSERT_EQ(boxes.boxes.size(), 1u);
    EXPECT_EQ(boxes.boxes[0].text,
              QStringLiteral("Wollen sie die Zusammenstellung vorher noch speichern?"));
    EXPECT_EQ(boxes.boxes[0].style, MsgBoxStyle::QuestionYesNo);
}

TEST_F(LoadedWindow, OutputFormatSetsTheExtensionHint) {
    const std::pair<int, const char*> formats[] = {{3, "+ .flac"}, {6, "+ .wav"}, {0, "+ .mp3"}};
    for (const auto& [index, hint] : formats) {
        window->ComboBox3->setCurrentIndex(index);
        EXPECT_EQ(window->Label2[1]->text(), QString::fromUtf8(hint));
    }
}
