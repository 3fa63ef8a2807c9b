// Burning and erasing from the burning page, through the real libburn and libisoburn: the
// drive in the list stands for one of libburn's "stdio:" pseudo-drives, a file that takes the
// sessions as a disc would.
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <fstream>

#include "BurnService.h"
#include "IsoImage.h"
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

void WriteFile(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

class BurnPerson : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        disc = root / "disc.iso";
        UseImages({WriteDisc("TinyTracks", root / "cd")});
        auto options = Options();
        const std::string target = disc.string();
        options.window.burnService = [target] { return std::make_unique<StdioDrive>(target); };
        startup = std::make_unique<Startup>(options);
        window = startup->Start();
        ASSERT_NE(window, nullptr);
        WaitForDriveList(*window);
        window->show();
        window->TabStrip1->setCurrentIndex(kPageBurn);
    }

    // The compilation holds exactly these paths, checked.
    void Compile(const std::vector<fs::path>& paths) {
        window->Command11_Click();
        for (const auto& path : paths) {
            dialogs.answers.push_back({QString::fromStdString(path.string())});
            if (fs::is_directory(path))
                window->Command9_Click();
            else
                window->Command10_Click();
        }
    }

    QString LastBox() const { return boxes.boxes.empty() ? QString() : boxes.boxes.back().text; }

    MsgBoxRecorder boxes;
    DialogScript dialogs;
    frmMain* window = nullptr;
    fs::path disc;
};

TEST_F(BurnPerson, AnImageFileIsBurntAndReadsBackAsItWasMade) {
    const fs::path source = root / "quelle";
    WriteFile(source / "ordner" / "brief.txt", "Hallo Platte");
    authoring::FolderListing listing;
    authoring::ShowOrdnerInhalt(source.string(), listing, {});
    const std::string image = (root / "bild.iso").string();
    ASSERT_EQ(authoring::CreateIsoImage({source.string(), "BILD", image}, listing, {}).outcome,
              authoring::IsoOutcome::Done);

    window->OptNameBurn[1]->click();
    window->ComboBox1->setEditText(QString::fromStdString((root / "fehlt.iso").string()));
    window->mnuSave->trigger();
    EXPECT_EQ(LastBox(), QStringLiteral("Bitte einen gültigen Pfad eingeben"));

    window->ComboBox1->setEditText(QString::fromStdString(image));
    window->mnuSave->trigger();
    ASSERT_EQ(LastBox(), QStringLiteral("Brennen erfolgreich!"));
    EXPECT_EQ(boxes.boxes.back().style, MsgBoxStyle::Information);
    authoring::IsoTreeReader burnt(disc.string());
    ASSERT_TRUE(burnt.ok()) << burnt.error();
    EXPECT_EQ(burnt.VolumeId(), "BILD");
    EXPECT_NE(burnt.Find("ordner/brief.txt"), nullptr);
    EXPECT_FALSE(window->isBusy);
}

TEST_F(BurnPerson, ASecondSessionJoinsTheFirstAndEraseEmptiesTheDisc) {
    WriteFile(root / "eins" / "a.txt", "erste Sitzung");
    WriteFile(root / "b.txt", "auch erste Sitzung");
    WriteFile(root / "zwei" / "c.txt", "zweite Sitzung");
    window->Check3->click();  // multisession, the disc stays open
    ASSERT_FALSE(window->Check4->isChecked());
    Compile({root / "eins", root / "b.txt"});
    window->mnuSave->trigger();
    ASSERT_EQ(LastBox(), QStringLiteral("Brennen erfolgreich!"));
    EXPECT_EQ(window->ExplorerListView1->topLevelItem(0)->text(5), QStringLiteral("Fertig"));

    Compile({root / "zwei"});
    window->mnuSave->trigger();
    ASSERT_EQ(LastBox(), QStringLiteral("Brennen erfolgreich!"));
    {
        authoring::IsoTreeReader burnt(disc.string());
        ASSERT_TRUE(burnt.ok()) << burnt.error();
        for (const char* path : {"eins/a.txt", "b.txt", "zwei/c.txt"})
            EXPECT_NE(burnt.Find(path), nullptr) << path;
    }

    // Erasing asks first; No leaves the disc as it is.
    boxes.answers = {vbNo};
    window->Command8->click();
    EXPECT_EQ(LastBox(), QStringLiteral("Wollen sie alle Daten auf der Disk löschen?"));
    EXPECT_TRUE(authoring::IsoTreeReader(disc.string()).ok());
    boxes.answers = {vbYes};
    window->Command8->click();
    EXPECT_EQ(window->Label4->text(), QStringLiteral("Löschen erfolgreich abgeschlossen"));
    EXPECT_FALSE(authoring::IsoTreeReader(disc.string()).ok());
}

// "Disk nach dem Brennen prüfen": an image and both sessions of a compilation are read back
// before "Brennen erfolgreich!"; once switched on, the setting is kept.
TEST_F(BurnPerson, TheCheckReadsEachBurnBack) {
    WriteFile(root / "eins" / "a.txt", "erste Sitzung");
    WriteFile(root / "zwei" / "b.txt", "zweite Sitzung");
    EXPECT_FALSE(window->Check6->isChecked());
    ASSERT_TRUE(window->Check6->isVisible());
    window->Check6->click();
    window->Check3->click();
    for (const char* folder : {"eins", "zwei"}) {
        Compile({root / folder});
        window->mnuSave->trigger();
        ASSERT_EQ(LastBox(), QStringLiteral("Brennen erfolgreich!")) << folder;
        EXPECT_EQ(window->ExplorerListView1->topLevelItem(0)->text(5), QStringLiteral("Fertig"));
    }
    EXPECT_NE(authoring::IsoTreeReader(disc.string()).Find("eins/a.txt"), nullptr);

    fs::remove(disc);
    const std::string image = (root / "bild.iso").string();
    authoring::FolderListing listing;
    authoring::ShowOrdnerInhalt((root / "zwei").string(), listing, {});
    ASSERT_EQ(
        authoring::CreateIsoImage({(root / "zwei").string(), "BILD", image}, listing, {}).outcome,
        authoring::IsoOutcome::Done);
    window->OptNameBurn[1]->click();
    window->ComboBox1->setEditText(QString::fromStdString(image));
    window->mnuSave->trigger();
    ASSERT_EQ(LastBox(), QStringLiteral("Brennen erfolgreich!"));

    window->TabStrip1->setCurrentIndex(kPageIso);
    EXPECT_FALSE(window->Check6->isVisible());
    window->close();
    EXPECT_EQ(ReadSettingsValue(SettingsFile(), "Diskolo", "Pruefen"), "1");
}

}  // namespace
