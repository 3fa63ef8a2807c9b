// The ripping page as a person uses it: a disc in the image drive, tracks checked with the
// selection commands, a format and a target folder chosen, then "Starten"; what lands in the
// "Ergebnis" column and in the folder, the refusals, stopping a job (also an image's), leaving
// the page while a rip runs, F9 and the target folder dialog. The player plays into a recording
// audio output and the door button opens and closes the tray.
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <set>

#include "TabStrip.h"
#include "TrackListView.h"
#include "WindowTestSupport.h"
#include "audiocd/CdAudioTestSink.h"
#include "scsi/StubTransport.h"

using namespace plattmix;
using namespace plattmix::window;
using namespace plattmix::window::test;
namespace fs = std::filesystem;

namespace {

constexpr int kWav = 6;
enum Selection { kAll = 0, kNothing = 1, kEven = 3 };
const QString kWriting = QStringLiteral("Schreibe...");
const QStringList kAllDone = {"Track01.wav -->Fertig", "Track02.wav -->Fertig",
                              "Track03.wav -->Fertig"};

class RipPerson : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        disc = DiscOf("AudioThreeTracks", root / "disc");
        UseImages({disc.cuePath.string()});
        auto options = Options();
        options.window.audioSinks = plattmix::test::TestSinks(sound);
        window = StartShown(options);
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
    // The "Ergebnis" column of every row.
    QStringList Results() const {
        QStringList texts;
        for (int row = 0; row < Rows(); ++row)
            texts << List().topLevelItem(row)->text(5);
        return texts;
    }

    // The names of the files in folder; the rip job's tests check their bytes.
    static std::set<std::string> FilesIn(const fs::path& folder) {
        std::set<std::string> files;
        if (fs::exists(folder))
            for (const auto& entry : fs::directory_iterator(folder))
                files.insert(entry.path().filename().string());
        return files;
    }

    TrackListView& List() const { return *window->ExplorerListView1; }
    QString Result(int page, int row) const {
        const QTreeWidgetItem* item = List().PageRow(page, row);
        return item != nullptr ? item->text(5) : QStringLiteral("<keine Zeile>");
    }
    void Key(QEvent::Type type, int key) {
        QKeyEvent event(type, key, Qt::NoModifier);
        QApplication::sendEvent(window->ExplorerListView1, &event);
    }
    // The rows' check marks, 'x' for checked.
    std::string Checked() const {
        std::string checked;
        for (int i = 0; i < Rows(); ++i)
            checked += List().topLevelItem(i)->checkState(0) == Qt::Checked ? 'x' : '.';
        return checked;
    }

    // A fresh run: WAV, the target typed in, the "Ergebnis" column cleared.
    void Prepare(const fs::path& target) {
        window->ComboBox3->setCurrentIndex(kWav);
        TypeTarget(target);
        for (int row = 0; row < Rows(); ++row)
            window->ExplorerListView1->topLevelItem(row)->setText(5, QString());
    }

    discgen::DiscDescription disc;
    std::shared_ptr<plattmix::test::SinkRecord> sound =
        std::make_shared<plattmix::test::SinkRecord>();
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
    EXPECT_TRUE(boxes.empty());
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
    EXPECT_EQ(Results(), (QStringList{"", "01Lied .wav -->Fertig", ""}));
    EXPECT_EQ(FilesIn(target), std::set<std::string>{"01Lied .wav"});
    EXPECT_FALSE(window->isBusy);
    EXPECT_TRUE(boxes.empty());
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
        boxes.clear();
        Prepare(root / "Ziel");
        Choose(kAll);
        c.prepare();
        PressStart();
        ASSERT_EQ(boxes.size(), 1u);
        EXPECT_EQ(boxes[0].text, c.text);
        EXPECT_EQ(boxes[0].style, c.style);
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
    boxAnswers.push_back(vbYes);
    PressStart();

    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].style, MsgBoxStyle::QuestionYesNo);
    EXPECT_EQ(Results(), kAllDone);
    EXPECT_EQ(FilesIn(target),
              (std::set<std::string>{"Track01.wav", "Track02.wav", "Track03.wav"}));
    // The finished job closed the program, which saved its settings.
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(Setting("Unload"), "1");
}

TEST_F(RipPerson, StoppingDuringARipEndsItAtTheNextTrackAndKeepsTheWindow) {
    // Pressed as the third track starts: it is not begun. A close during a job is tested with
    // an image.
    const struct {
        const char* what;
        std::function<void()> stop;
    } cases[] = {
        {"Abbrechen", [&] { window->Command2->click(); }},
        {"F9", [&] { Key(QEvent::KeyRelease, Qt::Key_F9); }},
    };
    const QStringList stopped = {"Track01.wav -->Fertig", "Track02.wav -->Fertig", "Abbruch"};
    window->Check1->setChecked(true);  // a stopped job does not close the window
    ASSERT_TRUE(ImageDriveOf(*window).SetReadSpeed(FirstDrive(*window), 8));
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const fs::path target = root / c.what;
        Prepare(target);
        Choose(kAll);
        OnceWhen(
            window, window->ExplorerListView1, &QTreeWidget::itemChanged,
            [&] { return Results()[2] == kWriting; }, c.stop);
        PressStart();

        EXPECT_EQ(Results(), stopped);
        EXPECT_EQ(FilesIn(target), (std::set<std::string>{"Track01.wav", "Track02.wav"}));
        EXPECT_TRUE(window->Abbort);
        EXPECT_FALSE(window->isBusy);
        EXPECT_TRUE(window->isVisible());
    }
    EXPECT_TRUE(boxes.empty());
}

TEST_F(RipPerson, UnreadableTrackIsToldAndTheOthersAreRipped) {
    ASSERT_TRUE(
        ImageDriveOf(*window).AddReadError(FirstDrive(*window), disc.tracks[1].startLba + 100, 1));
    Prepare(root / "Ziel");
    Choose(kAll);
    PressStart();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_TRUE(boxes[0].text.startsWith(QStringLiteral("Lesefehler in Range ")));
    EXPECT_EQ(boxes[0].style, MsgBoxStyle::Exclamation);
    EXPECT_EQ(Results(), (QStringList{"Track01.wav -->Fertig", kWriting, "Track03.wav -->Fertig"}));
}

TEST_F(RipPerson, ARipKeepsWritingItsOwnRowsWhileAnotherPageIsShown) {
    Prepare(root / "Ziel");
    Choose(kAll);
    QString isoResult = QStringLiteral("<nie gezeigt>");
    // Away while the first track is read; back while the second is.
    OnceWhen(
        window, &List(), &QTreeWidget::itemChanged, [&] { return Result(kPageRip, 0) == kWriting; },
        [&] {
            window->TabStrip1->setCurrentIndex(kPageIso);
            isoResult = Result(kPageIso, 0);
        });
    OnceWhen(
        window, window->ProgressBar1, &QProgressBar::valueChanged,
        [&] { return List().ShownPage() == kPageIso && Result(kPageRip, 1) == kWriting; },
        [&] { window->TabStrip1->setCurrentIndex(kPageRip); });
    window->mnuSave->trigger();

    ASSERT_EQ(List().ShownPage(), kPageRip);
    EXPECT_EQ(Results(), kAllDone);
    // The image page's one row was left alone.
    EXPECT_EQ(isoResult, QString());
    EXPECT_EQ(List().PageRowCount(kPageIso), 1);
    EXPECT_EQ(Result(kPageIso, 0), QString());
    // No refresh is due that would read the track list anew and drop the results.
    EXPECT_FALSE(window->Timer2->isActive());
    EXPECT_TRUE(boxes.empty());
}

TEST_F(RipPerson, EscapeTappedDuringTheListingOrACloseEndTheImageAsAnAbort) {
    const fs::path source = root / "Quelle";
    WriteFile(source / "a.bin", std::string(300000, 'x'));
    WriteFile(source / "Unterordner" / "b.bin", std::string(300000, 'x'));
    TypeTarget(root / "Ziel");
    window->TabStrip1->setCurrentIndex(kPageIso);
    window->Text2->setText(QString::fromStdString(source.string()));
    const fs::path image = root / "Ziel" / "Track.iso";

    const auto tapEscape = [&] {
        Key(QEvent::KeyPress, Qt::Key_Escape);
        Key(QEvent::KeyRelease, Qt::Key_Escape);
    };
    // The window refuses the close and sets the job to stop; the Start that follows must not
    // begin a second job (nor clear the stop).
    const auto closeThenStart = [&] {
        EXPECT_FALSE(window->close());
        window->mnuSave->trigger();
        EXPECT_TRUE(window->Abbort);
    };
    OnceWhen(
        window, &List(), &QTreeWidget::itemChanged, [&] { return Result(kPageIso, 0) == kWriting; },
        tapEscape);
    window->mnuSave->trigger();
    EXPECT_EQ(Result(kPageIso, 0), QStringLiteral("Abbruch"));
    EXPECT_FALSE(fs::exists(image));

    OnceWhen(
        window, window->ProgressBar1, &QProgressBar::valueChanged,
        [&] { return window->ProgressBar1->value() > 0; }, closeThenStart);
    window->mnuSave->trigger();
    EXPECT_EQ(Result(kPageIso, 0), QStringLiteral("Abbruch"));
    EXPECT_FALSE(fs::exists(image));
    EXPECT_TRUE(window->isVisible());
    EXPECT_FALSE(window->isBusy);
    EXPECT_TRUE(boxes.empty());

    // Without a key or a close the same folder becomes an image.
    window->mnuSave->trigger();
    EXPECT_EQ(Result(kPageIso, 0), QStringLiteral("Fertig"));
    EXPECT_TRUE(fs::exists(image));
}

TEST_F(RipPerson, F9ClosesTheIdleWindowOnRelease) {
    Key(QEvent::KeyPress, Qt::Key_F9);
    Key(QEvent::KeyRelease, Qt::Key_F8);
    EXPECT_TRUE(window->isVisible());
    Key(QEvent::KeyRelease, Qt::Key_F9);
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(Setting("Text1"), "Track");
}

TEST_F(RipPerson, ChosenTargetFolderBecomesTheTextAndARecentFolder) {
    window->cmdOpen->click();  // cancelled: nothing changes
    EXPECT_EQ(window->ComboBox1->count(), 0);
    const QString folder = QString::fromStdString((root / "Musik").string());
    dialogAnswers.push_back({folder});
    window->cmdOpen->click();
    EXPECT_EQ(dialogs.back().kind, DialogKind::Folder);
    EXPECT_EQ(dialogs.back().title,
              QStringLiteral("Ziel-Ordner auswählen, in dem gespeichert werden sollen"));
    EXPECT_EQ(window->ComboBox1->currentText(), folder + "/");
    EXPECT_EQ(window->ComboBox1->count(), 1);
    EXPECT_EQ(shell::ReadIniSection(SettingsFile().string(), "ComboBox1"),
              std::vector<std::string>{folder.toStdString() + "/"});
}

TEST_F(RipPerson, SelectionCommandsCheckTheRowsTheyName) {
    const std::pair<int, const char*> cases[] = {
        {0, "xxx"},  // Alles
        {1, "..."},  // Nichts
        {3, ".x."},  // Gerade Tracks
        {2, "x.x"},  // Auswahl umkehren
        {4, "x.x"},  // Ungerade Tracks
        {5, ".xx"},  // Unterhalb der Markierung: row 1 is the current row
        {6, "xx."},  // Oberhalb der Markierung
        {7, "x.x"},  // Alle Selektierten: rows 0 and 2
    };
    auto* list = window->ExplorerListView1;
    list->setCurrentItem(list->topLevelItem(1));
    for (const auto& [command, checked] : cases) {
        if (command >= 4)  // these only add checks
            Choose(kNothing);
        if (command == 7) {
            list->topLevelItem(0)->setSelected(true);
            list->topLevelItem(2)->setSelected(true);
        }
        Choose(command);
        EXPECT_EQ(Checked(), checked) << "command " << command;
    }
}

TEST_F(RipPerson, PlayShowsTheTrackAndItsTimeAndStopEndsIt) {
    sound->Hold(2);  // the player stays in the track while the test looks
    QTreeWidgetItem* second = List().topLevelItem(1);
    window->ExplorerListView1->setCurrentItem(second);
    window->Command5[0]->click();
    ASSERT_TRUE(boxes.empty()) << boxes.front().text.toStdString();
    ASSERT_TRUE(sound->WaitForCalls(3));
    EXPECT_TRUE(window->Timer6->isActive());
    window->Timer6_Timer();
    EXPECT_TRUE(second->text(5).startsWith(QStringLiteral("[02] <00:00> ")))
        << second->text(5).toStdString();
    EXPECT_TRUE(Results()[0].isEmpty());

    window->Command6->click();
    EXPECT_FALSE(window->Timer6->isActive());
    EXPECT_TRUE(second->text(5).isEmpty());
    sound->Release();
    EXPECT_GT(sound->Bytes().size(), 0u);
}

TEST_F(RipPerson, WithoutAnAudioOutputPlayTellsWhyAndTheDriveStillAnswers) {
    sound->openError = "Keine Audioausgabe verfügbar.";
    window->Command5[0]->click();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_TRUE(boxes[0].text.contains(QStringLiteral("Keine Audioausgabe verfügbar.")));
    EXPECT_FALSE(window->Timer6->isActive());
    window->Timer2_Timer();
    EXPECT_EQ(Rows(), 3);
}

TEST_F(RipPerson, TheDoorButtonOpensAndClosesTheTrayAndSaysWhatComesNext) {
    window->Command4->click();
    EXPECT_EQ(window->Command4->text(), QStringLiteral("Schließen"));
    window->Timer2_Timer();  // the refresh asks the tray again
    EXPECT_EQ(window->Command4->text(), QStringLiteral("Schließen"));
    window->Command4->click();
    EXPECT_EQ(window->Command4->text(), QStringLiteral("Disk Auswerfen"));
    EXPECT_TRUE(boxes.empty());
    // The drive reports the changed medium once; "Aktualisieren" then reads the disc.
    window->Timer2_Timer();
    window->Timer2_Timer();
    EXPECT_EQ(Rows(), 3);
}
