// The cdaudio device playing generated discs from the disc-image drive into a test sink (and once
// into ALSA): the bytes delivered, the status while playing, stop, the door, and what each
// failure leaves; positions in its command strings.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "AlsaSink.h"
#include "CdAudio.h"
#include "CdAudioDoor.h"
#include "CdAudioErrors.h"
#include "CdAudioSharedTransport.h"
#include "CdAudioTestSink.h"
#include "Fixtures.h"
#include "RipRig.h"
#include "TrackList.h"
#include "TrayState.h"
#include "imagedrive/clsImageDrive.h"
#include "modMMC.h"

using namespace plattmix;
using audiocd::CdAudio;
using audiocd::FramesToMilliseconds;
using audiocd::MciTimeFormat;
using audiocd::ParsePosition;
using scsi::imagedrive::clsImageDrive;

namespace {

using Bytes = std::vector<uint8_t>;
constexpr std::ptrdiff_t kSector = 2352;

// A generated disc (AudioThreeTracks unless a test loads another) in an image drive, with a
// cdaudio device on it whose audio goes into a test sink. Alias "cd" is open in milliseconds.
class CdAudioTest : public ::testing::Test {
  protected:
    void SetUp() override { Load(discgen::AudioThreeTracks()); }

    void Load(const discgen::DiscSpec& spec) {
        cd.reset();
        // A folder with a blank: every command names the drive in quotes.
        disc = test::WrittenDisc(spec, test::ScratchFolder() / "Meine Musik");
        drive = std::make_unique<clsImageDrive>();
        handle = drive->AddDrive(disc.cuePath.string()).Value();
        cd = std::make_unique<CdAudio>(*drive, test::TestSinks(sink));
        ASSERT_TRUE(Send("open " + audiocd::MciQuote(handle + ":") +
                         " alias cd wait shareable type cdaudio")
                        .ok());
        ASSERT_TRUE(Send("set cd time format milliseconds").ok());
    }
    audiocd::MciReply Send(const std::string& command) { return cd->SendString(command); }
    std::string Result(const std::string& command) {
        const auto reply = Send(command);
        EXPECT_TRUE(reply.ok()) << command << ": " << reply.errorText;
        return reply.result;
    }
    // Milliseconds of a sector address.
    static std::string Ms(int32_t lba) { return std::to_string(FramesToMilliseconds(lba + 150)); }

    // The bytes of sectors [from, to) straight from the disc's first file, which starts at LBA 0.
    Bytes FromFile(int32_t from, int32_t to) const {
        const std::string all = test::WholeFile(disc.files[0].path);
        return Bytes(all.begin() + from * kSector, all.begin() + to * kSector);
    }

    discgen::DiscDescription disc;
    std::unique_ptr<clsImageDrive> drive;
    std::string handle;
    std::shared_ptr<test::SinkRecord> sink = std::make_shared<test::SinkRecord>();
    std::unique_ptr<CdAudio> cd;
};

// AudioThreeTracks: tracks at LBA 0, 300 and 525, lead-out at 900, all in one file.
constexpr int32_t kTrack2 = 300;
constexpr int32_t kTrack3 = 525;
constexpr int32_t kLeadOut = 900;

}  // namespace

// Lengths and positions of the disc and its tracks; the bytes played from, to, in both formats.
TEST_F(CdAudioTest, StatusAndTheDiscsBytesFromToInBothTimeFormats) {
    EXPECT_EQ(Result("status cd position"), "2000");  // the first track's start
    EXPECT_EQ(Result("status cd current track"), "1");
    EXPECT_EQ(Result("status cd length"), "12000");
    EXPECT_EQ(Result("status cd length track 2"), "3000");
    EXPECT_EQ(Result("status cd position track 3"), Ms(kTrack3));
    EXPECT_EQ(Send("status cd length track 4").error, audiocd::kCdAudioOutOfRange);

    const int32_t from = kTrack2 + 75;  // a second into track 2, to the disc's end
    ASSERT_TRUE(Send("play cd from " + Ms(from) + " wait").ok());
    EXPECT_TRUE(sink->Bytes() == FromFile(from, kLeadOut));
    EXPECT_EQ(sink->Drains(), 1);
    EXPECT_EQ(Result("status cd mode"), "stopped");
    EXPECT_EQ(Result("status cd position"), Ms(kLeadOut));
    EXPECT_EQ(Result("status cd current track"), "3");

    Send("set cd time format msf");
    EXPECT_EQ(Result("status cd length"), "00:12:00");
    EXPECT_EQ(Result("status cd position track 2"), "00:06:00");
    EXPECT_EQ(audiocd::SendCommand(*cd, "status cd number of tracks"), 3);
    const size_t before = sink->Bytes().size();
    ASSERT_TRUE(Send("play cd from 00:06:00 to 00:07:01 wait").ok());  // LBA 300 to 376
    const Bytes all = sink->Bytes();
    EXPECT_TRUE(Bytes(all.begin() + static_cast<std::ptrdiff_t>(before), all.end()) ==
                FromFile(kTrack2, kTrack2 + 76));
    EXPECT_EQ(Result("status cd position"), "00:07:01");
}

TEST_F(CdAudioTest, PositionAdvancesAndStopStops) {
    sink->Hold(2);
    ASSERT_TRUE(Send("play cd from " + Ms(0)).ok());
    // Two pieces of four sectors taken, the third waiting.
    ASSERT_TRUE(sink->WaitForCalls(3));
    EXPECT_EQ(Result("status cd mode"), "playing");
    EXPECT_EQ(Result("status cd position"), Ms(8));
    EXPECT_EQ(Result("status cd media present"), "true");

    ASSERT_TRUE(Send("stop cd").ok());
    EXPECT_EQ(Result("status cd mode"), "stopped");
    EXPECT_EQ(sink->Drops(), 1);
    sink->Release();
    EXPECT_EQ(sink->Writes(), 2);  // the waiting piece was never taken
    EXPECT_EQ(Result("status cd position"), Ms(8));

    // Play without "from" goes on where it stopped.
    ASSERT_TRUE(Send("play cd to " + Ms(kTrack2) + " wait").ok());
    EXPECT_TRUE(sink->Bytes() == FromFile(0, kTrack2));
}

TEST_F(CdAudioTest, WrongCommandsChangeNothing) {
    std::string text;
    EXPECT_EQ(audiocd::SendCommand(*cd, "stop other", &text), 0);
    EXPECT_EQ(text, "Unter diesem Alias ist kein Gerät geöffnet. other");
    EXPECT_EQ(Send("open " + audiocd::MciQuote(handle) + " alias CD").error,
              audiocd::kCdAudioAliasInUse);
    EXPECT_EQ(Send("open /dev/plattmix-sr9: alias x").error, audiocd::kCdAudioNoSuchDrive);
    EXPECT_EQ(Send("open " + audiocd::MciQuote(handle) + " type waveaudio alias y").error,
              audiocd::kCdAudioWrongType);
    EXPECT_EQ(Send("play cd from 0").error, audiocd::kCdAudioOutOfRange);  // the pre-gap
    EXPECT_EQ(Send("play cd from " + Ms(kLeadOut)).error, audiocd::kCdAudioOutOfRange);
    EXPECT_EQ(Send("play cd from 3000 to 3000").error, audiocd::kCdAudioOutOfRange);
    EXPECT_EQ(Send("play cd from drei").error, audiocd::kCdAudioBadNumber);
    EXPECT_EQ(Send("pause cd").error, audiocd::kCdAudioUnknownCommand);
    EXPECT_EQ(Send("open \"/Meine Musik alias x").error, audiocd::kCdAudioOpenQuote);
    EXPECT_EQ(Send("play cd from").error, audiocd::kCdAudioMissingValue);
    EXPECT_EQ(Send("set cd time format tmsf").error, audiocd::kCdAudioBadTimeFormat);
    EXPECT_EQ(sink->Opens(), 0);
    // Aliases in any case; the device still works.
    EXPECT_EQ(Result("STATUS Cd number of tracks"), "3");
    EXPECT_TRUE(Send("close cd").ok());
    EXPECT_EQ(Send("status cd mode").error, audiocd::kCdAudioNotOpen);
}

// (A data track: the Enhanced CD's test.)
TEST_F(CdAudioTest, AnEmptyDriveIsNotReady) {
    const auto empty = drive->AddDrive("");
    ASSERT_TRUE(Send("open " + empty.Value() + ": alias leer").ok());
    EXPECT_EQ(Send("play leer from 2000").error, audiocd::kCdAudioNotReady);
    EXPECT_EQ(Result("status leer mode"), "not ready");
    EXPECT_EQ(Result("status leer media present"), "false");
    drive->OpenTray(empty.Value());
    EXPECT_EQ(Result("status leer mode"), "open");
}

TEST_F(CdAudioTest, AFailureWhilePlayingEndsThePlaybackAndIsKept) {
    // Blocks of 27 from 300: the one from 381 holds the bad sector.
    drive->AddReadError(handle, 400, 1);
    const auto reply = Send("play cd from " + Ms(kTrack2) + " wait");
    EXPECT_EQ(reply.error, audiocd::kCdAudioReadFailed);
    EXPECT_EQ(reply.errorText,
              "Die Disk konnte beim Abspielen nicht gelesen werden. (Sektoren 381 - 408)");
    EXPECT_TRUE(sink->Bytes() == FromFile(kTrack2, 381));
    EXPECT_EQ(cd->PlaybackError("cd"), reply.errorText);
    EXPECT_EQ(Result("status cd mode"), "stopped");

    drive->ClearFaults(handle);
    sink->writeError = "(Gerät entfernt)";
    EXPECT_EQ(Send("play cd from 2000 wait").error, audiocd::kCdAudioNoOutput);
    EXPECT_EQ(cd->PlaybackError("cd"), "Keine Audioausgabe verfügbar. (Gerät entfernt)");
}

// "set door" stops the player and moves the tray; the door button's way shows why it could not.
TEST_F(CdAudioTest, TheDoorMovesTheTrayStopsThePlayerAndShowsWhyNot) {
    sink->Hold(0);
    ASSERT_TRUE(Send("play cd from 2000").ok());
    ASSERT_TRUE(sink->WaitForCalls(1));
    ASSERT_TRUE(Send("set cd door open").ok());
    EXPECT_EQ(sink->Drops(), 1);
    EXPECT_EQ(Result("status cd mode"), "open");
    EXPECT_EQ(scsi::GetTrayState(*drive, handle), 1);
    EXPECT_TRUE(audiocd::OpenCloseCD(*cd, handle, false));
    EXPECT_FALSE(drive->IsTrayOpen(handle));

    std::vector<std::string> boxes;
    cd->SetErrorBox([&](const std::string& text) { boxes.push_back(text); });
    EXPECT_FALSE(audiocd::OpenCloseCD(*cd, "/dev/plattmix-sr9", true));
    // A door that does not move still frees its alias, or the next press would fail at "Open".
    drive->TimeOutNextCommands(handle, 1);
    EXPECT_FALSE(audiocd::OpenCloseCD(*cd, handle, true));
    EXPECT_NE(modMMC::TestUnitReady(*drive, handle), 0);  // the time-out's unit attention
    EXPECT_TRUE(audiocd::OpenCloseCD(*cd, handle, true));
    EXPECT_TRUE(drive->IsTrayOpen(handle));
    EXPECT_EQ(boxes,
              (std::vector<std::string>{"Dieses Laufwerk gibt es nicht. /dev/plattmix-sr9:",
                                        "Die Schublade des Laufwerks ließ sich nicht bewegen."}));
}

TEST_F(CdAudioTest, AnEnhancedDiscsAudioEndsBeforeTheSessionGap) {
    Load(discgen::Enhanced());
    const auto& track2 = disc.tracks[1];
    EXPECT_EQ(Result("status cd length track 2"),
              std::to_string(FramesToMilliseconds(track2.lengthSectors)));
    ASSERT_TRUE(Send("play cd from " + Ms(track2.startLba) + " wait").ok());
    EXPECT_TRUE(sink->Bytes() == FromFile(track2.startLba, track2.startLba + track2.lengthSectors));
    EXPECT_EQ(Send("play cd from " + Ms(disc.tracks[2].startLba)).error, audiocd::kCdAudioNotAudio);
}

TEST_F(CdAudioTest, TheWindowReadsTheDiscWhileTheWorkerPlays) {
    cd.reset();  // the drive moves into the shared transport
    std::string emptyHandle = drive->AddDrive("").Value();
    audiocd::CdAudioSharedTransport sharedTransport(std::move(drive));
    CdAudio worker(sharedTransport, test::TestSinks(sink));
    ASSERT_TRUE(worker.SendString("open " + audiocd::MciQuote(handle) + " alias w").ok());
    ASSERT_TRUE(worker.SendString("play w from 00:02:00").ok());
    while (worker.SendString("status w mode").result == "playing")
        EXPECT_EQ(audiocd::ReadTrackList(sharedTransport, handle).rows.size(), 3u);
    EXPECT_TRUE(sink->Bytes() == FromFile(0, kLeadOut));
    EXPECT_TRUE(worker.PlaybackError("w").empty());

    // Each thread reads back the sense of its own last command.
    EXPECT_NE(modMMC::TestUnitReady(sharedTransport, emptyHandle), 0);
    std::thread other([&] {
        std::string mine = handle;
        EXPECT_EQ(modMMC::TestUnitReady(sharedTransport, mine), 0);
        EXPECT_EQ(sharedTransport.LastASC(), 0);
    });
    other.join();
    EXPECT_EQ(sharedTransport.LastASC(), 0x3A);
    EXPECT_EQ(sharedTransport.LastASCQ(), 0x01);
}

// The real ALSA output: its "null" device takes a second of track 2 without sound hardware. A
// device that does not exist, or none at all, fails that play alone, with ALSA's reason.
TEST_F(CdAudioTest, PlaysIntoTheNullDeviceAndNamesAMissingOne) {
    CdAudio alsa(*drive, audiocd::AlsaSinkFactory("null"));
    ASSERT_TRUE(alsa.SendString("open " + audiocd::MciQuote(handle) + " alias a").ok());
    ASSERT_TRUE(alsa.SendString("play a from 00:06:00 to 00:07:00 wait").ok());
    EXPECT_EQ(alsa.SendString("status a position").result, "00:07:00");
    EXPECT_EQ(alsa.PlaybackError("a"), "");

    CdAudio missing(*drive, audiocd::AlsaSinkFactory("plattmix-fehlt"));
    ASSERT_TRUE(missing.SendString("open " + audiocd::MciQuote(handle) + " alias m").ok());
    const auto reply = missing.SendString("play m from 00:06:00");
    EXPECT_EQ(reply.error, audiocd::kCdAudioNoOutput);
    EXPECT_TRUE(
        reply.errorText.starts_with("Keine Audioausgabe verfügbar. (ALSA-Gerät plattmix-fehlt: "))
        << reply.errorText;
    EXPECT_EQ(missing.SendString("status m mode").result, "stopped");
    EXPECT_EQ(missing.SendString("status m position").result, "00:02:00");
    CdAudio silent(*drive, {});
    ASSERT_TRUE(silent.SendString("open " + audiocd::MciQuote(handle) + " alias s").ok());
    EXPECT_EQ(silent.SendString("play s from 00:02:00").error, audiocd::kCdAudioNoOutput);
}

// Positions the device's own tests do not send: frames rounded, fields out of range.
TEST(Positions, MillisecondsAndMinutesSecondsFrames) {
    EXPECT_EQ(FramesToMilliseconds(1), 14);  // 13.3 ms, rounded up
    EXPECT_EQ(ParsePosition("999", MciTimeFormat::Milliseconds), 74);
    EXPECT_EQ(ParsePosition("2", MciTimeFormat::Msf), 4500 * 2);
    for (const char* bad : {"", ":", "1:60", "1:2:75", "1:2:3:4", "-1", "a", "1.5"})
        EXPECT_FALSE(ParsePosition(bad, MciTimeFormat::Msf)) << bad;
    for (const char* bad : {"", "-5", "+5", "5s", "99999999999999999999"})
        EXPECT_FALSE(ParsePosition(bad, MciTimeFormat::Milliseconds)) << bad;
    EXPECT_EQ(audiocd::MciValue("  -12 Sekunden"), -12);  // the number a reply starts with
    EXPECT_EQ(audiocd::MciValue("playing"), 0);
}
