// The image and burning pages as a person uses them: an image of a chosen folder or of the
// mounted data disc, the compilation with its list file, burning and erasing through the real
// libburn and libisoburn. The drive to burn on is one of libburn's "stdio:" pseudo-drives, a
// file that takes the sessions as a disc would. What the disc's usage shows is tested with the
// usage itself.
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
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

class AuthoringPerson : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        source = root / "Quelle";
        WriteFile(source / "a.txt", std::string(3000, 'x'));
        WriteFile(source / "Unterordner" / "b.bin", std::string(5000, 'x'));
        target = root / "Ziel";
    }

    // Starts with disc in the image drive.
    void StartWith(const std::string& disc) {
        UseImages({disc});
        auto options = Options();
        const std::string burner = (root / "brenner.iso").string();
        options.window.burnService = [burner] { return std::make_unique<StdioDrive>(burner); };
        options.window.driveRoot = [this](const std::string&) { return mounted; };
        window = StartShown(options);
        ASSERT_NE(window, nullptr);
    }

    // The page change draws the disc's usage; the refresh after it adds the compilation check.
    void ShowPage(int page) {
        window->TabStrip1->setCurrentIndex(page);
        window->Timer2_Timer();
    }
    QTreeWidgetItem* Row(int row) const { return window->ExplorerListView1->topLevelItem(row); }
    int Rows() const { return window->ExplorerListView1->topLevelItemCount(); }

    frmMain* window = nullptr;
    fs::path source, target;
    std::string mounted;
};

TEST_F(AuthoringPerson, TheIsoPageImagesTheChosenFolderAndRefusesOneWithoutFiles) {
    StartWith(WriteDisc("TinyTracks", root / "disc"));
    ShowPage(kPageIso);
    dialogAnswers = {{QString::fromStdString(source.string())},
                     {QString::fromStdString(target.string())}};
    window->Command7_Click();
    window->cmdOpen_Click();
    ASSERT_EQ(dialogs.size(), 2u);
    EXPECT_EQ(dialogs[0].title,
              QStringLiteral("Ordner auswählen, von dem ein ISO Image erstellt werden soll"));
    ASSERT_EQ(Rows(), 1);
    EXPECT_EQ(Row(0)->text(0), QString::fromStdString(source.string()));
    EXPECT_EQ(Row(0)->text(1), QStringLiteral("8 KB"));  // the listing's total

    window->mnuSave->trigger();
    EXPECT_TRUE(boxes.empty());
    EXPECT_EQ(Row(0)->text(5), QStringLiteral("Fertig"));
    EXPECT_TRUE(authoring::IsoTreeReader((target / "Track.iso").string()).ok());
    EXPECT_EQ(window->ProgressBar1->value(), 0);
    EXPECT_FALSE(window->isBusy);

    // A folder with sub-folders only has nothing to put into an image.
    const fs::path hollow = root / "Leer";
    fs::create_directories(hollow / "nur" / "Ordner");
    window->Text2->setText(QString::fromStdString(hollow.string()));
    window->Text1->setText(QStringLiteral("Hohl"));
    window->mnuSave->trigger();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text, QStringLiteral("Keine Datei in dem Quellpfad: \r\n") +
                                 QString::fromStdString(hollow.string()) +
                                 QStringLiteral(" gefunden!"));
    EXPECT_EQ(boxes[0].style, MsgBoxStyle::Exclamation);
    EXPECT_FALSE(fs::exists(target / "Hohl.iso"));
}

TEST_F(AuthoringPerson, StartOnADataDiscImagesTheMountedDiscOrAsksForASource) {
    mounted = source.string() + "/";
    WriteFile(root / "daten.iso", std::string(300 * 2048, '\0'));  // zeroed data sectors
    StartWith((root / "daten.iso").string());
    // The ripping page offers the disc as an image.
    ASSERT_TRUE(window->IsDataCD);
    EXPECT_EQ(Row(0)->text(4), QStringLiteral("Daten"));
    EXPECT_TRUE(window->OptFormat->isVisible() && window->Text3->isVisible());
    EXPECT_FALSE(window->ComboBox3->isVisible());
    EXPECT_EQ(window->Label2[1]->text(), QStringLiteral("+ .iso"));
    window->ComboBox1->setEditText(QString::fromStdString(target.string()));
    window->Text3->setText(QStringLiteral("DATEN"));
    boxAnswers = {vbYes};  // no row checked: check them all and start
    window->mnuSave->trigger();
    EXPECT_EQ(Row(0)->text(5), QStringLiteral("Fertig"));
    EXPECT_EQ(authoring::IsoTreeReader((target / "Track.iso").string()).VolumeId(), "DATEN");

    mounted.clear();  // the desktop has not mounted the disc: as a missing source folder
    window->cboDrv_Click();
    boxAnswers = {vbYes};
    window->mnuSave->trigger();
    ASSERT_FALSE(boxes.empty());
    EXPECT_EQ(boxes.back().text, QStringLiteral("Bitte einen gültigen Quell-Pfad eingeben"));
}

TEST_F(AuthoringPerson, TheCompilationGrowsShrinksAndRoundTripsThroughItsListFile) {
    StartWith(WriteDisc("TinyTracks", root / "disc"));
    ShowPage(kPageBurn);
    window->Command11_Click();
    EXPECT_EQ(window->ExplorerListView1->EmptyListText(),
              QStringLiteral("Bitte fügen Sie Ordner oder Dateien hinzu..."));
    QStringList files;
    for (const char* name : {"c.txt", "a.txt", "b.txt"}) {
        WriteFile(root / "Dateien" / name, std::string(100, 'x'));
        files << QString::fromStdString((root / "Dateien" / name).string());
    }
    dialogAnswers = {files, {QString::fromStdString(source.string())}};
    window->Command10_Click();
    window->Command9_Click();
    ASSERT_EQ(Rows(), 4);
    EXPECT_EQ(Row(0)->text(0), files[0]);  // in the dialog's order
    EXPECT_EQ(Row(2)->text(0), files[2]);
    EXPECT_EQ(Row(3)->text(2), QStringLiteral("8000"));
    EXPECT_EQ(dialogs[0].title, QStringLiteral("Dateien brennen"));
    window->ExplorerListView1->itemDoubleClicked(Row(0), 0);
    EXPECT_EQ(Row(0)->checkState(0), Qt::Unchecked);

    // Removing rows 1 and 2 selects what moved into row 1, so the next press goes on.
    Row(1)->setSelected(true);
    Row(2)->setSelected(true);
    window->Command12_Click();
    ASSERT_EQ(Rows(), 2);
    EXPECT_TRUE(Row(1)->isSelected());
    EXPECT_EQ(Row(1)->text(0), QString::fromStdString(source.string()));

    const QString list = QString::fromStdString((root / "liste.txt").string());
    dialogAnswers = {{list}};
    window->Command13_Click();
    EXPECT_EQ(dialogs.back().initialName, QStringLiteral("Diskolo.txt"));

    // An empty compilation is not saved; loading brings the saved rows back (what a list file
    // holds is the list's own tests' matter).
    window->Command11_Click();
    dialogAnswers = {{list}, {list}};
    window->Command13_Click();
    ASSERT_FALSE(boxes.empty());
    EXPECT_EQ(boxes.back().text, QStringLiteral("Keine Daten zum Speichern vorhanden?"));
    EXPECT_EQ(boxes.back().style, MsgBoxStyle::Critical);
    window->Command14_Click();
    ASSERT_EQ(Rows(), 2);
    EXPECT_EQ(Row(1)->text(0), QString::fromStdString(source.string()));

    // Another page shows its own rows; coming back brings the compilation back.
    boxAnswers = {vbNo};
    ShowPage(kPageRip);
    EXPECT_EQ(boxes.back().text,
              QStringLiteral("Wollen sie die Zusammenstellung vorher noch speichern?"));
    EXPECT_EQ(Row(0)->text(0), QStringLiteral("1"));  // the disc's first track
    ShowPage(kPageBurn);
    EXPECT_EQ(Rows(), 2);
}

// With "Disk nach dem Brennen prüfen" on, every burn is read back before the success box. How
// sessions join is the burn job's to test.
TEST_F(AuthoringPerson, ACompilationBurnsEraseEmptiesTheDiscAndAnImageFileBurnsAsItWasMade) {
    const fs::path disc = root / "brenner.iso";
    StartWith(WriteDisc("TinyTracks", root / "cd"));
    window->TabStrip1->setCurrentIndex(kPageBurn);
    const auto lastBox = [&] { return boxes.empty() ? QString() : boxes.back().text; };
    window->Check6->click();
    window->Command11_Click();  // a new compilation of exactly these paths
    dialogAnswers = {{QString::fromStdString(source.string())},
                     {QString::fromStdString((root / "b.txt").string())}};
    WriteFile(root / "b.txt", "auch dabei");
    window->Command9_Click();
    window->Command10_Click();
    window->mnuSave->trigger();
    ASSERT_EQ(lastBox(), QStringLiteral("Brennen erfolgreich!"));
    EXPECT_EQ(boxes.back().style, MsgBoxStyle::Information);
    EXPECT_EQ(window->ExplorerListView1->topLevelItem(0)->text(5), QStringLiteral("Fertig"));
    {
        authoring::IsoTreeReader burnt(disc.string());
        ASSERT_TRUE(burnt.ok()) << burnt.error();
        for (const char* path : {"Quelle/Unterordner/b.bin", "b.txt"})
            EXPECT_NE(burnt.Find(path), nullptr) << path;
    }

    boxAnswers = {vbNo};
    window->Command8->click();
    EXPECT_EQ(lastBox(), QStringLiteral("Wollen sie alle Daten auf der Disk löschen?"));
    EXPECT_TRUE(authoring::IsoTreeReader(disc.string()).ok());
    boxAnswers = {vbYes};
    window->Command8->click();
    EXPECT_EQ(window->Label4->text(), QStringLiteral("Löschen erfolgreich abgeschlossen"));
    EXPECT_FALSE(authoring::IsoTreeReader(disc.string()).ok());

    const std::string image = MakeIsoImage(source, "BILD", root / "bild.iso");
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
    EXPECT_EQ(Setting("Pruefen"), "1");
}

}  // namespace
