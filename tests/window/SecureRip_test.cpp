// "Sicher rippen (AccurateRip)" with a local server holding the disc's AccurateRip record: each
// row's result with the verdict, Rip.log beside the files, and the box's setting kept only once
// it was switched on.
#include <QCheckBox>
#include <QComboBox>

#include "AccurateRipFile.h"
#include "AccurateRipIds.h"
#include "DiscWriter.h"
#include "Fixtures.h"
#include "RipJob.h"
#include "TrackListView.h"
#include "WindowTestSupport.h"
#include "common/LocalHttpServer.h"

using namespace plattmix;
using namespace plattmix::window;
using namespace plattmix::window::test;
namespace fs = std::filesystem;

using SecurePerson = WindowTest;

TEST_F(SecurePerson, RowsShowTheVerdictAndTheBoxIsKept) {
    const auto disc = discgen::WriteDisc(discgen::AudioThreeTracks(), root / "disc");
    ASSERT_TRUE(disc.ok()) << disc.error;
    const auto response = discgen::AccurateRipResponseOf(*disc.value, 7);
    ASSERT_TRUE(response.ok()) << response.error;
    plattmix::test::LocalHttpServer server;
    server.Set("/" + audiocd::AccurateRipRecordPath(response.value->ids),
               {200, discgen::MakeAccurateRipFile({&*response.value, 1})});
    UseImages({disc.value->cuePath.string()});
    shell::WriteIni(Paths(), "Diskolo", "AccurateRip", server.Url());

    frmMain* window = StartAndFill();
    ASSERT_NE(window, nullptr);
    window->show();
    EXPECT_TRUE(window->CheckSecure->isVisible());
    EXPECT_FALSE(window->CheckSecure->isChecked());
    window->close();
    EXPECT_EQ(ReadSettingsValue(SettingsFile(), "Diskolo", "Sicher"), "<fehlt>");

    startup.reset();
    window = StartAndFill();
    ASSERT_NE(window, nullptr);
    window->CheckSecure->click();
    window->ComboBox3->setCurrentIndex(audiocd::kWavFormatIndex);
    window->ComboBox1->setEditText(QString::fromStdString((root / "sicher").string()));
    window->ComboBox2->activated(0);  // "Alles"
    window->mnuSave->trigger();
    for (int row = 0; row < 3; ++row) {
        EXPECT_EQ(window->ExplorerListView1->topLevelItem(row)->text(5),
                  QStringLiteral("Track0%1.wav -->Fertig (AccurateRip: übereinstimmend, 7)")
                      .arg(row + 1));
    }
    EXPECT_TRUE(fs::exists(root / "sicher" / "Rip.log"));
    EXPECT_EQ(server.Requests().size(), 1u);
    window->close();
    EXPECT_EQ(ReadSettingsValue(SettingsFile(), "Diskolo", "Sicher"), "1");
}
