// The track list and the drive list read through the disc-image drive.
#include <gtest/gtest.h>

#include "DiscWriter.h"
#include "DriveList.h"
#include "Fixtures.h"
#include "TrackList.h"
#include "common/ScratchFolder.h"
#include "imagedrive/clsImageDrive.h"
#include "modMMC.h"
#include "modMSF.h"

using namespace plattmix;
using scsi::imagedrive::clsImageDrive;

namespace {

std::string WriteFixture(discgen::DiscSpec spec) {
    const auto written = discgen::WriteDisc(spec, plattmix::test::ScratchFolder());
    EXPECT_TRUE(written.ok()) << written.error;
    return written.value->cuePath.string();
}

}  // namespace

TEST(ReadTrackList, RowsFollowTheTableOfContents) {
    const auto spec = discgen::DataTrackFirst();
    const auto written = discgen::WriteDisc(spec, plattmix::test::ScratchFolder());
    ASSERT_TRUE(written.ok()) << written.error;
    clsImageDrive drive;
    const auto handle = drive.AddDrive(written.value->cuePath.string());
    ASSERT_TRUE(handle.ok()) << handle.Error();

    const auto list = audiocd::ReadTrackList(drive, handle.Value());
    EXPECT_EQ(list.emptyText, "");
    EXPECT_FALSE(list.isDataCD);  // mixed mode: audio follows
    const auto& tracks = written.value->tracks;
    ASSERT_EQ(list.rows.size(), tracks.size());
    for (size_t i = 0; i < tracks.size(); ++i) {
        const auto& row = list.rows[i];
        EXPECT_EQ(row.track, tracks[i].number);
        EXPECT_EQ(row.inhalt, i == 0 ? "Daten" : "Audio");
        EXPECT_EQ(row.startLba, tracks[i].startLba);
        // "Ende" is the next descriptor's start, with no frame taken off.
        const int32_t next =
            i + 1 < tracks.size() ? tracks[i + 1].startLba : written.value->leadOutLba;
        EXPECT_EQ(row.endLba, next);
        EXPECT_EQ(row.ende, modMSF::MSFToString(modMSF::LBAToMSF(next)));
    }
    EXPECT_EQ(list.rows[0].anfang, "00:02:00");
}

TEST(ReadTrackList, AnEnhancedDiscsAudioEndsAtItsSessionsLeadOut) {
    const auto written = discgen::WriteDisc(discgen::Enhanced(), plattmix::test::ScratchFolder());
    ASSERT_TRUE(written.ok()) << written.error;
    clsImageDrive drive;
    const auto handle = drive.AddDrive(written.value->cuePath.string());
    ASSERT_TRUE(handle.ok()) << handle.Error();

    const auto list = audiocd::ReadTrackList(drive, handle.Value());
    ASSERT_EQ(list.rows.size(), 3u);
    const int32_t sessionEnd = written.value->sessions.at(0).leadOutLba;
    const auto& last = list.rows[1];
    EXPECT_EQ(last.endLba, sessionEnd);
    EXPECT_EQ(last.ende, modMSF::MSFToString(modMSF::LBAToMSF(sessionEnd)));
    EXPECT_EQ(last.dauer, "00:03");  // three seconds, not the session gap
    EXPECT_EQ(list.rows[2].endLba, written.value->leadOutLba);
    EXPECT_EQ(list.rows[2].inhalt, "Daten");
}

TEST(ReadTrackList, DauerTruncatesToWholeSeconds) {
    discgen::DiscSpec spec = discgen::AudioThreeTracks();
    spec.tracks[0].sectors = 75 * 65 + 74;  // 1:05 and 74 frames
    clsImageDrive drive;
    const auto handle = drive.AddDrive(WriteFixture(spec));
    ASSERT_TRUE(handle.ok()) << handle.Error();
    EXPECT_EQ(audiocd::ReadTrackList(drive, handle.Value()).rows.at(0).dauer, "01:05");
}

TEST(ReadTrackList, ADiscOfDataOnlyIsADataCd) {
    discgen::DiscSpec spec = discgen::DataTrackFirst();
    spec.tracks.resize(1);
    spec.files.resize(1);
    clsImageDrive drive;
    const auto handle = drive.AddDrive(WriteFixture(spec));
    ASSERT_TRUE(handle.ok()) << handle.Error();
    const auto list = audiocd::ReadTrackList(drive, handle.Value());
    ASSERT_EQ(list.rows.size(), 1u);
    EXPECT_TRUE(list.isDataCD);
}

TEST(ReadTrackList, NoDiscAndNotReadyGiveTheirTexts) {
    clsImageDrive drive;
    const std::string cue = WriteFixture(discgen::AudioThreeTracks());
    const auto empty = drive.AddDrive("");
    const auto loaded = drive.AddDrive(cue);
    ASSERT_TRUE(empty.ok() && loaded.ok());

    EXPECT_EQ(audiocd::ReadTrackList(drive, empty.Value()).emptyText, "Keine Disk im Laufwerk");
    drive.OpenTray(empty.Value());
    EXPECT_EQ(audiocd::ReadTrackList(drive, empty.Value()).emptyText, "Keine Disk im Laufwerk");

    // A disc just inserted: the unit attention, then "becoming ready".
    drive.SetBecomingReady(empty.Value(), 3);
    drive.CloseTray(empty.Value());
    ASSERT_FALSE(drive.InsertMedium(empty.Value(), cue));
    const auto first = audiocd::ReadTrackList(drive, empty.Value());
    EXPECT_TRUE(first.rows.empty());
    EXPECT_EQ(first.emptyText, "Laufwerk nicht bereit! Button --> Aktualisieren");

    // An open tray with a disc in it reads as no disc.
    drive.OpenTray(loaded.Value());
    EXPECT_EQ(audiocd::ReadTrackList(drive, loaded.Value()).emptyText, "Keine Disk im Laufwerk");
    drive.CloseTray(loaded.Value());
    drive.ClearFaults(loaded.Value());
}

TEST(ReadTrackList, AFailedTableOfContentsReadsAsABlankDisc) {
    clsImageDrive drive;
    const auto handle = drive.AddDrive(WriteFixture(discgen::AudioThreeTracks()));
    ASSERT_TRUE(handle.ok());
    // TEST UNIT READY passes; READ TOC times out.
    std::string h = handle.Value();
    ASSERT_EQ(modMMC::TestUnitReady(drive, h), 0);
    drive.TimeOutNextCommands(h, 2);
    const auto list = audiocd::ReadTrackList(drive, h);
    EXPECT_EQ(list.emptyText, "Leere CD im Laufwerk!");
}

TEST(DriveList, AFailingDriveIsReportedAndLeftOut) {
    clsImageDrive drive;
    const std::string cue = WriteFixture(discgen::AudioThreeTracks());
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(drive.AddDrive(cue).ok());
    int16_t second = 2;
    drive.TimeOutNextCommands(drive.DriveHandle(second), 1);

    std::vector<std::string> warnings;
    const auto entries =
        audiocd::FillDriveList(drive, [&](std::string_view text) { warnings.emplace_back(text); });
    ASSERT_EQ(warnings.size(), 1u);
    EXPECT_EQ(warnings[0], "INQUIRY für Laufwerk 2 gescheitert.");
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].index, 1);
    EXPECT_EQ(entries[1].index, 3);
    // Drives with the same identification differ only by their names.
    EXPECT_EQ(entries[0].text.substr(entries[0].text.find(":  ")),
              entries[1].text.substr(entries[1].text.find(":  ")));
    EXPECT_NE(entries[0].text, entries[1].text);
}
