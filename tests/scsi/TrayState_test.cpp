// The tray state: the decisions on literal sense and event bytes and the retries of TEST UNIT
// READY against a scripted device. Real drives answer in the drive test bed, disc-image drives
// in the cdaudio device's tests.
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <vector>

#include "TrayNodeDevice.h"
#include "TrayState.h"

using namespace plattmix::scsi;

namespace {

using Bytes = std::vector<uint8_t>;

// Fixed-format sense: response code 70, the key at 2, the additional length, ASC 12, ASCQ 13.
Bytes Sense(uint8_t key, uint8_t asc, uint8_t ascq) {
    return {0x70, 0, key, 0, 0, 0, 0, 0x0A, 0, 0, 0, 0, asc, ascq};
}

TrayResult Checked(uint8_t key, uint8_t asc, uint8_t ascq) {
    return MakeTrayResult(2, Sense(key, asc, ascq));
}

const TrayResult kGood = MakeTrayResult(0, {});

// Answers each command with the next scripted result (and reply bytes), recording the blocks.
class ScriptedDevice final : public ITrayDevice {
  public:
    struct Step {
        TrayResult result;
        Bytes reply;
    };
    std::deque<Step> script;
    std::vector<Bytes> sent;

    TrayResult Exec(std::span<const uint8_t> cdb, std::span<uint8_t> data) override {
        sent.emplace_back(cdb.begin(), cdb.end());
        if (script.empty())
            return MakeTrayResult(2, {});
        const Step step = script.front();
        script.pop_front();
        std::copy_n(step.reply.begin(), std::min(step.reply.size(), data.size()), data.begin());
        return step.result;
    }
};

struct Pauses {
    std::vector<int> taken;
    TrayPauseFn Fn() {
        return [this](int ms) { taken.push_back(ms); };
    }
};

}  // namespace

// Ready, and no medium with the tray closed or open, are answered by real drives in the drive
// test bed; here the answers QEMU does not give.
TEST(TrayDecision, FromTheUnitReadyAnswer) {
    EXPECT_EQ(DecideFromUnitReady(Checked(2, 0x3A, 0x00)), TrayDecision::AskMediaEvent);
    EXPECT_EQ(DecideFromUnitReady(Checked(2, 0x3A, 0x03)), TrayDecision::Unknown);
    EXPECT_EQ(DecideFromUnitReady(Checked(2, 0x04, 0x01)), TrayDecision::Unknown);
    EXPECT_EQ(DecideFromUnitReady(MakeTrayResult(2, {})), TrayDecision::Unknown);
    // A key byte with a flag bit; descriptor-format sense.
    EXPECT_EQ(DecideFromUnitReady(Checked(0x62, 0x3A, 0x02)), TrayDecision::Open);
    EXPECT_EQ(DecideFromUnitReady(MakeTrayResult(2, Bytes{0x72, 0x02, 0x3A, 0x02, 0, 0, 0, 0})),
              TrayDecision::Open);
}

TEST(TrayDecision, FromTheMediaEvent) {
    // Event data length 6, media class, media status in byte 5: bit 0 tray open, bit 1 medium.
    const Bytes open{0x00, 0x06, 0x04, 0x54, 0x00, 0x01, 0x00, 0x00};
    const Bytes closed{0x00, 0x06, 0x04, 0x54, 0x00, 0x02, 0x00, 0x00};
    const Bytes empty{0x00, 0x00, 0x04, 0x54, 0x00, 0x01, 0x00, 0x00};
    EXPECT_EQ(TrayStateFromMediaEvent(kGood, open), 1);
    EXPECT_EQ(TrayStateFromMediaEvent(kGood, closed), 0);
    EXPECT_EQ(TrayStateFromMediaEvent(kGood, empty), -1);
    EXPECT_EQ(TrayStateFromMediaEvent(Checked(5, 0x20, 0), open), -1);
    EXPECT_EQ(TrayStateFromMediaEvent(kGood, Bytes{0x00, 0x06, 0x04}), -1);
}

// Ready, no medium or an error: answered at once. Becoming ready: retried after a pause until a
// retry is good, then asked once more, and that last answer counts. Medium changed: five
// retries with pauses.
TEST(TestUnitReadyRetry, RetriesAndPauses) {
    const TrayResult becoming = Checked(2, 0x04, 0x01), changed = Checked(6, 0x28, 0x00);
    const struct {
        std::vector<TrayResult> answers;
        TrayResult result;
        size_t sent;
        std::vector<int> pauses;
    } cases[] = {
        {{kGood, kGood}, kGood, 1, {}},
        {{Checked(2, 0x3A, 0x00), kGood}, Checked(2, 0x3A, 0x00), 1, {}},
        {{Checked(3, 0x11, 0x05), kGood}, Checked(3, 0x11, 0x05), 1, {}},
        {{becoming, becoming, kGood, Checked(2, 0x3A, 0x02)}, Checked(2, 0x3A, 0x02), 4, {1000}},
        {{changed, changed, changed, changed, changed, changed, kGood},
         kGood,
         7,
         {1000, 1000, 1000, 1000, 1000}},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(i);
        ScriptedDevice device;
        for (const TrayResult& answer : cases[i].answers)
            device.script.push_back({answer, {}});
        Pauses pauses;
        EXPECT_EQ(TestUnitReadyRetry(device, pauses.Fn()), cases[i].result);
        EXPECT_EQ(device.sent.size(), cases[i].sent);
        EXPECT_EQ(device.sent[0], Bytes(6, 0));
        EXPECT_EQ(pauses.taken, cases[i].pauses);
    }
}

TEST(GetTrayState, NoMediumWithoutQualifierAsksForTheMediaEvent) {
    ScriptedDevice device;
    device.script = {{Checked(2, 0x3A, 0x00), {}},
                     {kGood, Bytes{0x00, 0x06, 0x04, 0x54, 0x00, 0x01, 0x00, 0x00}}};
    EXPECT_EQ(GetTrayState(device, {}), 1);
    ASSERT_EQ(device.sent.size(), 2u);
    EXPECT_EQ(device.sent[1][0], 0x4A);  // GET EVENT STATUS NOTIFICATION
}

TEST(GetTrayState, NodePaths) {
    EXPECT_EQ(TrayNodePath("/dev/sr1:"), "/dev/sr1");
    EXPECT_EQ(TrayNodePath(" sr2: "), "/dev/sr2");
}
