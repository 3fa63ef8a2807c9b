// The tray state: the decisions on literal sense and event bytes that no drive here gives, and
// the retries of TEST UNIT READY against the disc-image drive. Real drives answer in the drive
// test bed, also for a missing medium, which is asked for the media event.
#include <gtest/gtest.h>

#include <fstream>
#include <vector>

#include "TrayNodeDevice.h"
#include "TrayState.h"
#include "common/ScratchFolder.h"
#include "imagedrive/clsImageDrive.h"

using namespace plattmix::scsi;

namespace {

using Bytes = std::vector<uint8_t>;

// Fixed-format sense: response code 70, the key at 2, the additional length, ASC 12, ASCQ 13.
TrayResult Checked(uint8_t key, uint8_t asc, uint8_t ascq) {
    return MakeTrayResult(2, Bytes{0x70, 0, key, 0, 0, 0, 0, 0x0A, 0, 0, 0, 0, asc, ascq});
}

const TrayResult kGood = MakeTrayResult(0, {});

}  // namespace

// Ready, and no medium with the tray closed or open, are answered by real drives in the drive
// test bed; here the answers QEMU does not give.
TEST(TrayDecision, FromTheUnitReadyAnswer) {
    EXPECT_EQ(DecideFromUnitReady(Checked(2, 0x3A, 0x00)), TrayDecision::AskMediaEvent);
    EXPECT_EQ(DecideFromUnitReady(Checked(2, 0x3A, 0x03)), TrayDecision::Unknown);
    EXPECT_EQ(DecideFromUnitReady(MakeTrayResult(2, {})), TrayDecision::Unknown);
    // A key byte with a flag bit; descriptor-format sense.
    EXPECT_EQ(DecideFromUnitReady(Checked(0x62, 0x3A, 0x02)), TrayDecision::Open);
    EXPECT_EQ(DecideFromUnitReady(MakeTrayResult(2, Bytes{0x72, 0x02, 0x3A, 0x02, 0, 0, 0, 0})),
              TrayDecision::Open);
}

// Open and closed trays' events come from real drives in the drive test bed.
TEST(TrayDecision, FromTheMediaEvent) {
    // Event data length 6, media class, media status in byte 5: bit 0 tray open, bit 1 medium.
    const Bytes open{0x00, 0x06, 0x04, 0x54, 0x00, 0x01, 0x00, 0x00};
    const Bytes empty{0x00, 0x00, 0x04, 0x54, 0x00, 0x01, 0x00, 0x00};
    EXPECT_EQ(TrayStateFromMediaEvent(kGood, empty), -1);
    EXPECT_EQ(TrayStateFromMediaEvent(Checked(5, 0x20, 0), open), -1);
    EXPECT_EQ(TrayStateFromMediaEvent(kGood, Bytes{0x00, 0x06, 0x04}), -1);
}

// After the tray closes the drive reports the medium change, then becoming ready as often as
// it is told: retried after a pause each until a retry is good, five at most, then asked once
// more, and that last answer counts.
TEST(GetTrayState, RetriesWhileTheDriveBecomesReady) {
    const auto iso = plattmix::test::ScratchFolder() / "disc.iso";
    std::ofstream(iso, std::ios::binary) << std::string(4 * 2048, '\0');
    imagedrive::clsImageDrive drive;
    const std::string handle = drive.AddDrive(iso.string()).Value();
    std::vector<int> pauses;
    const TrayPauseFn pause = [&pauses](int ms) { pauses.push_back(ms); };
    EXPECT_EQ(GetTrayState(drive, handle, pause), kTrayClosed);
    ASSERT_TRUE(drive.OpenTray(handle));
    EXPECT_EQ(GetTrayState(drive, handle, pause), kTrayOpen);
    EXPECT_TRUE(pauses.empty());

    const struct {
        int becoming;
        int16_t state;
        std::vector<int> pauses;
    } cases[] = {{0, kTrayClosed, {}},
                 {2, kTrayClosed, {1000, 1000}},
                 {9, kTrayUnknown, {1000, 1000, 1000, 1000, 1000}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.becoming);
        pauses.clear();
        ASSERT_TRUE(drive.OpenTray(handle) && drive.SetBecomingReady(handle, c.becoming));
        ASSERT_TRUE(drive.CloseTray(handle));
        EXPECT_EQ(GetTrayState(drive, handle, pause), c.state);
        EXPECT_EQ(pauses, c.pauses);
    }
}

TEST(GetTrayState, NodePaths) {
    EXPECT_EQ(TrayNodePath("/dev/sr1:"), "/dev/sr1");
    EXPECT_EQ(TrayNodePath(" sr2: "), "/dev/sr2");
}
