#include "AspiSrb.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "ScsiStatus.h"

using namespace plattmix::scsi;

namespace {
std::vector<uint8_t> Bytes(std::span<const uint8_t> span) {
    return {span.begin(), span.end()};
}
}  // namespace

TEST(AspiSrb, ExecuteBlockLayout) {
    // READ CD as the program sends it: twelve bytes built, ten given as the length.
    const std::array<uint8_t, 12> readCd{0xBE, 0, 0, 0, 0, 0x10, 0, 0, 0x01, 0x10, 0xEE, 0xEE};
    std::array<uint8_t, kExecSrbSize> srb;
    srb.fill(0xCC);
    BuildExecSrb(srb, {{1, 2, 0}, true, 2352, 0x00007F1122334455, 7, readCd, 10});
    const std::vector<uint8_t> expected{
        0x02, 0x00, 0x01, 0x08, 0x00, 0x00, 0x00, 0x00,  // command, status, adapter, flags
        0x02, 0x00, 0x00, 0x00, 0x30, 0x09, 0x00, 0x00,  // target, LUN, buffer length
        0x55, 0x44, 0x33, 0x22, 0x0E, 0x0A, 0x00, 0x00,  // buffer, sense and CDB lengths
        0x07, 0x00, 0x00, 0x00, 0x11, 0x7F, 0x00, 0x00,  // event, the buffer's high half
        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  //
        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  //
        0xBE, 0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x00,  // CDB: only cdblen bytes
        0x01, 0x10, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  //
        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  // sense area
        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
    EXPECT_EQ(Bytes(srb), expected);
}

TEST(AspiSrb, TimeOutsAreHalfSecondsAndStatusRules) {
    EXPECT_EQ(AspiTimeOut(10800), 21600u);
    EXPECT_EQ(AspiTimeOut(-1), 0xFFFFFFFEu);
    // Carried out: the target status, even when the wait ran out just as it ended; refused, or
    // not carried out when the wait ended: 255. The other cases come through the transport.
    EXPECT_EQ(ExecResult(kSrbComplete, 0, true), 0);
    EXPECT_EQ(ExecResult(kSrbError, 0x08, false), 8);  // BUSY
    EXPECT_EQ(ExecResult(kSrbNoDevice, 0, false), 255);
    EXPECT_EQ(ExecResult(kSrbError, 0x02, true), 255);
}
