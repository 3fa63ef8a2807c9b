// From start to end: the settings file, a second copy, no transport, the disc images, the two
// settings the window keeps.
#include <QCheckBox>
#include <QLineEdit>
#include <QLockFile>
#include <fstream>

#include "TransportSelection.h"
#include "WindowTestSupport.h"

using namespace plattmix;
using namespace plattmix::window;
using namespace plattmix::window::test;

TEST_F(WindowTest, FirstStartCreatesTheSettingsFileAndTheSettingsComeBackAtTheNextStart) {
    // The very first start: the settings file is created with just the mark before anything
    // reads it (this start ends, as no drive and no image is there yet).
    const std::string disc = WriteDisc("AudioThreeTracks", root / "disc");
    ASSERT_EQ(Start(), nullptr);
    EXPECT_EQ(ReadSettingsValue(SettingsFile(), "Diskolo", "Unload"), "<fehlt>");
    EXPECT_EQ(std::filesystem::file_size(SettingsFile()), 2u);  // the mark
    startup.reset();

    UseImages({disc});
    frmMain* window = StartShown();
    ASSERT_NE(window, nullptr);
    EXPECT_FALSE(window->Check1->isChecked());
    EXPECT_TRUE(window->Text1->text().isEmpty());
    window->close();
    EXPECT_EQ(ReadSettingsValue(SettingsFile(), "Diskolo", "Unload"), "0");
    EXPECT_EQ(ReadSettingsValue(SettingsFile(), "Diskolo", "Text1"), "Track");
    EXPECT_EQ(ReadSettingsValue(SettingsFile(), "Diskolo", "Pruefen"), "<fehlt>");
    startup.reset();

    window = StartShown();
    ASSERT_NE(window, nullptr);
    window->Check1->setChecked(true);
    window->Text1->setText(QStringLiteral("Lied"));
    window->close();
    startup.reset();
    window = Start();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->Check1->isChecked());
    EXPECT_EQ(window->Text1->text(), QStringLiteral("Lied"));
}

TEST_F(WindowTest, SecondCopyIsRefusedAndCreatesNothing) {
    QLockFile first(QString::fromStdString((root / "plattmix.lock").string()));
    ASSERT_TRUE(first.tryLock(0));
    EXPECT_EQ(Start(), nullptr);
    startup.reset();
    ASSERT_EQ(boxes.boxes.size(), 1u);
    EXPECT_EQ(boxes.boxes[0].text,
              QStringLiteral(
                  "Diese Anwendung ist bereits geladen und kann nur einmal gestartet werden!"));
    EXPECT_EQ(boxes.boxes[0].style, MsgBoxStyle::Exclamation);
    EXPECT_EQ(boxes.boxes[0].title, QStringLiteral("Plattmix"));
    EXPECT_FALSE(std::filesystem::exists(appData / "Trovalis"));

    // Once the first copy has ended the lock is free again.
    first.unlock();
    UseImages({WriteDisc("AudioThreeTracks", root / "disc")});
    ASSERT_NE(Start(), nullptr);
    startup.reset();
    EXPECT_NE(Start(), nullptr);
    EXPECT_EQ(boxes.boxes.size(), 1u);
}

TEST_F(WindowTest, NoTransportEndsWithTheTwoLineMessage) {
    EXPECT_EQ(Start(), nullptr);
    ASSERT_EQ(boxes.boxes.size(), 1u);
    EXPECT_EQ(boxes.boxes[0].text, QStringLiteral("Kein funktionierendes Interface gefunden!\r\n"
                                                  "Programm kann nicht verwendet werden."));
    EXPECT_EQ(boxes.boxes[0].style, MsgBoxStyle::Exclamation);
    // Nothing was loaded or saved.
    EXPECT_EQ(ReadSettingsValue(SettingsFile(), "Diskolo", "Unload"), "<fehlt>");
    EXPECT_EQ(startup->Window(), nullptr);
    startup.reset();

    // Images that all fail are no transport either.
    UseImages({(root / "fehlt.cue").string()});
    EXPECT_EQ(Start(), nullptr);
    ASSERT_EQ(boxes.boxes.size(), 3u);
    EXPECT_EQ(boxes.boxes[2].text, QString::fromUtf8(plattmix::scsi::kNoTransportMessage));
}

TEST_F(WindowTest, ImageThatFailsIsNamedOnceAndTheOthersAreUsed) {
    const std::string good = WriteDisc("AudioThreeTracks", root / "disc");
    const std::string missing = (root / "fehlt.cue").string();
    const std::string broken = (root / "kaputt.cue").string();
    std::ofstream(broken) << "FILE \"nichts.bin\" BINARY\n  TRACK 01 AUDIO\n";
    UseImages({missing, good, broken});
    frmMain* window = StartShown();
    ASSERT_NE(window, nullptr);
    ASSERT_EQ(boxes.boxes.size(), 1u);
    EXPECT_EQ(boxes.boxes[0].style, MsgBoxStyle::Exclamation);
    EXPECT_TRUE(boxes.boxes[0].text.contains(QString::fromStdString(missing)));
    EXPECT_TRUE(boxes.boxes[0].text.contains(QString::fromStdString(broken)))
        << boxes.boxes[0].text.toStdString();
    EXPECT_FALSE(boxes.boxes[0].text.contains(QString::fromStdString(good)));
    EXPECT_EQ(window->Transport()->DriveCount(), 1);
}
