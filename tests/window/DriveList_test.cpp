// The drive list 100 ms after the load, the track list of the chosen drive, and a drive that
// does not answer.
#include <QComboBox>
#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>

#include "DiscWriter.h"
#include "Fixtures.h"
#include "TrackListView.h"
#include "WindowTestSupport.h"
#include "imagedrive/clsImageDrive.h"

using namespace plattmix;
using namespace plattmix::window;
using namespace plattmix::window::test;

TEST_F(WindowTest, DriveListIsFilledAfterTheLoadAndTheChosenDriveIsRead) {
    const std::string first = WriteDisc("AudioThreeTracks", root / "a");
    const std::string second = WriteDisc("TinyTracks", root / "b");
    UseImages({first, second});
    MsgBoxRecorder boxes;
    frmMain* window = Start();
    ASSERT_NE(window, nullptr);
    // Nothing is read during the load itself.
    EXPECT_TRUE(window->isLoading);
    EXPECT_EQ(window->cboDrv->count(), 0);
    EXPECT_TRUE(window->Timer1->isActive());
    EXPECT_EQ(window->Timer1->interval(), 100);
    WaitForDriveList(*window);

    EXPECT_FALSE(window->Timer1->isActive());
    EXPECT_FALSE(window->Picture1->isVisible());
    ASSERT_EQ(window->cboDrv->count(), 2);
    EXPECT_TRUE(window->cboDrv->itemText(0).startsWith(QString::fromStdString(first) + ":  "));
    EXPECT_TRUE(window->cboDrv->itemText(1).startsWith(QString::fromStdString(second) + ":  "));
    EXPECT_EQ(window->cboDrv->itemData(1).toInt(), 2);
    EXPECT_EQ(window->cboDrv->currentIndex(), 0);

    const auto disc = discgen::DescribeDisc(discgen::AudioThreeTracks(), root / "a");
    ASSERT_TRUE(disc.ok());
    auto* list = window->ExplorerListView1;
    ASSERT_EQ(list->topLevelItemCount(), static_cast<int>(disc.value->tracks.size()));
    const QTreeWidgetItem* row = list->topLevelItem(0);
    EXPECT_EQ(row->text(0), QStringLiteral("1"));
    EXPECT_EQ(row->text(2), QStringLiteral("00:02:00"));
    EXPECT_EQ(row->text(4), QStringLiteral("Audio"));
    EXPECT_EQ(row->text(5), QString());
    EXPECT_EQ(row->checkState(0), Qt::Unchecked);
    EXPECT_EQ(list->topLevelItem(1)->text(2),
              row->text(3));  // one track ends where the next starts
    EXPECT_FALSE(window->IsDataCD);
    // An image is no drive node: there is no file system root to show.
    EXPECT_TRUE(window->DriveRoot().empty());
    EXPECT_TRUE(boxes.boxes.empty());

    // Choosing the other drive reads its tracks.
    window->cboDrv->setCurrentIndex(1);
    const auto tiny = discgen::DescribeDisc(discgen::TinyTracks(), root / "b");
    ASSERT_TRUE(tiny.ok());
    EXPECT_EQ(window->ExplorerListView1->topLevelItemCount(),
              static_cast<int>(tiny.value->tracks.size()));
}

TEST_F(WindowTest, DriveThatFailsInquiryIsNamedByItsNumberAndLeftOut) {
    UseImages({WriteDisc("AudioThreeTracks", root / "a"), WriteDisc("TinyTracks", root / "b"),
               WriteDisc("MultiFile", root / "c")});
    MsgBoxRecorder boxes;
    frmMain* window = Start();
    ASSERT_NE(window, nullptr);
    auto* drives = dynamic_cast<scsi::imagedrive::clsImageDrive*>(window->Transport());
    ASSERT_NE(drives, nullptr);
    int16_t second = 2;
    ASSERT_TRUE(drives->TimeOutNextCommands(drives->DriveHandle(second), 1));
    WaitForDriveList(*window);

    ASSERT_EQ(boxes.boxes.size(), 1u);
    EXPECT_EQ(boxes.boxes[0].text, QStringLiteral("INQUIRY für Laufwerk 2 gescheitert."));
    EXPECT_EQ(boxes.boxes[0].style, MsgBoxStyle::Exclamation);
    ASSERT_EQ(window->cboDrv->count(), 2);
    EXPECT_EQ(window->cboDrv->itemData(0).toInt(), 1);
    EXPECT_EQ(window->cboDrv->itemData(1).toInt(), 3);
}

TEST_F(WindowTest, RefreshOfAnEmptyDriveShowsItsTextAndResetsTheProgress) {
    UseImages({WriteDisc("AudioThreeTracks", root / "a")});
    MsgBoxRecorder boxes;
    frmMain* window = StartAndFill();
    ASSERT_NE(window, nullptr);
    auto* drives = dynamic_cast<scsi::imagedrive::clsImageDrive*>(window->Transport());
    ASSERT_NE(drives, nullptr);
    int16_t first = 1;
    ASSERT_TRUE(drives->RemoveMedium(drives->DriveHandle(first)));
    // "Aktualisieren" reads the disc again through the refresh tick, which resets the progress.
    window->ProgressBar1->setValue(40);
    window->PictureNewValue->show();
    window->Command1->click();
    EXPECT_TRUE(window->Timer2->isActive());
    QEventLoop loop;
    QObject::connect(window->Timer2, &QTimer::timeout, &loop, &QEventLoop::quit,
                     Qt::QueuedConnection);
    loop.exec();
    EXPECT_EQ(window->ExplorerListView1->topLevelItemCount(), 0);
    EXPECT_EQ(window->ExplorerListView1->EmptyListText(), QStringLiteral("Keine Disk im Laufwerk"));
    EXPECT_EQ(window->ProgressBar1->value(), 0);
    EXPECT_TRUE(window->PictureNewValue->isHidden());
}

TEST_F(WindowTest, DataDiscTurnsTheRippingPageIntoAnImagePage) {
    UseImages({DataDiscIn(root / "iso")});
    MsgBoxRecorder boxes;
    frmMain* window = StartAndFill();
    ASSERT_NE(window, nullptr);
    window->show();
    EXPECT_TRUE(window->IsDataCD);
    EXPECT_EQ(window->ExplorerListView1->topLevelItem(0)->text(4), QStringLiteral("Daten"));
    EXPECT_TRUE(window->OptFormat->isVisible() && window->OptFormat->isChecked());
    EXPECT_TRUE(window->Text3->isVisible());
    for (QWidget* hidden :
         std::initializer_list<QWidget*>{window->Command5[0], window->ComboBox3, window->Frame1})
        EXPECT_FALSE(hidden->isVisible());
    EXPECT_EQ(window->Label2[1]->text(), QStringLiteral("+ .iso"));
}
