// The track list and the drive list read through the disc-image drive; the control nibble's
// audio-or-data rule and the drive list's entry text.
#include <gtest/gtest.h>

#include <array>

#include "DriveList.h"
#include "Fixtures.h"
#include "RipRig.h"
#include "TrackList.h"
#include "common/ScratchFolder.h"
#include "imagedrive/clsImageDrive.h"
#include "modMMC.h"
#include "modMSF.h"

using namespace plattmix;
using scsi::imagedrive::clsImageDrive;

namespace {

discgen::DiscDescription Written(const discgen::DiscSpec& spec) {
    return test::WrittenDisc(spec, test::ScratchFolder());
}

// The disc in a drive of its own.
std::string Loaded(clsImageDrive& drive, const discgen::DiscDescription& disc) {
    const auto handle = drive.AddDrive(disc.cuePath.string());
    EXPECT_TRUE(handle.ok()) << handle.Error();
    return handle.ok() ? handle.Value() : "";
}

}  // namespace

TEST(ReadTrackList, RowsFollowTheTableOfContents) {
    discgen::DiscSpec spec = discgen::DataTrackFirst();
    spec.tracks[1].sectors = 75 * 65 + 74;  // 1:05 and 74 frames: "Dauer" says 01:05
    const auto disc = Written(spec);
    clsImageDrive drive;
    const auto list = audiocd::ReadTrackList(drive, Loaded(drive, disc));
    EXPECT_FALSE(list.isDataCD);  // mixed mode: audio follows
    const auto& tracks = disc.tracks;
    ASSERT_EQ(list.rows.size(), tracks.size());
    for (size_t i = 0; i < tracks.size(); ++i) {
        const auto& row = list.rows[i];
        EXPECT_EQ(row.track, tracks[i].number);
        EXPECT_EQ(row.inhalt, i == 0 ? "Daten" : "Audio");
        EXPECT_EQ(row.startLba, tracks[i].startLba);
        // "Ende" is the next descriptor's start, with no frame taken off.
        const int32_t next = i + 1 < tracks.size() ? tracks[i + 1].startLba : disc.leadOutLba;
        EXPECT_EQ(row.endLba, next);
        EXPECT_EQ(row.ende, modMSF::MSFToString(modMSF::LBAToMSF(next)));
    }
    EXPECT_EQ(list.rows[0].anfang, "00:02:00");
    EXPECT_EQ(list.rows[1].dauer, "01:05");

    // A disc of data alone is a data CD.
    spec.tracks.resize(1);
    spec.files.resize(1);
    clsImageDrive dataDrive;
    EXPECT_TRUE(audiocd::ReadTrackList(dataDrive, Loaded(dataDrive, Written(spec))).isDataCD);
}

TEST(ReadTrackList, AnEnhancedDiscsAudioEndsAtItsSessionsLeadOut) {
    const auto disc = Written(discgen::Enhanced());
    clsImageDrive drive;
    const auto list = audiocd::ReadTrackList(drive, Loaded(drive, disc));
    ASSERT_EQ(list.rows.size(), 3u);
    const int32_t sessionEnd = disc.sessions.at(0).leadOutLba;
    const auto& last = list.rows[1];
    EXPECT_EQ(last.endLba, sessionEnd);
    EXPECT_EQ(last.ende, modMSF::MSFToString(modMSF::LBAToMSF(sessionEnd)));
    EXPECT_EQ(last.dauer, "00:03");  // three seconds, not the session gap
    EXPECT_EQ(list.rows[2].endLba, disc.leadOutLba);
    EXPECT_EQ(list.rows[2].inhalt, "Daten");
}

// A disc just inserted (the unit attention, then "becoming ready"), an open tray with a disc in
// it, a table of contents that times out. (An empty drive: the test bed's.)
TEST(ReadTrackList, NotReadyOpenAndAFailedTableGiveTheirTexts) {
    const auto disc = Written(discgen::AudioThreeTracks());
    clsImageDrive drive;
    const std::string empty = drive.AddDrive("").Value();
    drive.SetBecomingReady(empty, 3);
    ASSERT_FALSE(drive.InsertMedium(empty, disc.cuePath.string()));
    const auto first = audiocd::ReadTrackList(drive, empty);
    EXPECT_TRUE(first.rows.empty());
    EXPECT_EQ(first.emptyText, "Laufwerk nicht bereit! Button --> Aktualisieren");

    std::string loaded = Loaded(drive, disc);
    drive.OpenTray(loaded);
    EXPECT_EQ(audiocd::ReadTrackList(drive, loaded).emptyText, "Keine Disk im Laufwerk");

    // TEST UNIT READY passes; READ TOC times out.
    clsImageDrive other;
    std::string handle = Loaded(other, disc);
    ASSERT_EQ(modMMC::TestUnitReady(other, handle), 0);
    other.TimeOutNextCommands(handle, 2);
    EXPECT_EQ(audiocd::ReadTrackList(other, handle).emptyText, "Leere CD im Laufwerk!");
}

TEST(DriveList, AFailingDriveIsReportedAndLeftOut) {
    clsImageDrive drive;
    const auto disc = Written(discgen::AudioThreeTracks());
    for (int i = 0; i < 3; ++i)
        Loaded(drive, disc);
    int16_t second = 2;
    drive.TimeOutNextCommands(drive.DriveHandle(second), 1);

    std::vector<std::string> warnings;
    const auto entries =
        audiocd::FillDriveList(drive, [&](std::string_view text) { warnings.emplace_back(text); });
    EXPECT_EQ(warnings, std::vector<std::string>{"INQUIRY für Laufwerk 2 gescheitert."});
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].index, 1);
    EXPECT_EQ(entries[1].index, 3);
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

TEST(TrackRules, DriveEntryKeepsPaddingDropsNulsAndNamesTheNode) {
    std::array<uint8_t, 76> reply{};
    const std::string ident = std::string("QEMU\0\0\0\0QEMU DVD-ROM    2.5+", 28);
    for (size_t i = 0; i < 28; ++i)
        reply[8 + i] = static_cast<uint8_t>(ident[i]);
    EXPECT_EQ(audiocd::DriveEntryText("sr0", reply), "/dev/sr0:  QEMUQEMU DVD-ROM    2.5+");
    EXPECT_EQ(audiocd::DriveEntryText("/home/u/disc.cue", reply),
              "/home/u/disc.cue:  QEMUQEMU DVD-ROM    2.5+");
}
