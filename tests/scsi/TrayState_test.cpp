// The tray state: the decisions on literal sense and event bytes, the retries of TEST UNIT
// READY against a scripted device, and the state of disc-image drives and of nodes that are
// no drives.
#include <gtest/gtest.h>

#include <deque>
#include <vector>

#include "MmcOpcodes.h"
#include "TrayNodeDevice.h"
#include "TrayState.h"
#include "imagedrive/clsImageDrive.h"

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
    std::vector<size_t> transferLengths;

    TrayResult Exec(std::span<const uint8_t> cdb, std::span<uint8_t> data) override {
        sent.emplace_back(cdb.begin(), cdb.end());
        transferLengths.push_back(data.size());
        if (script.empty())
            return MakeTrayResult(2, {});
        const Step step = script.front();
        script.pop_front();
        std::copy_n(step.reply.begin(), std::min(step.reply.size(), data.size()), data.begin());
        return step.result;
    }
    int Sent(uint8_t opcode) const {
        return static_cast<int>(std::count_if(sent.begin(), sent.end(),
                                              [&](const Bytes& c) { return c[0] == opcode; }));
    }
};

struct Pauses {
    std::vector<int> taken;
    TrayPauseFn Fn() {
        return [this](int ms) { taken.push_back(ms); };
    }
};

}  // namespace

TEST(TrayResult, SenseBytesFollowTheStatus) {
    const TrayResult r = Checked(0x62, 0x3A, 0x02);  // key byte with a flag bit
    EXPECT_EQ(r[0], 2);
    EXPECT_EQ(r[3], 0x62);
    EXPECT_EQ(r[13], 0x3A);
    EXPECT_EQ(r[14], 0x02);
    EXPECT_EQ(TraySenseKey(r), 0x2);

    // Descriptor format: key, ASC and ASCQ right after the response code.
    const TrayResult d = MakeTrayResult(2, Bytes{0x72, 0x06, 0x28, 0x00, 0, 0, 0, 0});
    EXPECT_EQ(TraySenseKey(d), 6);
    EXPECT_EQ(TrayAsc(d), 0x28);
    EXPECT_EQ(TrayAscq(d), 0x00);

    // More than 19 sense bytes: the rest is not kept.
    Bytes longSense(32, 0xEE);
    longSense[0] = 0x70;
    const TrayResult l = MakeTrayResult(2, longSense);
    EXPECT_EQ(l[19], 0xEE);
}

TEST(BitSet, AnswersMinusOneForASetBit) {
    EXPECT_EQ(BitSet(0x01, 0), -1);
    EXPECT_EQ(BitSet(0x02, 0), 0);
    EXPECT_EQ(BitSet(0x02, 1), -1);
    EXPECT_EQ(BitSet(static_cast<int32_t>(0x80000000u), 31), -1);
    EXPECT_EQ(BitSet(-1, 32), 0);
}

TEST(TrayDecision, FromTheUnitReadyAnswer) {
    EXPECT_EQ(DecideFromUnitReady(kGood), TrayDecision::Closed);
    EXPECT_EQ(DecideFromUnitReady(Checked(2, 0x3A, 0x01)), TrayDecision::Closed);
    EXPECT_EQ(DecideFromUnitReady(Checked(2, 0x3A, 0x02)), TrayDecision::Open);
    EXPECT_EQ(DecideFromUnitReady(Checked(2, 0x3A, 0x00)), TrayDecision::AskMediaEvent);
    EXPECT_EQ(DecideFromUnitReady(Checked(2, 0x3A, 0x03)), TrayDecision::Unknown);
    EXPECT_EQ(DecideFromUnitReady(Checked(2, 0x04, 0x01)), TrayDecision::Unknown);
    EXPECT_EQ(DecideFromUnitReady(MakeTrayResult(2, {})), TrayDecision::Unknown);
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

TEST(TestUnitReadyRetry, AnswersAtOnceWhenReadyOrWithoutMedium) {
    for (const TrayResult& first : {kGood, Checked(2, 0x3A, 0x00), Checked(3, 0x11, 0x05)}) {
        ScriptedDevice device;
        device.script = {{first, {}}, {kGood, {}}};
        Pauses pauses;
        EXPECT_EQ(TestUnitReadyRetry(device, pauses.Fn()), first);
        EXPECT_EQ(device.sent, std::vector<Bytes>{Bytes(6, 0)});
        EXPECT_TRUE(pauses.taken.empty());
    }
}

TEST(TestUnitReadyRetry, BecomingReadyStopsAtTheFirstGoodRetryThenAsksOnceMore) {
    ScriptedDevice device;
    device.script = {{Checked(2, 0x04, 0x01), {}},
                     {Checked(2, 0x04, 0x01), {}},
                     {kGood, {}},
                     {Checked(2, 0x3A, 0x02), {}}};
    Pauses pauses;
    // The last command's answer counts, not the good retry's.
    EXPECT_EQ(TestUnitReadyRetry(device, pauses.Fn()), Checked(2, 0x3A, 0x02));
    EXPECT_EQ(device.sent.size(), 4u);
    EXPECT_EQ(pauses.taken, std::vector<int>{1000});
}

TEST(TestUnitReadyRetry, MediumChangedRetriesFiveTimesWithPauses) {
    ScriptedDevice device;
    for (int i = 0; i < 6; ++i)
        device.script.push_back({Checked(0x06, 0x28, 0x00), {}});
    device.script.push_back({kGood, {}});
    Pauses pauses;
    EXPECT_EQ(TestUnitReadyRetry(device, pauses.Fn()), kGood);
    EXPECT_EQ(device.sent.size(), 7u);
    EXPECT_EQ(pauses.taken, std::vector<int>(5, 1000));
}

TEST(GetTrayState, TrayOpenSenseAnswersWithoutAskingForEvents) {
    ScriptedDevice device;
    device.script = {{Checked(2, 0x3A, 0x02), {}}};
    EXPECT_EQ(GetTrayState(device, {}), 1);
    EXPECT_EQ(device.Sent(kOpGetEventStatus), 0);

    device.script = {{Checked(2, 0x3A, 0x01), {}}};
    EXPECT_EQ(GetTrayState(device, {}), 0);
    device.script = {{kGood, {}}};
    EXPECT_EQ(GetTrayState(device, {}), 0);
    device.script = {{Checked(5, 0x24, 0x00), {}}};
    EXPECT_EQ(GetTrayState(device, {}), -1);
    EXPECT_EQ(device.Sent(kOpGetEventStatus), 0);
}

TEST(GetTrayState, NoMediumWithoutQualifierAsksForTheMediaEvent) {
    ScriptedDevice device;
    device.script = {{Checked(2, 0x3A, 0x00), {}},
                     {kGood, Bytes{0x00, 0x06, 0x04, 0x54, 0x00, 0x01, 0x00, 0x00}}};
    EXPECT_EQ(GetTrayState(device, {}), 1);
    ASSERT_EQ(device.sent.size(), 2u);
    EXPECT_EQ(device.sent[1], (Bytes{0x4A, 0x01, 0x00, 0x00, 0x10, 0x00, 0x00, 0x00, 0x08, 0x00}));
    EXPECT_EQ(device.transferLengths[1], 8u);

    device.script = {{Checked(2, 0x3A, 0x00), {}}, {kGood, Bytes(8, 0)}};
    EXPECT_EQ(GetTrayState(device, {}), -1);
    device.script = {{Checked(2, 0x3A, 0x00), {}}, {Checked(5, 0x20, 0x00), {}}};
    EXPECT_EQ(GetTrayState(device, {}), -1);
}

TEST(GetTrayState, NodesThatAreNoDrivesAnswerUnknown) {
    EXPECT_EQ(GetTrayState(std::string("/dev/plattmix-no-such-node")), -1);
    EXPECT_EQ(GetTrayState(std::string("")), -1);
    // Opens, but SG_IO means nothing to it.
    EXPECT_EQ(GetTrayState(std::string("/dev/null")), -1);

    EXPECT_EQ(TrayNodePath("sr0"), "/dev/sr0");
    EXPECT_EQ(TrayNodePath("/dev/sr1:"), "/dev/sr1");
    EXPECT_EQ(TrayNodePath(" sr2: "), "/dev/sr2");
}

TEST(GetTrayState, DiscImageDrivesAnswerThroughTheirTransport) {
    imagedrive::clsImageDrive drive;
    const auto empty = drive.AddDrive("");
    ASSERT_TRUE(empty.ok());
    const std::string handle = empty.Value();
    Pauses pauses;
    EXPECT_EQ(GetTrayState(drive, handle, pauses.Fn()), 0);  // 2/3A/01
    drive.OpenTray(handle);
    EXPECT_EQ(GetTrayState(drive, handle, pauses.Fn()), 1);  // 2/3A/02
    drive.CloseTray(handle);
    EXPECT_EQ(GetTrayState(drive, handle, pauses.Fn()), 0);
    EXPECT_EQ(GetTrayState(drive, "kein-laufwerk", pauses.Fn()), -1);
    EXPECT_TRUE(pauses.taken.empty());
}
