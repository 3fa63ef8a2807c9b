// The window as it stands after the load: its lists, captions and timers, and the pages that
// the tab strip shows.
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
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

}  // namespace

TEST_F(LoadedWindow, ListsAndCaptionsAreThoseOfTheLoad) {
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Plattmix"));
    const QStringList formats = {"MP3 Format", "MP4 Format", "MP2 Format", "Flac Format",
                                 "AC3 Format", "WMA Format", "WAV Format"};
    ASSERT_EQ(window->ComboBox3->count(), formats.size());
    for (int i = 0; i < formats.size(); ++i)
        EXPECT_EQ(window->ComboBox3->itemText(i), formats[i]);
    EXPECT_EQ(window->ComboBox3->currentIndex(), 0);

    const QStringList columns = {"Track", "Dauer", "Anfang", "Ende", "Inhalt", "Ergebnis"};
    const int widths[] = {80, 80, 100, 100, 100, 200};
    auto* header = window->ExplorerListView1->headerItem();
    ASSERT_EQ(header->columnCount(), 6);
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(header->text(i), columns[i]);
        EXPECT_EQ(header->textAlignment(i) & Qt::AlignHorizontal_Mask, Qt::AlignLeft);
        if (i < 5) {  // the last one stretches with the window
            EXPECT_EQ(window->ExplorerListView1->columnWidth(i), widths[i]);
        }
    }

    ASSERT_EQ(window->TabStrip1->count(), 3);
    EXPECT_EQ(window->TabStrip1->tabText(0), QStringLiteral("CD/DVD Rippen      "));
    EXPECT_EQ(window->TabStrip1->tabText(1), QStringLiteral("    ISO Image erstellen  "));
    EXPECT_EQ(window->TabStrip1->tabText(2), QStringLiteral("    CD Brennen  "));

    const QStringList commands = {"Alles",
                                  "Nichts",
                                  "Auswahl umkehren",
                                  "Gerade Tracks",
                                  "Ungerade Tracks",
                                  "Unterhalb der Markierung",
                                  "Oberhalb der Markierung",
                                  "Alle Selektierten"};
    ASSERT_EQ(window->ComboBox2->count(), commands.size());
    for (int i = 0; i < commands.size(); ++i)
        EXPECT_EQ(window->ComboBox2->itemText(i), commands[i]);

    EXPECT_EQ(window->mnuSave->text(), QStringLiteral("Starten"));
    EXPECT_EQ(window->Command2->text(), QStringLiteral("Abbrechen"));
    EXPECT_EQ(window->Command10->toolTip(),
              QStringLiteral("Fügt eine oder mehrer Datei(en) zur Zusammenstellung hinzu"));
    EXPECT_EQ(window->OptNameCounter[1]->text(), QStringLiteral("Laufende Nummer"));
    EXPECT_EQ(window->OptNameCounter[0]->text(), QStringLiteral("Tracknummer"));
    EXPECT_EQ(window->Label3->text(),
              QStringLiteral("Sehr zeitintensiver Vorgang, bitte unbedingt warten..."));
}

TEST_F(LoadedWindow, TimersAreSetAsTheWindowNeedsThem) {
    EXPECT_TRUE(window->Timer1->isSingleShot());
    EXPECT_EQ(window->Timer2->interval(), 300);
    EXPECT_TRUE(window->Timer2->isSingleShot());
    EXPECT_FALSE(window->Timer2->isActive());
    EXPECT_EQ(window->Timer6->interval(), 1000);
    EXPECT_FALSE(window->Timer6->isActive());
}

TEST_F(LoadedWindow, RippingPageShowsTheAudioControls) {
    for (QWidget* shown : std::initializer_list<QWidget*>{
             window->cboDrv, window->Command1, window->Command4, window->Command5[0],
             window->Command6, window->ComboBox3, window->Frame1, window->Text1, window->Check2,
             window->ComboBox2, window->Label1, window->Label2[1], window->Label4})
        EXPECT_TRUE(shown->isVisible()) << shown->metaObject()->className();
    for (QWidget* hidden : std::initializer_list<QWidget*>{
             window->Text2, window->Command7, window->OptFormat, window->Text3, window->Frame2,
             window->Command15[0], window->Command15[1], window->Check3, window->Check4,
             window->Check5})
        EXPECT_FALSE(hidden->isVisible());
    EXPECT_EQ(window->Label2[1]->text(), QStringLiteral("+ .mp3"));
    EXPECT_EQ(window->ComboBox1->lineEdit()->placeholderText(),
              QStringLiteral("Bitte Zielpfad auswählen --->"));
}

TEST_F(LoadedWindow, IsoPageShowsTheSourceFolderAndTheImageFormat) {
    ShowTab(kPageIso);
    for (QWidget* shown : std::initializer_list<QWidget*>{
             window->Text2, window->Command7, window->OptFormat, window->Text1, window->ComboBox2,
             window->Command15[0], window->Command15[1], window->Label2[1]})
        EXPECT_TRUE(shown->isVisible());
    for (QWidget* hidden : std::initializer_list<QWidget*>{
             window->cboDrv, window->Command1, window->Command4, window->Command5[0],
             window->Command6, window->ComboBox3, window->Frame1, window->Check2, window->Text3,
             window->Frame2, window->Check5, window->Label4})
        EXPECT_FALSE(hidden->isVisible());
    EXPECT_TRUE(window->OptFormat->isChecked());
    EXPECT_EQ(window->Label2[1]->text(), QStringLiteral("+ .iso"));
    EXPECT_EQ(window->ExplorerListView1->topLevelItem(0)->checkState(0), Qt::Checked);
    EXPECT_TRUE(window->Timer2->isActive());  // every page change refreshes
}

TEST_F(LoadedWindow, BurningPageShowsTheCompilationAndFollowsTheBurnMode) {
    ShowTab(kPageBurn);
    for (QWidget* shown : std::initializer_list<QWidget*>{
             window->cboDrv, window->Command1, window->Command4, window->Text3, window->Frame2,
             window->Check3, window->Check4, window->Check5, window->Label4, window->OptNameBurn[0],
             window->OptNameBurn[1], window->Command11, window->Command14})
        EXPECT_TRUE(shown->isVisible());
    for (QWidget* hidden : std::initializer_list<QWidget*>{
             window->Command5[0], window->Command6, window->Text2, window->Command7,
             window->ComboBox3, window->OptFormat, window->Frame1, window->Text1, window->Check2,
             window->ComboBox2, window->Label1, window->Label2[0], window->Label2[1],
             window->Command15[0], window->Command13})
        EXPECT_FALSE(hidden->isVisible());
    EXPECT_FALSE(window->cmdOpen->isEnabled());
    EXPECT_EQ(window->ComboBox1->lineEdit()->placeholderText(),
              QStringLiteral("Bitte ISO Datei auswählen --->"));

    window->OptNameBurn[1]->click();
    EXPECT_TRUE(window->cmdOpen->isEnabled());
    EXPECT_FALSE(window->Check3->isVisible());
    EXPECT_FALSE(window->Check4->isVisible());
    EXPECT_FALSE(window->Command11->isVisible());
    EXPECT_TRUE(window->ComboBox1->currentText().isEmpty());
    window->OptNameBurn[0]->click();
    EXPECT_FALSE(window->cmdOpen->isEnabled());
    EXPECT_TRUE(window->Check3->isVisible());
    EXPECT_TRUE(window->Command11->isVisible());
}

TEST_F(LoadedWindow, BackToRippingPageRestoresItsControls) {
    ShowTab(kPageBurn);
    ShowTab(kPageRip);
    EXPECT_TRUE(window->Command5[0]->isVisible());
    EXPECT_TRUE(window->Frame1->isVisible());
    EXPECT_FALSE(window->Frame2->isVisible());
    EXPECT_FALSE(window->OptNameBurn[0]->isVisible());
    EXPECT_TRUE(boxes.boxes.empty());  // nothing unsaved on the burning page
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

TEST_F(LoadedWindow, MultisessionDecidesWhetherTheDiscIsClosed) {
    ShowTab(kPageBurn);
    EXPECT_TRUE(window->Check4->isChecked());
    EXPECT_FALSE(window->Check4->isEnabled());
    window->Check3->click();
    EXPECT_TRUE(window->Check4->isEnabled());
    EXPECT_FALSE(window->Check4->isChecked());
    window->Check3->click();
    EXPECT_TRUE(window->Check4->isChecked());
    EXPECT_FALSE(window->Check4->isEnabled());
}

TEST_F(LoadedWindow, OutputFormatSetsTheExtensionHint) {
    window->ComboBox3->setCurrentIndex(3);
    EXPECT_EQ(window->Label2[1]->text(), QStringLiteral("+ .flac"));
    window->ComboBox3->setCurrentIndex(6);
    EXPECT_EQ(window->Label2[1]->text(), QStringLiteral("+ .wav"));
}

TEST_F(LoadedWindow, RefreshTickResetsTheProgress) {
    window->ProgressBar1->setValue(40);
    window->PictureNewValue->show();
    window->Command1->click();
    QEventLoop loop;
    QObject::connect(window->Timer2, &QTimer::timeout, &loop, &QEventLoop::quit,
                     Qt::QueuedConnection);
    loop.exec();
    EXPECT_EQ(window->ProgressBar1->value(), 0);
    EXPECT_TRUE(window->PictureNewValue->isHidden());
}
