// The Start command on the ripping page as a person uses it: a disc in the image drive, tracks
// checked with the selection commands, a format and a target folder chosen, then "Starten";
// what lands in the "Ergebnis" column and in the folder, the refusals, and stopping a rip.
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <algorithm>
#include <fstream>
#include <functional>
#include <map>

#include "DiscWriter.h"
#include "Fixtures.h"
#include "MediaProbe.h"
#include "TrackListView.h"
#include "WindowTestSupport.h"
#include "imagedrive/clsImageDrive.h"

using namespace plattmix;
using namespace plattmix::window;
using namespace plattmix::window::test;
namespace fs = std::filesystem;

namespace {

constexpr int kWav = 6;
constexpr int kMp3 = 0;
enum Selection { kAll = 0, kNothing = 1, kEven = 3, kOdd = 4 };
const QString kWriting = QStringLiteral("Schreibe...");
const QString kDone = QStringLiteral(" -->Fertig");

// Five audio tracks; the last is long enough to lose its 150 closing sectors and keep some.
discgen::DiscSpec FiveTracks() {
    discgen::DiscSpec spec = discgen::AudioThreeTracks();
    spec.name = "FiveTracks";
    for (const int32_t sectors : {150, 300}) {
        discgen::TrackSpec track = spec.tracks.back();
        track.sectors = sectors;
        track.title = "Spur 0" + std::to_string(spec.tracks.size() + 1);
        spec.tracks.push_back(track);
    }
    return spec;
}

class RipPerson : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        const auto written = discgen::WriteDisc(FiveTracks(), root / "disc");
        ASSERT_TRUE(written.ok()) << written.error;
        disc = *written.value;
        UseImages({disc.cuePath.string()});
        window = StartAndFill();
        ASSERT_NE(window, nullptr);
        window->show();
        ASSERT_EQ(Rows(), 5);
    }

    int Rows() const { return window->ExplorerListView1->topLevelItemCount(); }
    void Choose(int command) { window->ComboBox2->activated(command); }
    void ChooseFormat(int index) { window->ComboBox3->setCurrentIndex(index); }
    // Typed into the target folder's box, without a trailing "/".
    void TypeTarget(const fs::path& folder) {
        window->ComboBox1->setEditText(QString::fromStdString(folder.string()));
    }
    void PressStart() { window->mnuSave->trigger(); }

    QStringList Results() const {
        QStringList texts;
        for (int row = 0; row < Rows(); ++row)
            texts << window->ExplorerListView1->topLevelItem(row)->text(5);
        return texts;
    }

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
        ChooseFormat(kWav);
        TypeTarget(target);
        for (int row = 0; row < Rows(); ++row)
            window->ExplorerListView1->topLevelItem(row)->setText(5, QString());
    }

    // Runs what (a press, a key, a close) the first time condition holds when the job changes a
    // row, or its progress when onProgress; it reaches the window at the job's next yield.
    void StopWhen(std::function<bool()> condition, std::function<void()> what, bool onProgress) {
        auto fired = std::make_shared<bool>(false);
        const auto check = [this, condition, what, fired] {
            if (*fired || !condition())
                return;
            *fired = true;
            QMetaObject::invokeMethod(window, what, Qt::QueuedConnection);
        };
        if (onProgress)
            QObject::connect(window->ProgressBar1, &QProgressBar::valueChanged, window, check);
        else
            QObject::connect(window->ExplorerListView1, &QTreeWidget::itemChanged, window, check);
    }

    scsi::imagedrive::clsImageDrive& Drives() const {
        return dynamic_cast<scsi::imagedrive::clsImageDrive&>(*window->Transport());
    }
    std::string Handle() const {
        int16_t first = 1;
        return Drives().DriveHandle(first);
    }

    discgen::DiscDescription disc;
    MsgBoxRecorder boxes;
    frmMain* window = nullptr;
};

// The image drive, except that its table of contents lists the lead-out and no track.
class TocWithoutTracks final : public scsi::ISCSI {
  public:
    explicit TocWithoutTracks(const std::string& image) {
        EXPECT_TRUE(drive_.AddDrive(image).ok());
    }

    std::string Interface() const override { return drive_.Interface(); }
    uint8_t LastASCQ() const override { return drive_.LastASCQ(); }
    uint8_t LastASC() const override { return drive_.LastASC(); }
    uint8_t LastSK() const override { return drive_.LastSK(); }
    bool Initialized() override { return true; }
    bool Installed() override { return true; }
    int16_t DriveCount() const override { return drive_.DriveCount(); }
    std::string DriveChar(const std::string& handle) override { return drive_.DriveChar(handle); }
    std::string DriveHandle(int16_t& index) override { return drive_.DriveHandle(index); }
    uint8_t HostAdapter(const std::string& handle) override { return drive_.HostAdapter(handle); }
    uint8_t TargetId(const std::string& handle) override { return drive_.TargetId(handle); }
    uint8_t LUN(const std::string& handle) override { return drive_.LUN(handle); }
    int32_t ExecCMD(std::string& handle, std::span<const uint8_t> cdb, uint8_t& cdblen,
                    int32_t& direction, uint8_t* buffer, int32_t bufferLen,
                    int16_t& timeOut) override {
        constexpr uint8_t kReadToc = 0x43;
        if (cdb.empty() || cdb[0] != kReadToc || buffer == nullptr || bufferLen < 12)
            return drive_.ExecCMD(handle, cdb, cdblen, direction, buffer, bufferLen, timeOut);
        std::fill(buffer, buffer + bufferLen, uint8_t{0});
        const uint8_t reply[] = {0, 10, 1, 0, 0, 0x10, 0xAA, 0, 0, 0, 2, 0};
        std::copy(std::begin(reply), std::end(reply), buffer);
        return 0;
    }

  private:
    scsi::imagedrive::clsImageDrive drive_;
};

}  // namespace

TEST_F(WindowTest, TableOfContentsWithoutTracksAsksForAnotherDisc) {
    const std::string cue = WriteDisc("AudioThreeTracks", root / "disc");
    StartupOptions options = Options();
    options.window.firstTransport = [cue] { return std::make_unique<TocWithoutTracks>(cue); };
    startup = std::make_unique<Startup>(options);
    MsgBoxRecorder boxes;
    frmMain* window = startup->Start();
    ASSERT_NE(window, nullptr);
    WaitForDriveList(*window);
    ASSERT_EQ(window->cboDrv->count(), 1);
    EXPECT_EQ(window->ExplorerListView1->topLevelItemCount(), 0);
    EXPECT_EQ(window->ExplorerListView1->EmptyListText(),
              QStringLiteral("Keine Audio CD im Laufwerk ---> Button Aktualisieren"));
    EXPECT_FALSE(window->IsDataCD);
    EXPECT_TRUE(boxes.boxes.empty());
}

TEST_F(RipPerson, CheckedTracksBecomeFilesNamedAsChosen) {
    // The encoded formats have their own tests below.
    const struct {
        const char* prefix;
        bool runningNumber, numberFirst;
        int selection, format;
        QStringList results;
    } cases[] = {
        {"",
         true,
         false,
         kEven,
         kWav,
         {"", "Track01.wav -->Fertig", "", "Track02.wav -->Fertig", ""}},
        {"",
         false,
         true,
         kOdd,
         kWav,
         {"01Track.wav -->Fertig", "", "03Track.wav -->Fertig", "", "05Track.wav -->Fertig"}},
        {"Lied ",
         false,
         false,
         kEven,
         kWav,
         {"", "Lied 02.wav -->Fertig", "", "Lied 04.wav -->Fertig", ""}},
    };
    int highestProgress = 0;
    QObject::connect(window->ProgressBar1, &QProgressBar::valueChanged, window,
                     [&](int value) { highestProgress = std::max(highestProgress, value); });
    int n = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(n);
        // Two levels below a folder that does not exist yet.
        const fs::path target = root / ("Ziel" + std::to_string(n++)) / "Musik";
        Prepare(target);
        window->Text1->setText(QString::fromUtf8(c.prefix));
        window->OptNameCounter[c.runningNumber ? 1 : 0]->click();
        window->Check2->setChecked(c.numberFirst);
        Choose(kNothing);
        Choose(c.selection);
        ChooseFormat(c.format);
        highestProgress = 0;
        PressStart();

        EXPECT_EQ(Results(), c.results);
        EXPECT_EQ(FilesIn(target), FilesOf(c.results));
        EXPECT_TRUE(fs::is_directory(target));
        EXPECT_EQ(window->Text1->text(),
                  *c.prefix ? QString::fromUtf8(c.prefix) : QStringLiteral("Track"));
        EXPECT_FALSE(window->isBusy);
        EXPECT_EQ(window->ProgressBar1->value(), 0);
        EXPECT_GT(highestProgress, 0);  // the audio is read for every format
        EXPECT_TRUE(window->isVisible());
    }
    EXPECT_TRUE(boxes.boxes.empty());
}

TEST_F(RipPerson, RefusedStartWritesNothingAndSaysWhy) {
    const fs::path blocker = root / "datei";
    std::ofstream(blocker) << "kein Ordner";
    const QString noTarget = QStringLiteral("Bitte einen gültigen Ziel-Pfad eingeben");
    const struct {
        const char* what;
        std::function<void()> prepare;
        QString text;
        MsgBoxStyle style;
    } cases[] = {
        {"no target", [&] { TypeTarget({}); }, noTarget, MsgBoxStyle::Exclamation},
        {"target below a file", [&] { TypeTarget(blocker / "Musik"); }, noTarget,
         MsgBoxStyle::Exclamation},
        {"nothing checked, No", [&] { Choose(kNothing); },
         "Keine Tracks angehakt!\r\nWollen sie alle Tracks auswählen und starten?",
         MsgBoxStyle::QuestionYesNo},
        // The empty list is told before the target is looked at.
        {"no disc",
         [&] {
             ASSERT_TRUE(Drives().RemoveMedium(Handle()));
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
    EXPECT_EQ(window->Text1->text(), QStringLiteral("Track"));
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
                             "Track03.wav -->Fertig", "Track04.wav -->Fertig",
                             "Track05.wav -->Fertig"};
    EXPECT_EQ(Results(), all);
    EXPECT_EQ(FilesIn(target), FilesOf(all));
    // The finished job closed the program, which saved its settings.
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(ReadSettingsValue(SettingsFile(), "Diskolo", "Unload"), "1");
}

TEST_F(RipPerson, StoppingDuringARipEndsItAtTheNextTrackAndKeepsTheWindow) {
    const auto thirdStarts = [&] { return Results()[2] == kWriting; };
    // The second track is being read (slowly): it is finished, the third is not begun.
    const auto secondIsRead = [&] {
        return Results()[1] == kWriting && window->ProgressBar1->value() > 0;
    };
    const struct {
        const char* what;
        std::function<bool()> when;
        bool onProgress;
        std::function<void()> stop;
    } cases[] = {
        {"Abbrechen", thirdStarts, false, [&] { window->Command2->click(); }},
        {"F9", thirdStarts, false,
         [&] {
             QKeyEvent release(QEvent::KeyRelease, Qt::Key_F9, Qt::NoModifier);
             QApplication::sendEvent(window->ExplorerListView1, &release);
         }},
        {"close", secondIsRead, true, [&] { EXPECT_FALSE(window->close()); }},
    };
    const QStringList stopped = {"Track01.wav -->Fertig", "Track02.wav -->Fertig", "Abbruch", "",
                                 ""};
    window->Check1->setChecked(true);
    ASSERT_TRUE(Drives().SetReadSpeed(Handle(), 8));
    int n = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const fs::path target = root / ("Halt" + std::to_string(n++));
        Prepare(target);
        Choose(kAll);
        StopWhen(c.when, c.stop, c.onProgress);
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
    ASSERT_TRUE(Drives().AddReadError(Handle(), disc.tracks[1].startLba + 100, 1));
    Prepare(root / "Ziel");
    Choose(kAll);
    PressStart();
    ASSERT_EQ(boxes.boxes.size(), 1u);
    EXPECT_TRUE(boxes.boxes[0].text.startsWith(QStringLiteral("Lesefehler in Range ")));
    EXPECT_EQ(boxes.boxes[0].style, MsgBoxStyle::Exclamation);
    EXPECT_EQ(Results(), (QStringList{"Track01.wav -->Fertig", kWriting, "Track03.wav -->Fertig",
                                      "Track04.wav -->Fertig", "Track05.wav -->Fertig"}));
}

namespace {

// One track of a minute: its conversion runs long enough for the window to be polled.
class ConvertPerson : public RipPerson {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        discgen::DiscSpec spec = discgen::AudioThreeTracks();
        spec.name = "OneMinute";
        spec.tracks.resize(1);
        spec.tracks[0].sectors = 60 * 75;
        const auto written = discgen::WriteDisc(spec, root / "disc");
        ASSERT_TRUE(written.ok()) << written.error;
        disc = *written.value;
        UseImages({disc.cuePath.string()});
        window = StartAndFill();
        ASSERT_NE(window, nullptr);
        window->show();
    }
};

}  // namespace

TEST_F(ConvertPerson, AbbrechenDuringAConversionStopsItAndLeavesNoFile) {
    const fs::path target = root / "mp3";
    ChooseFormat(kMp3);
    TypeTarget(target);
    Choose(kAll);
    // Pressed while the track is read; the encoder sees it at its first poll.
    StopWhen([&] { return Results()[0] == kWriting && window->ProgressBar1->value() >= 50; },
             [&] { window->Command2->click(); }, true);
    PressStart();
    EXPECT_EQ(Results(), QStringList{"Abbruch"});
    EXPECT_TRUE(FilesIn(target).empty());
    EXPECT_TRUE(window->isVisible());
    EXPECT_FALSE(window->isBusy);
}

TEST_F(ConvertPerson, OtherFormatsAreEncodedAndTagged) {
    const fs::path target = root / "flac";
    ChooseFormat(3);  // "Flac Format"
    TypeTarget(target);
    Choose(kAll);
    PressStart();
    EXPECT_EQ(Results(), QStringList{"Track01.flac -->Fertig"});
    const auto probed = encode::ProbeAudioFile((target / "Track01.flac").string());
    ASSERT_TRUE(probed);
    EXPECT_EQ(probed->codec, "flac");
    EXPECT_EQ(probed->tags.at("title"), disc.tracks[0].title);
    EXPECT_EQ(probed->tags.at("album"), disc.title);
}
