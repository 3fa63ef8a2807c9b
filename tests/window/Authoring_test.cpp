// The image and burning pages as a person uses them: an image of a chosen folder or of the
// mounted data disc, the compilation with its list file, and the disc's capacity display.
#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <fstream>
#include <iterator>

#include "BurnService.h"
#include "TabStrip.h"
#include "TrackListView.h"
#include "WindowTestSupport.h"

using namespace plattmix;
using namespace plattmix::window;
using namespace plattmix::window::test;
namespace fs = std::filesystem;

namespace {

// States of a disc that no drive here has.
class ScriptedDisc final : public authoring::IBurnService {
  public:
    explicit ScriptedDisc(authoring::MediaInfo info) : info_(info) {}
    authoring::MediaInfo QueryMedia(const std::string&) override { return info_; }

  private:
    authoring::MediaInfo info_;
};

void WriteFile(const fs::path& path, size_t bytes) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << std::string(bytes, 'x');
}

std::string ReadBytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

class AuthoringPerson : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        source = root / "Quelle";
        WriteFile(source / "a.txt", 3000);
        WriteFile(source / "Unterordner" / "b.bin", 5000);
        target = root / "Ziel";
    }

    // Starts with a disc of the given kind in the image drive.
    void StartWith(const std::string& disc, authoring::MediaInfo media = {}) {
        UseImages({disc});
        auto options = Options();
        options.window.burnService = [media] { return std::make_unique<ScriptedDisc>(media); };
        options.window.driveRoot = [this](const std::string&) { return mounted; };
        startup = std::make_unique<Startup>(options);
        window = startup->Start();
        ASSERT_NE(window, nullptr);
        WaitForDriveList(*window);
        window->show();
    }

    // The page change draws the disc's usage; the refresh after it adds the compilation check.
    void ShowPage(int page, bool refresh = true) {
        window->TabStrip1->setCurrentIndex(page);
        if (refresh)
            window->Timer2_Timer();
    }
    QTreeWidgetItem* Row(int row) const { return window->ExplorerListView1->topLevelItem(row); }
    int Rows() const { return window->ExplorerListView1->topLevelItemCount(); }
    QString Status() const { return window->Label4->text(); }

    // An ISO 9660 volume descriptor stands at byte 32769.
    static bool IsIsoImage(const fs::path& path) {
        return fs::exists(path) && ReadBytes(path).substr(32769, 5) == "CD001";
    }

    MsgBoxRecorder boxes;
    DialogScript dialogs;
    frmMain* window = nullptr;
    fs::path source, target;
    std::string mounted;
};

TEST_F(AuthoringPerson, TheIsoPageImagesTheChosenFolderOrRefusesWithTheDesignedTexts) {
    StartWith(WriteDisc("TinyTracks", root / "disc"));
    ShowPage(kPageIso);
    dialogs.answers = {{QString::fromStdString(source.string())},
                       {QString::fromStdString(target.string())}};
    window->Command7_Click();
    window->cmdOpen_Click();
    ASSERT_EQ(dialogs.requests.size(), 2u);
    EXPECT_EQ(dialogs.requests[0].title,
              QStringLiteral("Ordner auswählen, von dem ein ISO Image erstellt werden soll"));
    ASSERT_EQ(Rows(), 1);
    EXPECT_EQ(Row(0)->text(0), QString::fromStdString(source.string()));
    EXPECT_EQ(Row(0)->text(1), QStringLiteral("8 KB"));  // the listing's total

    window->mnuSave->trigger();
    EXPECT_TRUE(boxes.boxes.empty());
    EXPECT_EQ(Row(0)->text(5), QStringLiteral("Fertig"));
    EXPECT_TRUE(IsIsoImage(target / "Track.iso"));
    EXPECT_EQ(window->ProgressBar1->value(), 0);
    EXPECT_FALSE(window->isBusy);

    // A folder with sub-folders only has nothing to put into an image.
    const fs::path hollow = root / "Leer";
    fs::create_directories(hollow / "nur" / "Ordner");
    window->Text2->setText(QString::fromStdString(hollow.string()));
    window->Text1->setText(QStringLiteral("Hohl"));
    window->mnuSave->trigger();
    ASSERT_EQ(boxes.boxes.size(), 1u);
    EXPECT_EQ(boxes.boxes[0].text, QStringLiteral("Keine Datei in dem Quellpfad: \r\n") +
                                       QString::fromStdString(hollow.string()) +
                                       QStringLiteral(" gefunden!"));
    EXPECT_EQ(boxes.boxes[0].style, MsgBoxStyle::Exclamation);
    EXPECT_FALSE(fs::exists(target / "Hohl.iso"));

    window->Text2->setText(QString::fromStdString((root / "fehlt").string()));
    window->mnuSave->trigger();
    ASSERT_EQ(boxes.boxes.size(), 2u);
    EXPECT_EQ(boxes.boxes[1].text, QStringLiteral("Bitte einen gültigen Quell-Pfad eingeben"));
}

TEST_F(AuthoringPerson, StartOnADataDiscImagesTheMountedDiscOrAsksForASource) {
    mounted = source.string() + "/";
    StartWith(DataDiscIn(root / "disc"));
    ASSERT_TRUE(window->IsDataCD);
    ASSERT_GT(Rows(), 0);
    window->ComboBox1->setEditText(QString::fromStdString(target.string()));
    window->Text3->setText(QStringLiteral("DATEN"));
    boxes.answers = {vbYes};  // no row checked: check them all and start
    window->mnuSave->trigger();
    EXPECT_EQ(Row(0)->text(5), QStringLiteral("Fertig"));
    const std::string image = ReadBytes(target / "Track.iso");
    EXPECT_EQ(image.substr(32768 + 40, 5), "DATEN");  // the primary volume's name

    mounted.clear();  // the desktop has not mounted the disc
    window->cboDrv_Click();
    boxes.answers = {vbYes};
    window->mnuSave->trigger();
    ASSERT_FALSE(boxes.boxes.empty());
    EXPECT_EQ(boxes.boxes.back().text, QStringLiteral("Bitte einen gültigen Quell-Pfad eingeben"));
}

TEST_F(AuthoringPerson, TheCompilationGrowsShrinksAndRoundTripsThroughItsListFile) {
    StartWith(WriteDisc("TinyTracks", root / "disc"));
    ShowPage(kPageBurn);
    window->Command11_Click();
    EXPECT_EQ(window->ExplorerListView1->EmptyListText(),
              QStringLiteral("Bitte fügen Sie Ordner oder Dateien hinzu..."));
    for (QPushButton* button : {window->Command9, window->Command10, window->Command12,
                                window->Command13, window->Command14})
        EXPECT_FALSE(button->isHidden());

    QStringList files;
    for (const char* name : {"c.txt", "a.txt", "b.txt"}) {
        WriteFile(root / "Dateien" / name, 100);
        files << QString::fromStdString((root / "Dateien" / name).string());
    }
    dialogs.answers = {files, {QString::fromStdString(source.string())}};
    window->Command10_Click();
    window->Command9_Click();
    ASSERT_EQ(Rows(), 4);
    EXPECT_EQ(Row(0)->text(0), files[0]);  // in the dialog's order
    EXPECT_EQ(Row(2)->text(0), files[2]);
    EXPECT_EQ(Row(3)->text(2), QStringLiteral("8000"));
    EXPECT_EQ(dialogs.requests[0].title, QStringLiteral("Dateien brennen"));
    window->ExplorerListView1->itemDoubleClicked(Row(0), 0);
    EXPECT_EQ(Row(0)->checkState(0), Qt::Unchecked);
    window->ExplorerListView1->itemDoubleClicked(Row(0), 0);
    EXPECT_EQ(Row(0)->checkState(0), Qt::Checked);

    // Removing rows 1 and 2 selects what moved into row 1, so the next press goes on.
    Row(1)->setSelected(true);
    Row(2)->setSelected(true);
    window->Command12_Click();
    ASSERT_EQ(Rows(), 2);
    EXPECT_TRUE(Row(1)->isSelected());
    EXPECT_EQ(Row(1)->text(0), QString::fromStdString(source.string()));

    const fs::path list = root / "liste.txt";
    dialogs.answers = {{QString::fromStdString(list.string())}};
    window->Command13_Click();
    EXPECT_EQ(dialogs.requests.back().initialName, QStringLiteral("Diskolo.txt"));
    const QString text = files[0] + "\r\n" + QString::fromStdString(source.string()) + "\r\n";
    std::string expected = "\xFF\xFE";
    for (const QChar c : text) {
        expected += static_cast<char>(c.unicode() & 0xFF);
        expected += static_cast<char>(c.unicode() >> 8);
    }
    EXPECT_EQ(ReadBytes(list), expected);

    // Loading appends what still exists, measured anew.
    window->Command11_Click();
    dialogs.answers = {{QString::fromStdString(list.string())}};
    window->Command13_Click();
    ASSERT_FALSE(boxes.boxes.empty());
    EXPECT_EQ(boxes.boxes.back().text, QStringLiteral("Keine Daten zum Speichern vorhanden?"));
    EXPECT_EQ(boxes.boxes.back().style, MsgBoxStyle::Critical);
    fs::remove(files[0].toStdString());
    WriteFile(source / "neu.bin", 1000);
    dialogs.answers = {{QString::fromStdString(list.string())},
                       {QString::fromStdString(list.string())}};
    window->Command14_Click();
    window->Command14_Click();
    ASSERT_EQ(Rows(), 2);
    EXPECT_EQ(Row(1)->text(2), QStringLiteral("9000"));

    // Another page shows its own rows; coming back brings the compilation back.
    boxes.answers = {vbNo};
    ShowPage(kPageRip);
    EXPECT_EQ(boxes.boxes.back().text,
              QStringLiteral("Wollen sie die Zusammenstellung vorher noch speichern?"));
    ASSERT_GT(Rows(), 0);
    EXPECT_EQ(Row(0)->text(0), QStringLiteral("1"));  // the disc's first track
    ShowPage(kPageBurn);
    EXPECT_EQ(Rows(), 2);
}

TEST_F(AuthoringPerson, TheUsageBarsFollowTheDiscAndTheCompilation) {
    // Half of a 100 MB disc written, the session open for more.
    constexpr int64_t kSectors = 51200;
    StartWith(WriteDisc("TinyTracks", root / "disc"),
              {authoring::MediaState::Appendable, kSectors, kSectors / 2});
    window->resize(800, 600);
    ShowPage(kPageBurn, false);
    EXPECT_EQ(Status(), QStringLiteral("50 % der Disk belegt 50 / 100 MB"));
    const int total = window->PictureTotal->width() - 2;
    EXPECT_NEAR(window->PictureUsed->width(), total / 2, 1);

    // A compilation that exactly fills the free space is too large.
    WriteFile(root / "voll.bin", 50 * 1048576);
    dialogs.answers = {{QString::fromStdString((root / "voll.bin").string())}};
    window->Command11_Click();
    window->Command10_Click();
    EXPECT_EQ(Status(), QStringLiteral("Zusammenstellung zu groß für die Disk!"));
    EXPECT_EQ(window->PictureNewValue->width(), total - window->PictureUsed->width());
    EXPECT_EQ(window->Label5[1]->text().right(3), QStringLiteral(" MB"));
}

TEST_F(AuthoringPerson, AClosedDiscFillsTheBarAndAnEmptyDriveSaysSo) {
    StartWith(WriteDisc("TinyTracks", root / "disc"), {authoring::MediaState::Closed, 1000, 0});
    ShowPage(kPageBurn, false);
    EXPECT_EQ(Status(), QStringLiteral("100 % der Disk belegt"));
    EXPECT_EQ(window->PictureUsed->width(), window->PictureTotal->width() - 2);
    window->Command11_Click();
    EXPECT_EQ(Status(), QStringLiteral("100 % der Disk belegt!"));

    startup.reset();
    StartWith(WriteDisc("TinyTracks", root / "disc2"), {authoring::MediaState::NoDisc, 0, 0});
    ShowPage(kPageBurn, false);
    EXPECT_EQ(Status(), QStringLiteral("Keine Disk im Laufwerk"));
    EXPECT_TRUE(window->PictureUsed->isHidden());
    window->Command11_Click();
    EXPECT_EQ(Status(), QStringLiteral("Keine CD im Laufwerk!"));
}

}  // namespace
