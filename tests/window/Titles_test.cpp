// "Titel online suchen (MusicBrainz)" with a local server standing in for MusicBrainz: the
// album in the status line, the titles as the rows' tooltips and in the ripped files' tags; the
// CD-Text and one line when the server is down; off by default, and then no request at all.
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QTest>

#include "DiscId.h"
#include "DiscWriter.h"
#include "Fixtures.h"
#include "MediaProbe.h"
#include "TrackListView.h"
#include "WindowTestSupport.h"
#include "common/LocalHttpServer.h"
#include "common/MusicBrainzReply.h"
#include "imagedrive/clsImageDrive.h"

using namespace plattmix;
using namespace plattmix::window;
using namespace plattmix::window::test;
namespace fs = std::filesystem;

namespace {

class TitlesPerson : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        cue = WriteDisc("AudioThreeTracks", root / "disc");
        UseImages({cue});
        scsi::imagedrive::clsImageDrive drive;
        const auto handle = drive.AddDrive(cue);
        ASSERT_TRUE(handle.ok()) << handle.Error();
        discId = audiocd::MusicBrainzDiscId(
            *audiocd::DiscIdTocOf(audiocd::ReadTrackList(drive, handle.Value())));
        server.Set(
            plattmix::test::MusicBrainzPath(discId),
            {200, plattmix::test::MusicBrainzReply(
                      discId,
                      {{"rel-1", "Großes Album", "Kapelle", "1999", {"Eins", "Zwei", "Drei"}}})});
    }
    void SwitchOn(const std::string& url) {
        shell::WriteIni(Paths(), "Diskolo", "MusicBrainz", "1");
        shell::WriteIni(Paths(), "Diskolo", "MusicBrainzServer", url);
    }
    // Every track ripped to FLAC; the first file's tags.
    std::map<std::string, std::string> RipFirstTrackTags(frmMain& window) {
        window.ComboBox3->setCurrentIndex(3);  // "Flac Format"
        window.ComboBox1->setEditText(QString::fromStdString((root / "flac").string()));
        window.ComboBox2->activated(0);  // "Alles"
        window.mnuSave->trigger();
        const auto probed = encode::ProbeAudioFile((root / "flac" / "Track01.flac").string());
        return probed ? probed->tags : std::map<std::string, std::string>{};
    }

    plattmix::test::LocalHttpServer server;
    std::string cue;
    std::string discId;
};

}  // namespace

TEST_F(TitlesPerson, FoundTitlesShowAndGoIntoTheTags) {
    SwitchOn(server.Url());
    frmMain* window = StartAndFill();
    ASSERT_NE(window, nullptr);
    window->show();
    EXPECT_TRUE(window->CheckMusicBrainz->isVisible());
    EXPECT_TRUE(window->CheckMusicBrainz->isChecked());
    EXPECT_EQ(window->Label5[0]->text(), QStringLiteral("MusicBrainz: Großes Album – Kapelle"));
    EXPECT_EQ(window->ExplorerListView1->topLevelItem(1)->toolTip(3), QStringLiteral("Zwei"));

    auto tags = RipFirstTrackTags(*window);
    EXPECT_EQ(tags["title"], "Eins");
    EXPECT_EQ(tags["album"], "Großes Album");
    EXPECT_EQ(tags["artist"], "Kapelle");
    EXPECT_EQ(tags["musicbrainz_albumid"], "rel-1");
    EXPECT_EQ(server.Requests().size(), 1u);  // the refreshes ask no more

    // Switched off, the disc is read again and the look-up's texts go.
    window->CheckMusicBrainz->click();
    EXPECT_TRUE(QTest::qWaitFor([&] { return window->Label5[0]->text().isEmpty(); }, 20000));
    EXPECT_TRUE(window->ExplorerListView1->topLevelItem(1)->toolTip(3).isEmpty());
}

TEST_F(TitlesPerson, ServerDownKeepsTheCdTextAndSaysSoOnce) {
    {
        plattmix::test::LocalHttpServer gone;
        SwitchOn(gone.Url());
    }
    frmMain* window = StartAndFill();
    ASSERT_NE(window, nullptr);
    const QString status = window->Label5[0]->text();
    EXPECT_TRUE(status.startsWith(QStringLiteral("Titelsuche bei MusicBrainz fehlgeschlagen: ")))
        << status.toStdString();
    EXPECT_TRUE(status.endsWith(QStringLiteral(" Titel aus dem CD-Text."))) << status.toStdString();
    EXPECT_EQ(window->ExplorerListView1->topLevelItem(0)->toolTip(0), QStringLiteral("Spur 01"));
    EXPECT_EQ(RipFirstTrackTags(*window)["title"], "Spur 01");
}

TEST_F(TitlesPerson, OffByDefaultAsksNobodyAndTheChoiceIsKept) {
    frmMain* window = StartAndFill();
    ASSERT_NE(window, nullptr);
    EXPECT_FALSE(window->CheckMusicBrainz->isChecked());
    EXPECT_TRUE(window->Label5[0]->text().isEmpty());
    EXPECT_TRUE(window->ExplorerListView1->topLevelItem(0)->toolTip(0).isEmpty());
    EXPECT_EQ(RipFirstTrackTags(*window)["title"], "Spur 01");
    EXPECT_TRUE(server.Requests().empty());
    // A settings file that never had it on gets no key; one that had it keeps the choice.
    window->close();
    EXPECT_EQ(ReadSettingsValue(SettingsFile(), "Diskolo", "MusicBrainz"), "<fehlt>");
    SwitchOn(server.Url());
    startup.reset();
    window = StartAndFill();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->CheckMusicBrainz->isChecked());
    window->CheckMusicBrainz->setChecked(false);
    window->close();
    EXPECT_EQ(ReadSettingsValue(SettingsFile(), "Diskolo", "MusicBrainz"), "0");
}
