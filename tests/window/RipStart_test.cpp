// The Start command on the ripping page as a person uses it: a disc in the image drive, tracks
// checked with the selection commands, a format and a target folder chosen, then "Starten";
// what lands in the "Ergebnis" column and in the folder, the refusals, and stopping a rip.
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <algorithm>
#include <map>

#include "DiscWriter.h"
#include "Fixtures.h"
#include "TrackListView.h"
#include "WindowTestSupport.h"
#include "scsi/StubTransport.h"

using namespace plattmix;
using namespace plattmix::window;
using namespace plattmix::window::test;
namespace fs = std::filesystem;

namespace {

constexpr int kWav = 6;
enum Selection { kAll = 0, kNothing = 1, kEven = 3 };
const QString kWriting = QStringLiteral("Schreibe...");
const QString kDone = QStringLiteral(" -->Fertig");

class RipPerson : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        const auto written = discgen::WriteDisc(discgen::AudioThreeTracks(), root / "disc");
        ASSERT_TRUE(written.ok()) << written.error;
        disc = *written.value;
        UseImages({disc.cuePath.string()});
        window = StartShown(Options());
        ASSERT_NE(window, nullptr);
        ASSERT_EQ(Rows(), static_cast<int>(disc.tracks.size()));
    }

    int Rows() const { return window->ExplorerListView1->topLevelItemCount(); }
    void Choose(int command) { window->ComboBox2->activated(command); }
    // Typed into the target folder's box, without a trailing "/".
    void TypeTarget(const fs::path& folder) {
        window->ComboBox1->setEditText(QString::fromStdString(folder.string()));
    }
    void PressStart() { window->mnuSave->trigger(); }
    QStringList Results() const { return window::test::Results(*window); }

    // 44 header bytes and the track's audio up to the sector before the next track; the last
    // track leaves off 150 more.
    uintmax_t WavBytes(int row) const {
        int32_t sectors = disc.tracks[static_cast<size_t>(row)].lengthSectors - 1;
        if (row == Rows() - 1)
            sectors -= 150;
        return 44u + static_cast<uintmax_t>(sectors) * discgen::kAudioSectorBytes;
    }

    // Every file in folder with its size.
    static std::map<std::string, uintmax_t> FilesIn(const fs::path& folder) {
        std::map<std::string, uintmax_t> files;
        if (fs::exists(folder))
            for (const auto& entry : fs::directory_iterator(folder))
                files[entry.path().filename().string()] = entry.file_size();
        return files;
    }
    // The files the finished rows name, with the sizes their tracks give.
    std::map<std::string, uintmax_t> FilesOf(const QStringList& results) const {
        std::map<std::string, uintmax_t> files;
        for (int row = 0; row < results.size(); ++row)
            if (results[row].endsWith(kDone))
                files[results[row].chopped(kDone.size()).toStdString()] = WavBytes(row);
        return files;
    }

    // A fresh run: WAV, the target typed in, the "Ergebnis" column cleared.
    void Prepare(const fs::path& target) {
        window->ComboBox3->setCurrentIndex(kWav);
        TypeTarget(target);
        for (int row = 0; row < Rows(); ++row)
            window->ExplorerListView1->topLevelItem(row)->setText(5, QString());
    }

    discgen::DiscDescription disc;
    frmMain* window = nullptr;
};

}  // namespace

TEST_F(WindowTest, TableOfContentsWithoutTracksAsksForAnotherDisc) {
    // A drive that answers every command with a table of contents of the lead-out alone.
    StartupOptions options = Options();
    options.window.firstTransport = [] {
        auto drive = std::make_unique<plattmix::test::StubTransport>();
        drive->reply = {0, 10, 1, 0, 0, 0x10, 0xAA, 0, 0, 0, 2, 0};
        return drive;
    };
    frmMain* window = StartShown(options);
    ASSERT_NE(window, nullptr);
    ASSERT_EQ(window->cboDrv->count(), 1);
    EXPECT_EQ(window->ExplorerListView1->topLevelItemCount(), 0);
    EXPECT_EQ(window->ExplorerListView1->EmptyListText(),
              QStringLiteral("Keine Audio CD im Laufwerk ---> Button Aktualisieren"));
    EXPECT_FALSE(window->IsDataCD);
    EXPECT_TRUE(boxes.boxes.empty());
}

// The naming controls reach the job; the naming rules themselves are the rip job's to test.
TEST_F(RipPerson, CheckedTracksBecomeFilesNamedAsChosen) {
    // Two levels below a folder that does not exist yet.
    const fs::path target = root / "Ziel" / "Musik";
    Prepare(target);
    window->Text1->setText(QStringLiteral("Lied "));
    window->OptNameCounter[1]->click();  // "Laufende Nummer"
    window->Check2->setChecked(true);    // the number first
    Choose(kEven);
    PressStart();
    const QStringList results = {"", "01Lied .wav -->Fertig", ""};
    EXPECT_EQ(Results(), results);
    EXPECT_EQ(FilesIn(target), FilesOf(results));
    EXPECT_FALSE(window->isBusy);
    EXPECT_TRUE(boxes.boxes.empty());
}

TEST_F(RipPerson, RefusedStartWritesNothingAndSaysWhy) {
    const QString noTarget = QStringLiteral("Bitte einen gültigen Ziel-Pfad eingeben");
    const struct {
        const char* what;
        std::function<void()> prepare;
        QString text;
        MsgBoxStyle style;
    } cases[] = {
        {"no target", [&] { TypeTarget({}); }, noTarget, MsgBoxStyle::Exclamation},
        {"nothing checked, No", [&] { Choose(kNothing); },
         "Keine Tracks angehakt!\r\nWollen sie alle Tracks auswählen und starten?",
         MsgBoxStyle::QuestionYesNo},
        // The empty list is told before the target is looked at.
        {"no disc",
         [&] {
             ASSERT_TRUE(ImageDriveOf(*window).RemoveMedium(FirstDrive(*window)));
             window->cboDrv_Click();  // read anew, as "Aktualisieren" does
             TypeTarget({});
             window->Text1->clear();
         },
         "Keine Tracks vorhannden!", MsgBoxStyle::Exclamation},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        boxes.boxes.clear();
        Prepare(root / "Ziel");
        Choose(kAll);
        c.prepare();
        PressStart();
        ASSERT_EQ(boxes.boxes.size(), 1u);
        EXPECT_EQ(boxes.boxes[0].text, c.text);
        EXPECT_EQ(boxes.boxes[0].style, c.style);
        EXPECT_EQ(Results(), QStringList(Rows(), QString()));
        EXPECT_TRUE(FilesIn(root / "Ziel").empty());
        EXPECT_FALSE(window->isBusy);
        if (c.text == noTarget) {
            EXPECT_FALSE(fs::exists(root / "Ziel"));
        }
    }
    EXPECT_EQ(window->ExplorerListView1->EmptyListText(),
              QStringLiteral("Keine Tracks vorhannden!"));
}

TEST_F(RipPerson, NothingCheckedAnsweredYesRipsEveryTrackAndCheck1Closes) {
    window->Check1->setChecked(true);
    const fs::path target = root / "Alle";
    Prepare(target);
    boxes.answers.push_back(vbYes);
    PressStart();

    ASSERT_EQ(boxes.boxes.size(), 1u);
    EXPECT_EQ(boxes.boxes[0].style, MsgBoxStyle::QuestionYesNo);
    const QStringList all = {"Track01.wav -->Fertig", "Track02.wav -->Fertig",
                             "Track03.wav -->Fertig"};
    EXPECT_EQ(Results(), all);
    EXPECT_EQ(FilesIn(target), FilesOf(all));
    // The finished job closed the program, which saved its settings.
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(ReadSettingsValue(SettingsFile(), "Diskolo", "Unload"), "1");
}

TEST_F(RipPerson, StoppingDuringARipEndsItAtTheNextTrackAndKeepsTheWindow) {
    // Pressed as the third track starts: it is not begun. A close during a job is tested with
    // an image.
    const struct {
        const char* what;
        std::function<void()> stop;
    } cases[] = {
        {"Abbrechen", [&] { window->Command2->click(); }},
        {"F9",
         [&] {
             QKeyEvent release(QEvent::KeyRelease, Qt::Key_F9, Qt::NoModifier);
             QApplication::sendEvent(window->ExplorerListView1, &release);
         }},
    };
    const QStringList stopped = {"Track01.wav -->Fertig", "Track02.wav -->Fertig", "Abbruch"};
    window->Check1->setChecked(true);  // a stopped job does not close the window
    ASSERT_TRUE(ImageDriveOf(*window).SetReadSpeed(FirstDrive(*window), 8));
    int n = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const fs::path target = root / ("Halt" + std::to_string(n++));
        Prepare(target);
        Choose(kAll);
        OnceWhen(
            window, window->ExplorerListView1, &QTreeWidget::itemChanged,
            [&] { return Results()[2] == kWriting; }, c.stop);
        PressStart();

        EXPECT_EQ(Results(), stopped);
        EXPECT_EQ(FilesIn(target), FilesOf(stopped));
        EXPECT_TRUE(window->Abbort);
        EXPECT_FALSE(window->isBusy);
        EXPECT_TRUE(window->isVisible());
    }
    EXPECT_TRUE(boxes.boxes.empty());
}

TEST_F(RipPerson, UnreadableTrackIsToldAndTheOthersAreRipped) {
    ASSERT_TRUE(
        ImageDriveOf(*window).AddReadError(FirstDrive(*window), disc.tracks[1].startLba + 100, 1));
    Prepare(root / "Ziel");
    Choose(kAll);
    PressStart();
    ASSERT_EQ(boxes.boxes.size(), 1u);
    EXPECT_TRUE(boxes.boxes[0].text.startsWith(QStringLiteral("Lesefehler in Range ")));
    EXPECT_EQ(boxes.boxes[0].style, MsgBoxStyle::Exclamation);
    EXPECT_EQ(Results(), (QStringList{"Track01.wav -->Fertig", kWriting, "Track03.wav -->Fertig"}));
}
