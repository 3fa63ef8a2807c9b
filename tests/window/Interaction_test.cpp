// What a person does with the window: F9, closing during a job, the target folder dialog and
// the selection commands of the track list.
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <functional>

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

TEST_F(Person, F9ClosesTheIdleWindowOnRelease) {
    PressKey(window->Text1, Qt::Key_F9);
    ReleaseKey(window->Text1, Qt::Key_F8);
    EXPECT_TRUE(window->isVisible());
    ReleaseKey(window->Text1, Qt::Key_F9);
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(ReadSettingsValue(SettingsFile(), "Diskolo", "Text1"), "Track");
}

TEST_F(Person, F9AbbrechenAndCloseStopTheRunningJob) {
    const std::function<void()> stops[] = {
        [&] { ReleaseKey(window->ExplorerListView1, Qt::Key_F9); },
        [&] { window->Command2->click(); },
        [&] { EXPECT_FALSE(window->close()); },
    };
    for (const auto& stop : stops) {
        window->isBusy = true;
        window->Abbort = false;
        stop();
        EXPECT_TRUE(window->Abbort);
        EXPECT_TRUE(window->isVisible());
    }
    // The refused close ended the job and saved nothing; the second close ends the program.
    EXPECT_FALSE(window->isBusy);
    EXPECT_EQ(ReadSettingsValue(SettingsFile(), "Diskolo", "Unload"), "<fehlt>");
    EXPECT_TRUE(window->close());
    EXPECT_EQ(ReadSettingsValue(SettingsFile(), "Diskolo", "Unload"), "0");
}

TEST_F(Person, EscapeIsSeenByTheJobsWhileHeldOrOnceWhenTappedBetweenTwoLooks) {
    PressKey(window->ExplorerListView1, Qt::Key_Escape);  // before the job: not its business
    ReleaseKey(window->ExplorerListView1, Qt::Key_Escape);
    const auto escape = EscapeHook();
    EXPECT_FALSE(escape());
    PressKey(window->ExplorerListView1, Qt::Key_Escape);
    EXPECT_TRUE(escape());
    EXPECT_TRUE(escape());
    ReleaseKey(window->ExplorerListView1, Qt::Key_Escape);
    EXPECT_FALSE(escape());
    PressKey(window->ExplorerListView1, Qt::Key_Escape);
    ReleaseKey(window->ExplorerListView1, Qt::Key_Escape);
    EXPECT_TRUE(escape());
    EXPECT_FALSE(escape());
}

TEST_F(Person, ChosenTargetFolderBecomesTheTextAndARecentFolder) {
    window->cmdOpen->click();  // cancelled: nothing changes
    EXPECT_TRUE(window->ComboBox1->currentText().isEmpty());
    EXPECT_EQ(window->ComboBox1->count(), 0);

    const QString folder = QString::fromStdString((root / "Musik").string());
    dialogs.answers.push_back({folder});
    window->cmdOpen->click();
    ASSERT_EQ(dialogs.requests.size(), 2u);
    EXPECT_EQ(dialogs.requests[1].kind, DialogKind::Folder);
    EXPECT_EQ(dialogs.requests[1].title,
              QStringLiteral("Ziel-Ordner auswählen, in dem gespeichert werden sollen"));
    EXPECT_EQ(window->ComboBox1->currentText(), folder + "/");
    dialogs.answers.push_back({folder.toUpper()});  // differs only in case: not added again
    window->cmdOpen->click();
    EXPECT_EQ(window->ComboBox1->count(), 1);
    EXPECT_EQ(shell::ReadIniSection(SettingsFile().string(), "ComboBox1"),
              std::vector<std::string>{folder.toStdString() + "/"});
}

TEST_F(Person, ThirteenFoldersKeepTheTwelveNewest) {
    for (int i = 1; i <= 13; ++i) {
        dialogs.answers.push_back(
            {QString::fromStdString((root / ("Ordner" + std::to_string(i))).string())});
        window->cmdOpen->click();
    }
    EXPECT_EQ(shell::ReadIniSection(SettingsFile().string(), "ComboBox1").size(), 12u);
    const QString oldest = QString::fromStdString((root / "Ordner1").string() + "/");
    const QString newest = QString::fromStdString((root / "Ordner13").string() + "/");
    EXPECT_EQ(window->ComboBox1->count(), 12);
    EXPECT_EQ(window->ComboBox1->findText(oldest), -1);
    EXPECT_NE(window->ComboBox1->findText(newest), -1);
    // The next start offers the same folders.
    window->close();
    startup.reset();
    frmMain* again = Start();
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(again->ComboBox1->count(), 12);
    EXPECT_EQ(again->ComboBox1->findText(oldest), -1);
}

TEST_F(Person, SelectionCommandsCheckTheRowsTheyName) {
    ASSERT_EQ(window->ExplorerListView1->topLevelItemCount(), 4);
    using Rows = std::vector<bool>;
    const struct {
        int command;
        int marked;  // the current row, -1 for none
        std::vector<int> selected;
        bool fromNothing;  // "Nichts" first
        Rows checked;
    } cases[] = {
        {0, -1, {}, true, {true, true, true, true}},        // Alles
        {1, -1, {}, false, {false, false, false, false}},   // Nichts
        {3, -1, {}, true, {false, true, false, true}},      // Gerade Tracks
        {2, -1, {}, false, {true, false, true, false}},     // Auswahl umkehren
        {4, -1, {}, true, {true, false, true, false}},      // Ungerade Tracks
        {5, 2, {}, true, {false, false, true, true}},       // Unterhalb der Markierung
        {6, 1, {}, true, {true, true, false, false}},       // Oberhalb der Markierung
        {7, -1, {0, 3}, true, {true, false, false, true}},  // Alle Selektierten
    };
    auto* list = window->ExplorerListView1;
    for (const auto& c : cases) {
        if (c.fromNothing)
            Choose(1);
        if (c.marked >= 0)
            list->setCurrentItem(list->topLevelItem(c.marked));
        if (!c.selected.empty()) {
            list->clearSelection();
            for (int row : c.selected)
                list->topLevelItem(row)->setSelected(true);
        }
        Choose(c.command);
        EXPECT_EQ(Checked(), c.checked) << "command " << c.command;
    }
}
