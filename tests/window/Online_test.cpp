// The two look-ups on the ripping page, with a local server standing in for MusicBrainz and
// AccurateRip: "Titel online suchen (MusicBrainz)" puts the album into the status line and the
// titles into the tooltips and the tags; "Sicher rippen (AccurateRip)" adds the verdict to each
// row and writes Rip.log. Both are off by default and then ask nobody. Their outcomes are
// tested with the look-ups themselves.
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QTest>

#include "AccurateRipFile.h"
#include "AccurateRipIds.h"
#include "DiscId.h"
#include "MediaProbe.h"
#include "TrackListView.h"
#include "WindowTestSupport.h"
#include "common/LocalHttpServer.h"
#include "common/MusicBrainzReply.h"

using namespace plattmix;
using namespace plattmix::window;
using namespace plattmix::window::test;
namespace fs = std::filesystem;

namespace {

class OnlinePerson : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        const discgen::DiscDescription disc = DiscOf("AudioThreeTracks", root / "disc");
        UseImages({disc.cuePath.string()});
        const auto response = discgen::AccurateRipResponseOf(disc, 7);
        ASSERT_TRUE(response.ok()) << response.error;
        server.Set("/" + audiocd::AccurateRipRecordPath(response.value->ids),
                   {200, discgen::MakeAccurateRipFile({&*response.value, 1})});
        scsi::imagedrive::clsImageDrive drive;
        const auto handle = drive.AddDrive(disc.cuePath.string());
        ASSERT_TRUE(handle.ok()) << handle.Error();
        const std::string discId = audiocd::MusicBrainzDiscId(
            *audiocd::DiscIdTocOf(audiocd::ReadTrackList(drive, handle.Value())));
        server.Set(
            plattmix::test::MusicBrainzPath(discId),
            {200, plattmix::test::MusicBrainzReply(
                      discId,
                      {{"rel-1", "Großes Album", "Kapelle", "1999", {"Eins", "Zwei", "Drei"}}})});
        shell::WriteIni(shell::ComputeSettingsPaths(), "Diskolo", "AccurateRip", server.Url());
        shell::WriteIni(shell::ComputeSettingsPaths(), "Diskolo", "MusicBrainzServer",
                        server.Url());
    }

    plattmix::test::LocalHttpServer server;
};

}  // namespace

TEST_F(OnlinePerson, FoundTitlesAndVerdictsShowAndGoIntoTheFiles) {
    shell::WriteIni(shell::ComputeSettingsPaths(), "Diskolo", "MusicBrainz", "1");
    frmMain* window = StartShown();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->CheckMusicBrainz->isChecked());
    EXPECT_EQ(window->Label5[0]->text(), QStringLiteral("MusicBrainz: Großes Album – Kapelle"));
    EXPECT_EQ(window->ExplorerListView1->topLevelItem(1)->toolTip(3), QStringLiteral("Zwei"));

    window->CheckSecure->click();
    window->ComboBox3->setCurrentIndex(3);  // "Flac Format"
    window->ComboBox1->setEditText(QString::fromStdString((root / "flac").string()));
    window->ComboBox2->activated(0);  // "Alles"
    window->mnuSave->trigger();
    for (int row = 0; row < 3; ++row)
        EXPECT_EQ(window->ExplorerListView1->topLevelItem(row)->text(5),
                  QStringLiteral("Track0%1.flac -->Fertig (AccurateRip: übereinstimmend, 7)")
                      .arg(row + 1));
    EXPECT_TRUE(fs::exists(root / "flac" / "Rip.log"));
    const auto probed = encode::ProbeAudioFile((root / "flac" / "Track01.flac").string());
    ASSERT_TRUE(probed);
    EXPECT_EQ(probed->tags.at("title"), "Eins");
    EXPECT_EQ(probed->tags.at("album"), "Großes Album");
    EXPECT_EQ(server.Requests().size(), 2u);  // one each; the refreshes ask no more

    // Switched off, the disc is read again and the look-up's texts go.
    window->CheckMusicBrainz->click();
    EXPECT_TRUE(QTest::qWaitFor([&] { return window->Label5[0]->text().isEmpty(); }, 20000));
    EXPECT_TRUE(window->ExplorerListView1->topLevelItem(1)->toolTip(3).isEmpty());
    window->close();
    EXPECT_EQ(Setting("Sicher"), "1");
}

TEST_F(OnlinePerson, OffByDefaultAsksNobodyAndWritesNoKey) {
    frmMain* window = StartShown();
    ASSERT_NE(window, nullptr);
    EXPECT_FALSE(window->CheckMusicBrainz->isChecked() || window->CheckSecure->isChecked());
    EXPECT_TRUE(window->Label5[0]->text().isEmpty());
    window->Timer2_Timer();
    EXPECT_TRUE(server.Requests().empty());
    window->close();
    EXPECT_EQ(Setting("MusicBrainz"), "<fehlt>");
    EXPECT_EQ(Setting("Sicher"), "<fehlt>");
}
