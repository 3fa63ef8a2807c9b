// The drive list after the load, the track list of the chosen drive, a drive that does not
// answer and a data disc.
#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>

#include "TrackListView.h"
#include "WindowTestSupport.h"

using namespace plattmix;
using namespace plattmix::window;
using namespace plattmix::window::test;

TEST_F(WindowTest, DriveListIsFilledAfterTheLoadAndTheChosenDriveIsRead) {
    const std::string first = WriteDisc("AudioThreeTracks", root / "a");
    const std::string second = WriteDisc("TinyTracks", root / "b");
    UseImages({first, second});
    frmMain* window = Start();
    ASSERT_NE(window, nullptr);
    // Nothing is read during the load itself.
    EXPECT_TRUE(window->isLoading);
    EXPECT_EQ(window->cboDrv->count(), 0);
    WaitForDriveList(*window);

    ASSERT_EQ(window->cboDrv->count(), 2);
    EXPECT_TRUE(window->cboDrv->itemText(0).startsWith(QString::fromStdString(first) + ":  "));
    EXPECT_EQ(window->cboDrv->itemData(1).toInt(), 2);
    EXPECT_EQ(window->cboDrv->currentIndex(), 0);
    auto* list = window->ExplorerListView1;
    ASSERT_EQ(list->topLevelItemCount(), 3);
    const QTreeWidgetItem* row = list->topLevelItem(0);
    EXPECT_EQ(row->text(0), QStringLiteral("1"));
    EXPECT_EQ(row->text(2), QStringLiteral("00:02:00"));
    EXPECT_EQ(row->text(4), QStringLiteral("Audio"));
    EXPECT_EQ(row->checkState(0), Qt::Unchecked);
    EXPECT_EQ(list->topLevelItem(1)->text(2), row->text(3));  // one ends where the next starts
    EXPECT_FALSE(window->IsDataCD);
    EXPECT_TRUE(boxes.boxes.empty());

    // Choosing the other drive reads its tracks.
    window->cboDrv->setCurrentIndex(1);
    EXPECT_EQ(list->topLevelItemCount(), 4);
}

TEST_F(WindowTest, DriveThatFailsInquiryIsNamedByItsNumberAndLeftOut) {
    UseImages({WriteDisc("AudioThreeTracks", root / "a"), WriteDisc("TinyTracks", root / "b"),
               WriteDisc("MultiFile", root / "c")});
    frmMain* window = Start();
    ASSERT_NE(window, nullptr);
    int16_t second = 2;
    auto& drives = ImageDriveOf(*window);
    ASSERT_TRUE(drives.TimeOutNextCommands(drives.DriveHandle(second), 1));
    WaitForDriveList(*window);

    ASSERT_EQ(boxes.boxes.size(), 1u);
    EXPECT_EQ(boxes.boxes[0].text, QStringLiteral("INQUIRY für Laufwerk 2 gescheitert."));
    EXPECT_EQ(boxes.boxes[0].style, MsgBoxStyle::Exclamation);
    ASSERT_EQ(window->cboDrv->count(), 2);
    EXPECT_EQ(window->cboDrv->itemData(1).toInt(), 3);
}

TEST_F(WindowTest, DataDiscTurnsTheRippingPageIntoAnImagePage) {
    UseImages({DataDiscIn(root / "iso")});
    frmMain* window = StartShown(Options());
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->IsDataCD);
    EXPECT_EQ(window->ExplorerListView1->topLevelItem(0)->text(4), QStringLiteral("Daten"));
    EXPECT_TRUE(window->OptFormat->isVisible() && window->OptFormat->isChecked());
    EXPECT_TRUE(window->Text3->isVisible());
    EXPECT_FALSE(window->ComboBox3->isVisible());
    EXPECT_EQ(window->Label2[1]->text(), QStringLiteral("+ .iso"));
}
