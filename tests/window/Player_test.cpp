// The ripping page's player and door as a person uses them, on the disc-image drive: Play plays
// the chosen track into a recording audio output, the track list shows where it is, Stop ends
// it; the door button opens and closes the tray and names what it will do next.
#include <QComboBox>
#include <QPushButton>
#include <QTimer>

#include "TrackListView.h"
#include "WindowTestSupport.h"
#include "audiocd/CdAudioTestSink.h"

using namespace plattmix;
using namespace plattmix::window;
using namespace plattmix::window::test;

namespace {

class PlayerPerson : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        UseImages({WriteDisc("AudioThreeTracks", root / "disc")});
        auto options = Options();
        options.window.audioSinks = plattmix::test::TestSinks(sound);
        window = StartShown(options);
        ASSERT_NE(window, nullptr);
    }

    QTreeWidgetItem* Row(int row) const { return window->ExplorerListView1->topLevelItem(row); }

    std::shared_ptr<plattmix::test::SinkRecord> sound =
        std::make_shared<plattmix::test::SinkRecord>();
    frmMain* window = nullptr;
};

TEST_F(PlayerPerson, PlayShowsTheTrackAndItsTimeAndStopEndsIt) {
    sound->Hold(2);  // the player stays in the track while the test looks
    window->ExplorerListView1->setCurrentItem(Row(1));
    window->Command5[0]->click();
    ASSERT_TRUE(boxes.boxes.empty()) << boxes.boxes.front().text.toStdString();
    ASSERT_TRUE(sound->WaitForCalls(3));
    EXPECT_TRUE(window->Timer6->isActive());
    window->Timer6_Timer();
    EXPECT_TRUE(Row(1)->text(5).startsWith(QStringLiteral("[02] <00:00> ")))
        << Row(1)->text(5).toStdString();
    EXPECT_TRUE(Row(0)->text(5).isEmpty());

    window->Command6->click();
    EXPECT_FALSE(window->Timer6->isActive());
    EXPECT_TRUE(Row(1)->text(5).isEmpty());
    sound->Release();
    EXPECT_GT(sound->Bytes().size(), 0u);
}

TEST_F(PlayerPerson, WithoutAnAudioOutputPlayTellsWhyAndTheDriveStillAnswers) {
    sound->openError = "Keine Audioausgabe verfügbar.";
    window->Command5[0]->click();
    ASSERT_EQ(boxes.boxes.size(), 1u);
    EXPECT_TRUE(boxes.boxes[0].text.contains(QStringLiteral("Keine Audioausgabe verfügbar.")));
    EXPECT_FALSE(window->Timer6->isActive());
    window->Timer2_Timer();
    EXPECT_EQ(window->ExplorerListView1->topLevelItemCount(), 3);
}

TEST_F(PlayerPerson, TheDoorButtonOpensAndClosesTheTrayAndSaysWhatComesNext) {
    window->Command4->click();
    EXPECT_EQ(window->Command4->text(), QStringLiteral("Schließen"));
    window->Timer2_Timer();  // the refresh asks the tray again
    EXPECT_EQ(window->Command4->text(), QStringLiteral("Schließen"));
    window->Command4->click();
    EXPECT_EQ(window->Command4->text(), QStringLiteral("Disk Auswerfen"));
    EXPECT_TRUE(boxes.boxes.empty());
    // The drive reports the changed medium once; "Aktualisieren" then reads the disc.
    window->Timer2_Timer();
    window->Timer2_Timer();
    EXPECT_EQ(window->ExplorerListView1->topLevelItemCount(), 3);
}

}  // namespace
