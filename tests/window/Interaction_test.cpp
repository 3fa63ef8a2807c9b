// What a person does with the window: F9, Escape, the target folder dialog and the selection
// commands of the track list. Stopping a running job is tested with a real rip.
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QPushButton>

#include "TrackListView.h"
#include "WindowTestSupport.h"

using namespace plattmix;
using namespace plattmix::window;
using namespace plattmix::window::test;

namespace {

class Person : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        window = StartShownWith("TinyTracks");  // four short tracks
        ASSERT_NE(window, nullptr);
    }
    void Key(QEvent::Type type, int key) {
        QKeyEvent event(type, key, Qt::NoModifier);
        QApplication::sendEvent(window->ExplorerListView1, &event);
    }
    // The rows' check marks, 'x' for checked.
    std::string Checked() const {
        std::string checked;
        for (int i = 0; i < window->ExplorerListView1->topLevelItemCount(); ++i)
            checked += window->ExplorerListView1->topLevelItem(i)->checkState(0) == Qt::Checked
                           ? 'x'
                           : '.';
        return checked;
    }

    frmMain* window = nullptr;
};

}  // namespace

TEST_F(Person, F9ClosesTheIdleWindowOnRelease) {
    Key(QEvent::KeyPress, Qt::Key_F9);
    Key(QEvent::KeyRelease, Qt::Key_F8);
    EXPECT_TRUE(window->isVisible());
    Key(QEvent::KeyRelease, Qt::Key_F9);
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(ReadSettingsValue(SettingsFile(), "Diskolo", "Text1"), "Track");
}

TEST_F(Person, ChosenTargetFolderBecomesTheTextAndARecentFolder) {
    window->cmdOpen->click();  // cancelled: nothing changes
    EXPECT_EQ(window->ComboBox1->count(), 0);
    const QString folder = QString::fromStdString((root / "Musik").string());
    dialogs.answers.push_back({folder});
    window->cmdOpen->click();
    EXPECT_EQ(dialogs.requests.back().kind, DialogKind::Folder);
    EXPECT_EQ(dialogs.requests.back().title,
              QStringLiteral("Ziel-Ordner auswählen, in dem gespeichert werden sollen"));
    EXPECT_EQ(window->ComboBox1->currentText(), folder + "/");
    EXPECT_EQ(window->ComboBox1->count(), 1);
    EXPECT_EQ(shell::ReadIniSection(SettingsFile().string(), "ComboBox1"),
              std::vector<std::string>{folder.toStdString() + "/"});
}

TEST_F(Person, SelectionCommandsCheckTheRowsTheyName) {
    const struct {
        int command;
        int marked;  // the current row, -1 for none
        std::vector<int> selected;
        bool fromNothing;  // "Nichts" first
        const char* checked;
    } cases[] = {
        {0, -1, {}, true, "xxxx"},      // Alles
        {1, -1, {}, false, "...."},     // Nichts
        {3, -1, {}, true, ".x.x"},      // Gerade Tracks
        {2, -1, {}, false, "x.x."},     // Auswahl umkehren
        {4, -1, {}, true, "x.x."},      // Ungerade Tracks
        {5, 2, {}, true, "..xx"},       // Unterhalb der Markierung
        {6, 1, {}, true, "xx.."},       // Oberhalb der Markierung
        {7, -1, {0, 3}, true, "x..x"},  // Alle Selektierten
    };
    auto* list = window->ExplorerListView1;
    for (const auto& c : cases) {
        if (c.fromNothing)
            window->ComboBox2->activated(1);
        if (c.marked >= 0)
            list->setCurrentItem(list->topLevelItem(c.marked));
        if (!c.selected.empty()) {
            list->clearSelection();
            for (int row : c.selected)
                list->topLevelItem(row)->setSelected(true);
        }
        window->ComboBox2->activated(c.command);
        EXPECT_EQ(Checked(), c.checked) << "command " << c.command;
    }
}
