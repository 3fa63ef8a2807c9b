// What a person does with the window: F9, closing during a job, the target folder dialog and
// the selection commands of the track list.
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>

#include "KeyState.h"
#include "TrackListView.h"
#include "WindowTestSupport.h"
#include "modPaths.h"

using namespace plattmix;
using namespace plattmix::window;
using namespace plattmix::window::test;

namespace {

class Person : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        // Five short tracks make the selection rules visible.
        UseImages({WriteDisc("TinyTracks", root / "disc")});
        window = StartAndFill();
        ASSERT_NE(window, nullptr);
        window->show();
    }

    void ReleaseKey(QWidget* target, int key) {
        QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier);
        QApplication::sendEvent(target, &release);
    }
    void PressKey(QWidget* target, int key) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QApplication::sendEvent(target, &press);
    }

    std::vector<bool> Checked() const {
        std::vector<bool> checked;
        for (int i = 0; i < window->ExplorerListView1->topLevelItemCount(); ++i)
            checked.push_back(window->ExplorerListView1->topLevelItem(i)->checkState(0) ==
                              Qt::Checked);
        return checked;
    }
    void Choose(int command) { window->ComboBox2->activated(command); }

    MsgBoxRecorder boxes;
    DialogScript dialogs;
    frmMain* window = nullptr;
};

}  // namespace

TEST_F(Person, F9ClosesTheIdleWindow) {
    ReleaseKey(window->Text1, Qt::Key_F9);
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(ReadSettingsValue(SettingsFile(), "Diskolo", "Text1"), "Track");
}

TEST_F(Person, F9PressedAloneDoesNothing) {
    PressKey(window->Text1, Qt::Key_F9);
    ReleaseKey(window->Text1, Qt::Key_F8);
    EXPECT_TRUE(window->isVisible());
}

TEST_F(Person, F9AndAbbrechenStopTheRunningJob) {
    window->isBusy = true;
    ReleaseKey(window->ExplorerListView1, Qt::Key_F9);
    EXPECT_TRUE(window->Abbort);
    EXPECT_TRUE(window->isVisible());
    window->Abbort = false;
    window->Command2->click();
    EXPECT_TRUE(window->Abbort);
    EXPECT_TRUE(window->isVisible());
}

TEST_F(Person, CloseDuringAJobStopsItAndTheSecondCloseEnds) {
    window->isBusy = true;
    EXPECT_FALSE(window->close());
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(window->Abbort);
    EXPECT_FALSE(window->isBusy);
    // Nothing was saved by the refused close.
    EXPECT_EQ(ReadSettingsValue(SettingsFile(), "Diskolo", "Unload"), "<fehlt>");
    EXPECT_TRUE(window->close());
    EXPECT_EQ(ReadSettingsValue(SettingsFile(), "Diskolo", "Unload"), "0");
}

TEST_F(Person, EscapeIsSeenByTheJobsWhileHeld) {
    const auto escape = EscapeHook();
    EXPECT_FALSE(escape());
    PressKey(window->ExplorerListView1, Qt::Key_Escape);
    EXPECT_TRUE(escape());
    ReleaseKey(window->ExplorerListView1, Qt::Key_Escape);
    EXPECT_FALSE(escape());
}

TEST_F(Person, ChosenTargetFolderBecomesTheTextAndARecentFolder) {
    dialogs.answers.push_back({QString::fromStdString((root / "Musik").string())});
    window->cmdOpen->click();
    ASSERT_EQ(dialogs.requests.size(), 1u);
    EXPECT_EQ(dialogs.requests[0].kind, DialogKind::Folder);
    EXPECT_EQ(dialogs.requests[0].title,
              QStringLiteral("Ziel-Ordner auswählen, in dem gespeichert werden sollen"));
    const QString expected = QString::fromStdString((root / "Musik").string() + "/");
    EXPECT_EQ(window->ComboBox1->currentText(), expected);
    const auto saved = shell::ReadIniSection(SettingsFile().string(), "ComboBox1");
    ASSERT_EQ(saved.size(), 1u);
    EXPECT_EQ(QString::fromStdString(saved[0]), expected);
}

TEST_F(Person, CancelledFolderDialogChangesNothing) {
    window->cmdOpen->click();
    EXPECT_TRUE(window->ComboBox1->currentText().isEmpty());
    EXPECT_EQ(window->ComboBox1->count(), 0);
}

TEST_F(Person, ThirteenFoldersKeepTheTwelveNewest) {
    for (int i = 1; i <= 13; ++i) {
        dialogs.answers.push_back(
            {QString::fromStdString((root / ("Ordner" + std::to_string(i))).string())});
        window->cmdOpen->click();
    }
    const auto saved = shell::ReadIniSection(SettingsFile().string(), "ComboBox1");
    ASSERT_EQ(saved.size(), 12u);
    QStringList entries;
    for (int i = 0; i < window->ComboBox1->count(); ++i)
        entries << window->ComboBox1->itemText(i);
    EXPECT_EQ(entries.size(), 12);
    const QString oldest = QString::fromStdString((root / "Ordner1").string() + "/");
    EXPECT_FALSE(entries.contains(oldest));
    EXPECT_TRUE(entries.contains(QString::fromStdString((root / "Ordner13").string() + "/")));
    // The next start offers the same folders.
    window->close();
    startup.reset();
    frmMain* again = Start();
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(again->ComboBox1->count(), 12);
    EXPECT_EQ(again->ComboBox1->findText(oldest), -1);
}

TEST_F(Person, FolderDifferingOnlyInCaseIsNotAddedTwice) {
    const std::string folder = (root / "Musik").string();
    dialogs.answers.push_back({QString::fromStdString(folder)});
    dialogs.answers.push_back({QString::fromStdString(folder).toUpper()});
    window->cmdOpen->click();
    window->cmdOpen->click();
    EXPECT_EQ(window->ComboBox1->count(), 1);
}

TEST_F(Person, SelectionCommandsCheckTheRowsTheyName) {
    const int rows = window->ExplorerListView1->topLevelItemCount();
    ASSERT_EQ(rows, 4);
    Choose(0);  // Alles
    EXPECT_EQ(Checked(), std::vector<bool>({true, true, true, true}));
    Choose(1);  // Nichts
    EXPECT_EQ(Checked(), std::vector<bool>({false, false, false, false}));
    Choose(3);  // Gerade Tracks
    EXPECT_EQ(Checked(), std::vector<bool>({false, true, false, true}));
    Choose(2);  // Auswahl umkehren
    EXPECT_EQ(Checked(), std::vector<bool>({true, false, true, false}));
    Choose(1);
    Choose(4);  // Ungerade Tracks
    EXPECT_EQ(Checked(), std::vector<bool>({true, false, true, false}));
}

TEST_F(Person, MarkedRowBoundsTheBelowAndAboveCommands) {
    Choose(1);
    window->ExplorerListView1->setCurrentItem(window->ExplorerListView1->topLevelItem(2));
    Choose(5);  // Unterhalb der Markierung
    EXPECT_EQ(Checked(), std::vector<bool>({false, false, true, true}));
    Choose(1);
    window->ExplorerListView1->setCurrentItem(window->ExplorerListView1->topLevelItem(1));
    Choose(6);  // Oberhalb der Markierung
    EXPECT_EQ(Checked(), std::vector<bool>({true, true, false, false}));
}

TEST_F(Person, AlleSelektiertenChecksTheSelectedRowsOnly) {
    Choose(1);
    window->ExplorerListView1->clearSelection();
    window->ExplorerListView1->topLevelItem(0)->setSelected(true);
    window->ExplorerListView1->topLevelItem(3)->setSelected(true);
    Choose(7);
    EXPECT_EQ(Checked(), std::vector<bool>({true, false, false, true}));
}
