// The drive's non-reading commands through the transport interface: identification, table of
// contents, capacity, configuration, events, tray and medium states, and the transport rules.
#include <gtest/gtest.h>

#include "ImageFixture.h"

namespace plattmix::scsi::imagedrive::test {
namespace {

constexpr uint32_t kNoMediumTrayClosed = 0x023A01;
constexpr uint32_t kNoMediumTrayOpen = 0x023A02;
constexpr uint32_t kMediumChanged = 0x062800;

const Bytes kEject{0x1B, 0, 0, 0, 0x02, 0};
const Bytes kLoad{0x1B, 0, 0, 0, 0x03, 0};
const Bytes kMediaEvents{0x4A, 0x01, 0, 0, 0x10, 0, 0, 0, 8, 0};

using ImageDriveTest = DriveTest;

TEST_F(ImageDriveTest, InquiryIdentifiesACdDrive) {
    handle = Add(WriteSmallDisc(Scratch()));
    const Outcome full = Send(drive, handle, {0x12, 0, 0, 0, 76, 0}, 76);
    ASSERT_EQ(full.status, 0);
    EXPECT_EQ(Slice(full.data, 0, 2), (Bytes{0x05, 0x80}));  // CD/DVD device, removable
    EXPECT_EQ(full.data[4], 31);
    EXPECT_EQ(std::string(full.data.begin() + 8, full.data.begin() + 36),
              "PLATTMIXImage Drive     1.0 ");
    EXPECT_EQ(full.data[36], 0xEE);  // 36 bytes of data, the rest of the buffer untouched
    EXPECT_EQ(Failure(Send(drive, handle, {0x12, 0x01, 0x80, 0, 76, 0})), kInvalidField);
}

// The cut to allocation length and buffer is shared by every reply; READ TOC shows it here.
TEST_F(ImageDriveTest, TocFormat0ByteForByteInLbaAndMsfFromAStartingTrackAndCut) {
    handle = Add(WriteSmallDisc(Scratch()));
    const Outcome lba = Send(drive, handle, TocCdb(false, 0, 0, 804), 804);
    ASSERT_EQ(lba.status, 0);
    const Bytes expectedLba{0x00, 0x22, 0x01, 0x03,                          //
                            0x00, 0x10, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00,  //
                            0x00, 0x10, 0x02, 0x00, 0x00, 0x00, 0x00, 0x14,  //
                            0x00, 0x14, 0x03, 0x00, 0x00, 0x00, 0x00, 0xBE,  //
                            0x00, 0x14, 0xAA, 0x00, 0x00, 0x00, 0x00, 0xDC};
    EXPECT_EQ(Slice(lba.data, 0, 36), expectedLba);
    EXPECT_EQ(lba.data[36], 0xEE);

    const Outcome msf = Send(drive, handle, TocCdb(true, 0, 0, 804), 804);
    const Bytes expectedMsf{0x00, 0x22, 0x01, 0x03,                          //
                            0x00, 0x10, 0x01, 0x00, 0x00, 0x00, 0x02, 0x00,  //
                            0x00, 0x10, 0x02, 0x00, 0x00, 0x00, 0x02, 0x14,  //
                            0x00, 0x14, 0x03, 0x00, 0x00, 0x00, 0x04, 0x28,  //
                            0x00, 0x14, 0xAA, 0x00, 0x00, 0x00, 0x04, 0x46};
    EXPECT_EQ(Slice(msf.data, 0, 36), expectedMsf);

    const Outcome fromThree = Send(drive, handle, TocCdb(false, 0, 3, 804), 804);
    EXPECT_EQ(Slice(fromThree.data, 0, 7), (Bytes{0x00, 0x12, 0x01, 0x03, 0x00, 0x14, 0x03}));
    EXPECT_EQ(fromThree.data[14], 0xAA);
    const Outcome leadOutOnly = Send(drive, handle, TocCdb(false, 0, 0xAA, 804), 804);
    EXPECT_EQ(leadOutOnly.data[1], 0x0A);
    EXPECT_EQ(leadOutOnly.data[6], 0xAA);
    EXPECT_EQ(Failure(Send(drive, handle, TocCdb(false, 0, 4, 804))), kInvalidField);

    const Outcome cut = Send(drive, handle, TocCdb(false, 0, 0, 12), 804);
    EXPECT_EQ(cut.data[1], 0x22);   // the full length is announced,
    EXPECT_EQ(cut.data[12], 0xEE);  // but only 12 bytes come
    const Outcome smallBuffer = Send(drive, handle, TocCdb(false, 0, 0, 804), 10);
    EXPECT_TRUE(smallBuffer.status == 0 && smallBuffer.guardIntact);
    EXPECT_EQ(Failure(Send(drive, handle, TocCdb(false, 5, 0, 804))), kInvalidField);  // no CD-Text
}

TEST_F(ImageDriveTest, EnhancedDiscSessionInfoAndFullToc) {
    handle = Add(WriteEnhancedDisc(Scratch()));
    const Outcome session = Send(drive, handle, TocCdb(false, 1, 0, 100), 100);
    EXPECT_EQ(Slice(session.data, 0, 12),
              (Bytes{0x00, 0x0A, 0x01, 0x02, 0x00, 0x14, 0x02, 0x00, 0x00, 0x00, 0x2C, 0x9C}));

    const Outcome full = Send(drive, handle, TocCdb(true, 2, 0, 200), 200);
    const Bytes expected{0x00, 0x5A, 0x01, 0x02,                                            //
                         0x01, 0x10, 0x00, 0xA0, 0x00, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00,  //
                         0x01, 0x10, 0x00, 0xA1, 0x00, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00,  //
                         0x01, 0x10, 0x00, 0xA2, 0x00, 0x00, 0x00, 0x00, 0x00, 0x02, 0x14,  //
                         0x01, 0x10, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x02, 0x00,  //
                         0x02, 0x14, 0x00, 0xA0, 0x00, 0x00, 0x00, 0x00, 0x02, 0x20, 0x00,  //
                         0x02, 0x14, 0x00, 0xA1, 0x00, 0x00, 0x00, 0x00, 0x02, 0x00, 0x00,  //
                         0x02, 0x14, 0x00, 0xA2, 0x00, 0x00, 0x00, 0x00, 0x02, 0x22, 0x1E,  //
                         0x02, 0x14, 0x00, 0x02, 0x00, 0x00, 0x00, 0x00, 0x02, 0x22, 0x14};
    ASSERT_EQ(full.status, 0);
    EXPECT_EQ(Slice(full.data, 0, 92), expected);
    const Outcome second = Send(drive, handle, TocCdb(true, 2, 2, 200), 200);
    EXPECT_EQ(second.data[1], 0x2E);
    EXPECT_EQ(second.data[4], 0x02);
    EXPECT_EQ(Status(handle, TocCdb(true, 2, 3, 200)), 2);

    const Outcome info = Send(drive, handle, {0x51, 0, 0, 0, 0, 0, 0, 0, 34, 0}, 34);
    EXPECT_EQ(Slice(info.data, 0, 9),
              (Bytes{0x00, 0x20, 0x0E, 0x01, 0x02, 0x02, 0x02, 0x20, 0x20}));  // CD-ROM XA
}

// The capacity is compared with a real drive's in the drive test bed.
TEST_F(ImageDriveTest, DiscInformationAndConfiguration) {
    handle = Add(WriteSmallDisc(Scratch()));
    const Outcome info = Send(drive, handle, {0x51, 0, 0, 0, 0, 0, 0, 0, 34, 0}, 40);
    EXPECT_EQ(Slice(info.data, 0, 8), (Bytes{0x00, 0x20, 0x0E, 0x01, 0x01, 0x01, 0x03, 0x20}));

    const Outcome config = Send(drive, handle, {0x46, 0, 0, 0, 0, 0, 0, 0, 64, 0}, 64);
    EXPECT_EQ(Slice(config.data, 4, 12),
              (Bytes{0x00, 0x00, 0x00, 0x08, 0x00, 0x00, 0x03, 0x04, 0x00, 0x08, 0x01, 0x00}));
    const Outcome one = Send(drive, handle, {0x46, 0x02, 0x00, 0x1E, 0, 0, 0, 0, 64, 0}, 64);
    EXPECT_EQ(Slice(one.data, 0, 12),
              (Bytes{0x00, 0x00, 0x00, 0x0C, 0x00, 0x00, 0x00, 0x08, 0x00, 0x1E, 0x01, 0x04}));

    const std::string empty = Add("");
    const Outcome none = Send(drive, empty, {0x46, 0, 0, 0, 0, 0, 0, 0, 8, 0}, 8);
    EXPECT_EQ(Slice(none.data, 6, 2), (Bytes{0x00, 0x00}));  // no current profile
}

TEST_F(ImageDriveTest, TrayAndMediumGiveTheSenseOfARealDrive) {
    const fs::path folder = Scratch();
    const std::string image = WriteSmallDisc(folder);
    handle = Add(image);
    EXPECT_EQ(Ready(handle), 0u);  // created holding the disc: no unit attention

    EXPECT_EQ(Status(handle, kEject), 0);
    EXPECT_TRUE(drive.IsTrayOpen(handle));
    EXPECT_EQ(Ready(handle), kNoMediumTrayOpen);
    EXPECT_EQ(Failure(Send(drive, handle, TocCdb(false, 0, 0, 804))), kNoMediumTrayOpen);

    EXPECT_EQ(Status(handle, kLoad), 0);
    EXPECT_EQ(Ready(handle), kMediumChanged);  // once,
    EXPECT_EQ(Ready(handle), 0u);              // then ready

    EXPECT_TRUE(drive.RemoveMedium(handle));
    EXPECT_EQ(Ready(handle), kNoMediumTrayClosed);
    EXPECT_EQ(Status(handle, {0x1B, 0, 0, 0, 0x01, 0}), 0);  // spinning up changes nothing
    EXPECT_EQ(Ready(handle), kNoMediumTrayClosed);

    const std::string empty = Add("");
    EXPECT_EQ(Ready(empty), kNoMediumTrayClosed);
    EXPECT_TRUE(drive.OpenTray(empty));
    EXPECT_EQ(Ready(empty), kNoMediumTrayOpen);
    EXPECT_EQ(drive.InsertMedium(empty, image), std::nullopt);
    EXPECT_EQ(Ready(empty), kNoMediumTrayOpen);  // on the open tray, not yet in the drive
    EXPECT_TRUE(drive.CloseTray(empty));
    EXPECT_EQ(Status(empty, {0x12, 0, 0, 0, 36, 0}), 0);  // INQUIRY never reports the attention
    // The medium change, then ready; becoming ready in between: TrayState_test.
    EXPECT_EQ(Ready(empty), kMediumChanged);
    EXPECT_EQ(Ready(empty), 0u);

    const auto bad = drive.InsertMedium(empty, (folder / "fehlt.cue").string());
    EXPECT_EQ(bad, std::optional<std::string>("fehlt.cue: Datei nicht gefunden"));
    EXPECT_EQ(Ready(empty), 0u);  // the old disc stays
}

TEST_F(ImageDriveTest, MediaEventsAndDoorState) {
    handle = Add(WriteSmallDisc(Scratch()));
    // The media status is compared with a real drive's in the drive test bed; here the events.
    Send(drive, handle, kEject);
    const Outcome opened = Send(drive, handle, kMediaEvents, 8);
    EXPECT_EQ(opened.data[4], 0x03);  // media removal
    EXPECT_EQ(opened.data[5], 0x01);  // door open, no medium in the drive
    Send(drive, handle, kLoad);
    const Outcome loaded = Send(drive, handle, kMediaEvents, 8);
    EXPECT_EQ(loaded.data[4], 0x02);  // new media, reported once
    EXPECT_EQ(loaded.data[5], 0x02);
    EXPECT_EQ(Send(drive, handle, kMediaEvents, 8).data[4], 0x00);
    EXPECT_EQ(Ready(handle), kMediumChanged);  // the event query left the unit attention

    const Outcome otherClass = Send(drive, handle, {0x4A, 0x01, 0, 0, 0x02, 0, 0, 0, 8, 0}, 8);
    EXPECT_EQ(Slice(otherClass.data, 0, 4), (Bytes{0x00, 0x02, 0x80, 0x10}));
    EXPECT_EQ(Failure(Send(drive, handle, {0x4A, 0x00, 0, 0, 0x10, 0, 0, 0, 8, 0})), kInvalidField);
}

TEST_F(ImageDriveTest, TransportRulesStatusesAndDriveList) {
    const fs::path folder = Scratch();
    const std::string image = WriteSmallDisc(folder);
    EXPECT_EQ(Add(image), image);
    EXPECT_EQ(Add(image), image + "#2");
    EXPECT_EQ(Add(""), "leer");
    ASSERT_EQ(drive.DriveCount(), 3);
    int16_t index = 3;
    EXPECT_EQ(drive.DriveHandle(index), "leer");
    index = 4;
    EXPECT_EQ(drive.DriveHandle(index), "");

    EXPECT_EQ(Status("gibt es nicht", kTestUnitReady), 24);
    EXPECT_EQ(Failure(Send(drive, image, {0xA8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0})), 0x052000u);
    EXPECT_EQ(Status(image, kTestUnitReady), 0);
    EXPECT_EQ(SenseOf(drive), 0u);  // a request without sense clears it
}

}  // namespace
}  // namespace plattmix::scsi::imagedrive::test
