// The track list and the drive list read through the disc-image drive; the control nibble's
// audio-or-data rule.
#include <gtest/gtest.h>

#include "DriveList.h"
#include "Fixtures.h"
#include "RipRig.h"
#include "TrackList.h"
#include "imagedrive/clsImageDrive.h"
#include "modMMC.h"
#include "modMSF.h"

using namespace plattmix;
using scsi::imagedrive::clsImageDrive;

TEST(ReadTrackList, RowsFollowTheTableOfContents) {
    discgen::DiscSpec spec = discgen::DataTrackFirst();
    spec.tracks[1].sectors = 75 * 65 + 74;  // 1:05 and 74 frames: "Dauer" says 01:05
    test::RipRig rig(spec);
    const auto list = audiocd::ReadTrackList(rig.drive, rig.params.handle);
    EXPECT_FALSE(list.isDataCD);  // mixed mode: audio follows
    const auto& tracks = rig.disc.tracks;
    ASSERT_EQ(list.rows.size(), tracks.size());
    for (size_t i = 0; i < tracks.size(); ++i) {
        const auto& row = list.rows[i];
        EXPECT_EQ(row.track, tracks[i].number);
        EXPECT_EQ(row.inhalt, i == 0 ? "Daten" : "Audio");
        EXPECT_EQ(row.startLba, tracks[i].startLba);
        // "Ende" is the next descriptor's start, with no frame taken off.
        const int32_t next = i + 1 < tracks.size() ? tracks[i + 1].startLba : rig.disc.leadOutLba;
        EXPECT_EQ(row.endLba, next);
        EXPECT_EQ(row.ende, modMSF::MSFToString(modMSF::LBAToMSF(next)));
    }
    EXPECT_EQ(list.rows[0].anfang, "00:02:00");
    EXPECT_EQ(list.rows[1].dauer, "01:05");

    // A disc of data alone is a data CD.
    spec.tracks.resize(1);
    spec.files.resize(1);
    test::RipRig data(spec, "data");
    EXPECT_TRUE(audiocd::ReadTrackList(data.drive, data.params.handle).isDataCD);
}

TEST(ReadTrackList, AnEnhancedDiscsAudioEndsAtItsSessionsLeadOut) {
    test::RipRig rig(discgen::Enhanced());
    const auto list = audiocd::ReadTrackList(rig.drive, rig.params.handle);
    ASSERT_EQ(list.rows.size(), 3u);
    const int32_t sessionEnd = rig.disc.sessions.at(0).leadOutLba;
    const auto& last = list.rows[1];
    EXPECT_EQ(last.endLba, sessionEnd);
    EXPECT_EQ(last.ende, modMSF::MSFToString(modMSF::LBAToMSF(sessionEnd)));
    EXPECT_EQ(last.dauer, "00:03");  // three seconds, not the session gap
    EXPECT_EQ(list.rows[2].endLba, rig.disc.leadOutLba);
    EXPECT_EQ(list.rows[2].inhalt, "Daten");
}

// A disc just inserted (the unit attention, then "becoming ready"), an open tray with a disc in
// it, a table of contents that times out. (An empty drive: the test bed's.)
TEST(ReadTrackList, NotReadyOpenAndAFailedTableGiveTheirTexts) {
    test::RipRig rig(discgen::AudioThreeTracks());
    clsImageDrive& drive = rig.drive;
    std::string handle = rig.params.handle;
    const std::string empty = drive.AddDrive("").Value();
    drive.SetBecomingReady(empty, 3);
    ASSERT_FALSE(drive.InsertMedium(empty, rig.disc.cuePath.string()));
    const auto first = audiocd::ReadTrackList(drive, empty);
    EXPECT_TRUE(first.rows.empty());
    EXPECT_EQ(first.emptyText, "Laufwerk nicht bereit! Button --> Aktualisieren");

    drive.OpenTray(handle);
    EXPECT_EQ(audiocd::ReadTrackList(drive, handle).emptyText, "Keine Disk im Laufwerk");

    // TEST UNIT READY passes; READ TOC times out.
    handle = drive.AddDrive(rig.disc.cuePath.string()).Value();
    ASSERT_EQ(modMMC::TestUnitReady(drive, handle), 0);
    drive.TimeOutNextCommands(handle, 2);
    EXPECT_EQ(audiocd::ReadTrackList(drive, handle).emptyText, "Leere CD im Laufwerk!");
}

TEST(DriveList, AFailingDriveIsReportedAndLeftOut) {
    test::RipRig rig(discgen::AudioThreeTracks());
    clsImageDrive& drive = rig.drive;
    for (int i = 0; i < 2; ++i)
        drive.AddDrive(rig.disc.cuePath.string());
    int16_t second = 2;
    drive.TimeOutNextCommands(drive.DriveHandle(second), 1);

    std::vector<std::string> warnings;
    const auto entries =
        audiocd::FillDriveList(drive, [&](std::string_view text) { warnings.emplace_back(text); });
    EXPECT_EQ(warnings, std::vector<std::string>{"INQUIRY für Laufwerk 2 gescheitert."});
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].index, 1);
    EXPECT_EQ(entries[1].index, 3);
    // The image's path names the drive, its identification follows.
    EXPECT_TRUE(entries[0].text.starts_with(rig.disc.cuePath.string() + ":  ")) << entries[0].text;
    EXPECT_NE(entries[0].text, entries[1].text);  // the same identification, other names
}

TEST(TrackRules, ControlNibbleDecidesAudioOrDataIgnoringTheCopyBit) {
    // Audio: plain, copy permitted, pre-emphasis, four channels, and "1111", which becomes
    // "1101" once the copy bit is cleared.
    for (const int control : {0x10, 0x12, 0x00, 0x11, 0x18, 0x1C, 0x1D, 0x1F})
        EXPECT_EQ(audiocd::IsDataTrack(static_cast<uint8_t>(control)), 0) << control;
    // Data, also with the copy bit and with one binary digit short of four (padded).
    for (const int control : {0x14, 0x16, 0x15, 0x04})
        EXPECT_EQ(audiocd::IsDataTrack(static_cast<uint8_t>(control)), 1) << control;
}
