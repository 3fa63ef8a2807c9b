// From start to end: the settings file, a second copy, no transport, the disc images, the drive
// list after the load and the track list of the chosen drive, the two settings the window keeps.
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QLockFile>
#include <fstream>

#include "TrackListView.h"
#include "WindowTestSupport.h"

using namespace plattmix;
using namespace plattmix::window;
using namespace plattmix::window::test;

TEST_F(WindowTest, FirstStartCreatesTheSettingsFileAndTheSettingsComeBackAtTheNextStart) {
    // The very first start: the settings file is created with just the mark before anything
    // reads it; the start ends, as no drive and no image is there yet, and saves nothing.
    const std::string disc = WriteDisc("AudioThreeTracks", root / "disc");
    ASSERT_EQ(Start(), nullptr);
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text, QStringLiteral("Kein funktionierendes Interface gefunden!\r\n"
                                            "Programm kann nicht verwendet werden."));
    EXPECT_EQ(boxes[0].style, MsgBoxStyle::Exclamation);
    EXPECT_EQ(Setting("Unload"), "<fehlt>");
    EXPECT_EQ(std::filesystem::file_size(SettingsFile()), 2u);  // the mark
    startup.reset();

    UseImages({disc});
    frmMain* window = StartShown();
    ASSERT_NE(window, nullptr);
    EXPECT_FALSE(window->Check1->isChecked());
    EXPECT_TRUE(window->Text1->text().isEmpty());
    window->close();
    EXPECT_EQ(Setting("Unload"), "0");
    EXPECT_EQ(Setting("Text1"), "Track");
    EXPECT_EQ(Setting("Pruefen"), "<fehlt>");
    startup.reset();

    window = StartShown();
    ASSERT_NE(window, nullptr);
    window->Check1->setChecked(true);
    window->Text1->setText(QStringLiteral("Lied"));
    window->close();
    startup.reset();
    window = Start();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->Check1->isChecked());
    EXPECT_EQ(window->Text1->text(), QStringLiteral("Lied"));
}

TEST_F(WindowTest, SecondCopyIsRefusedAndCreatesNothing) {
    QLockFile first(QString::fromStdString((root / "plattmix.lock").string()));
    ASSERT_TRUE(first.tryLock(0));
    EXPECT_EQ(Start(), nullptr);
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text,
              QStringLiteral(
                  "Diese Anwendung ist bereits geladen und kann nur einmal gestartet werden!"));
    EXPECT_EQ(boxes[0].title, QStringLiteral("Plattmix"));
    EXPECT_FALSE(std::filesystem::exists(appData / "Trovalis"));
}

// Images that cannot be loaded are named in one box at the start, a drive that fails its INQUIRY
// is named by its number after the load; both are left out of the drive list.
TEST_F(WindowTest, DriveListLeavesOutWhatFailsAndTheChosenDriveIsRead) {
    const std::string first = WriteDisc("AudioThreeTracks", root / "a");
    const std::string missing = (root / "fehlt.cue").string();
    const std::string broken = (root / "kaputt.cue").string();
    std::ofstream(broken) << "FILE \"nichts.bin\" BINARY\n  TRACK 01 AUDIO\n";
    UseImages({first, missing, WriteDisc("MultiFile", root / "b"), broken,
               WriteDisc("TinyTracks", root / "c")});
    frmMain* window = Start();
    ASSERT_NE(window, nullptr);
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_TRUE(boxes[0].text.contains(QString::fromStdString(missing)));
    EXPECT_TRUE(boxes[0].text.contains(QString::fromStdString(broken)))
        << boxes[0].text.toStdString();
    EXPECT_FALSE(boxes[0].text.contains(QString::fromStdString(first)));
    // Nothing is read during the load itself.
    EXPECT_TRUE(window->isLoading);
    EXPECT_EQ(window->cboDrv->count(), 0);
    int16_t second = 2;
    auto& drives = ImageDriveOf(*window);
    ASSERT_TRUE(drives.TimeOutNextCommands(drives.DriveHandle(second), 1));
    WaitForDriveList(*window);

    ASSERT_EQ(boxes.size(), 2u);
    EXPECT_EQ(boxes[1].text, QStringLiteral("INQUIRY für Laufwerk 2 gescheitert."));
    EXPECT_EQ(boxes[1].style, MsgBoxStyle::Exclamation);
    ASSERT_EQ(window->cboDrv->count(), 2);
    EXPECT_TRUE(window->cboDrv->itemText(0).startsWith(QString::fromStdString(first) + ":  "));
    EXPECT_EQ(window->cboDrv->itemData(1).toInt(), 3);
    EXPECT_EQ(window->cboDrv->currentIndex(), 0);
    auto* list = window->ExplorerListView1;
    ASSERT_EQ(list->topLevelItemCount(), 3);
    const QTreeWidgetItem* row = list->topLevelItem(0);
    EXPECT_EQ(row->text(2), QStringLiteral("00:02:00"));
    EXPECT_EQ(row->text(4), QStringLiteral("Audio"));
    EXPECT_EQ(row->checkState(0), Qt::Unchecked);
    EXPECT_EQ(list->topLevelItem(1)->text(2), row->text(3));  // one ends where the next starts
    EXPECT_FALSE(window->IsDataCD);

    // Choosing the other drive reads its tracks.
    window->cboDrv->setCurrentIndex(1);
    EXPECT_EQ(list->topLevelItemCount(), 4);
}
