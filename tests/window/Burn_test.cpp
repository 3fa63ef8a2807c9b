// Burning and erasing from the burning page, through the real libburn and libisoburn: the
// drive in the list stands for one of libburn's "stdio:" pseudo-drives, a file that takes the
// sessions as a disc would.
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

#include "BurnService.h"
#include "IsoTreeReader.h"
#include "TabStrip.h"
#include "TrackListView.h"
#include "WindowTestSupport.h"

using namespace plattmix;
using namespace plattmix::window;
using namespace plattmix::window::test;
namespace fs = std::filesystem;

namespace {

// The libburn service with every drive address turned into the one pseudo-drive.
class StdioDrive final : public authoring::IBurnService {
  public:
    explicit StdioDrive(std::string target)
        : real_(authoring::MakeLibburnService()), target_("stdio:" + std::move(target)) {}
    authoring::MediaInfo QueryMedia(const std::string&) override {
        return real_->QueryMedia(target_);
    }
    std::unique_ptr<authoring::IRecorder> OpenRecorder(const std::string&,
                                                       authoring::MediaState& why) override {
        return real_->OpenRecorder(target_, why);
    }

  private:
    std::unique_ptr<authoring::IBurnService> real_;
    std::string target_;
};

}  // namespace

// With "Disk nach dem Brennen prüfen" on, every burn is read back before the success box.
TEST_F(WindowTest, SessionsJoinEraseEmptiesTheDiscAndAnImageFileBurnsAsItWasMade) {
    const fs::path disc = root / "disc.iso";
    UseImages({WriteDisc("TinyTracks", root / "cd")});
    auto options = Options();
    options.window.burnService = [disc] { return std::make_unique<StdioDrive>(disc.string()); };
    frmMain* window = StartShown(options);
    ASSERT_NE(window, nullptr);
    window->TabStrip1->setCurrentIndex(kPageBurn);
    const auto lastBox = [&] { return boxes.boxes.empty() ? QString() : boxes.boxes.back().text; };
    WriteFile(root / "eins" / "a.txt", "erste Sitzung");
    WriteFile(root / "b.txt", "auch erste Sitzung");
    WriteFile(root / "zwei" / "c.txt", "zweite Sitzung");
    window->Check6->click();
    window->Check3->click();  // multisession, the disc stays open
    for (const std::vector<fs::path>& session :
         {std::vector{root / "eins", root / "b.txt"}, std::vector{root / "zwei"}}) {
        window->Command11_Click();  // a new compilation of exactly these paths
        for (const auto& path : session) {
            dialogs.answers.push_back({QString::fromStdString(path.string())});
            if (fs::is_directory(path))
                window->Command9_Click();
            else
                window->Command10_Click();
        }
        window->mnuSave->trigger();
        ASSERT_EQ(lastBox(), QStringLiteral("Brennen erfolgreich!"));
        EXPECT_EQ(boxes.boxes.back().style, MsgBoxStyle::Information);
        EXPECT_EQ(window->ExplorerListView1->topLevelItem(0)->text(5), QStringLiteral("Fertig"));
    }
    {
        authoring::IsoTreeReader burnt(disc.string());
        ASSERT_TRUE(burnt.ok()) << burnt.error();
        for (const char* path : {"eins/a.txt", "b.txt", "zwei/c.txt"})
            EXPECT_NE(burnt.Find(path), nullptr) << path;
    }

    boxes.answers = {vbNo};
    window->Command8->click();
    EXPECT_EQ(lastBox(), QStringLiteral("Wollen sie alle Daten auf der Disk löschen?"));
    EXPECT_TRUE(authoring::IsoTreeReader(disc.string()).ok());
    boxes.answers = {vbYes};
    window->Command8->click();
    EXPECT_EQ(window->Label4->text(), QStringLiteral("Löschen erfolgreich abgeschlossen"));
    EXPECT_FALSE(authoring::IsoTreeReader(disc.string()).ok());

    const std::string image = MakeIsoImage(root / "eins", "BILD", root / "bild.iso");
    window->OptNameBurn[1]->click();
    window->ComboBox1->setEditText(QString::fromStdString((root / "fehlt.iso").string()));
    window->mnuSave->trigger();
    EXPECT_EQ(lastBox(), QStringLiteral("Bitte einen gültigen Pfad eingeben"));
    window->ComboBox1->setEditText(QString::fromStdString(image));
    window->mnuSave->trigger();
    ASSERT_EQ(lastBox(), QStringLiteral("Brennen erfolgreich!"));
    authoring::IsoTreeReader burnt(disc.string());
    ASSERT_TRUE(burnt.ok()) << burnt.error();
    EXPECT_EQ(burnt.VolumeId(), "BILD");
    EXPECT_NE(burnt.Find("a.txt"), nullptr);
    // Once switched on, the check is kept.
    window->close();
    EXPECT_EQ(ReadSettingsValue(SettingsFile(), "Diskolo", "Pruefen"), "1");
}
