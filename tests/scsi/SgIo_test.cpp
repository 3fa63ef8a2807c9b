// The pass-through request and the reading of the kernel's answer where the drive test bed
// cannot reach: other directions, descriptor sense, the kernel's failures, short reads.
#include "SgIo.h"

#include <gtest/gtest.h>

#include <vector>

#include "ScsiStatus.h"

using namespace plattmix::scsi;

TEST(SgIo, RequestCarriesTheGroupsCdbLengthDirectionAndTimeOut) {
    const std::vector<uint8_t> readCd = {0xBE, 0, 0, 0, 0, 0, 0, 0, 0x1B, 0x10, 0xEE, 0xEE};
    std::vector<uint8_t> buffer(27 * 2352);
    SgIoRequest r;
    BuildSgIoRequest(r, readCd, 10, 0, buffer.data(), static_cast<int32_t>(buffer.size()), 5);
    // READ CD belongs to the twelve-byte group: the two bytes beyond cdblen go out as zeros.
    EXPECT_EQ(r.header.cmd_len, 12);
    EXPECT_EQ(r.cdb[9], 0x10);
    EXPECT_EQ(r.cdb[10] | r.cdb[11], 0);
    EXPECT_EQ(r.header.dxfer_direction, SG_DXFER_FROM_DEV);
    EXPECT_EQ(r.header.timeout, 5000u);
    EXPECT_EQ(r.header.mx_sb_len, 31);

    for (int32_t direction : {1, 16, -1}) {
        BuildSgIoRequest(r, readCd, 10, direction, buffer.data(), 2048, 10800);
        EXPECT_EQ(r.header.dxfer_direction, SG_DXFER_TO_DEV) << direction;
        EXPECT_EQ(r.header.timeout, 10800000u);
    }
    BuildSgIoRequest(r, std::vector<uint8_t>(6, 0), 6, 0, nullptr, 0, 5);
    EXPECT_EQ(r.header.dxfer_direction, SG_DXFER_NONE);

    // Short commands are raised to their group's length, never shortened.
    EXPECT_EQ(SentCdbLength(0x00, 6), 6);    // TEST UNIT READY
    EXPECT_EQ(SentCdbLength(0xBE, 10), 12);  // READ CD
    EXPECT_EQ(SentCdbLength(0xA8, 12), 12);  // READ(12)
    EXPECT_EQ(SentCdbLength(0x88, 10), 16);  // READ(16)
    EXPECT_EQ(SentCdbLength(0x28, 12), 12);
}

TEST(SgIo, StatusAndSenseFromTheKernelsAnswer) {
    std::array<uint8_t, 32> sense{};
    sg_io_hdr_t h{};

    EXPECT_EQ(InterpretSgIo(h, sense, 0).status, kStatusGood);
    // CHECK CONDITION with fixed-format sense; the key byte is kept whole.
    sense[0] = 0x70;
    sense[2] = 0x22;  // ILI flag set, key 2
    sense[12] = 0x3A;
    sense[13] = 0x02;
    h.status = 2;
    h.driver_status = 0x08;  // "sense available"
    h.sb_len_wr = 18;
    auto r = InterpretSgIo(h, sense, 0);
    EXPECT_EQ(r.status, kStatusCheckCondition);
    EXPECT_EQ(r.senseKey, 0x22);
    EXPECT_EQ(r.asc, 0x3A);
    EXPECT_EQ(r.ascq, 0x02);

    // Descriptor-format sense.
    std::array<uint8_t, 32> desc{0x72, 0x06, 0x28, 0x00};
    h.sb_len_wr = 8;
    r = InterpretSgIo(h, desc, 0);
    EXPECT_EQ(r.senseKey, 6);
    EXPECT_EQ(r.asc, 0x28);

    // Not completed: the ioctl failed, the adapter timed out, the driver failed.
    h = sg_io_hdr_t{};
    EXPECT_EQ(InterpretSgIo(h, sense, -1).status, kStatusNotDelivered);
    h.host_status = 3;  // time-out
    EXPECT_EQ(InterpretSgIo(h, sense, 0).status, kStatusNotDelivered);
    h.host_status = 0;
    h.driver_status = 0x06;  // driver time-out
    EXPECT_EQ(InterpretSgIo(h, sense, 0).status, kStatusNotDelivered);
}

// A READ whose residual count is not zero left blocks out: not completed, whatever the drive's
// status. Commands with an allocation length may answer with fewer bytes, and a CHECK CONDITION
// stays what it is.
TEST(SgIo, ShortReadsAreNotDelivered) {
    struct Case {
        std::vector<uint8_t> cdb;
        int direction;
        uint8_t status;
        int32_t expected;
    };
    const std::vector<uint8_t> readCd = {0xBE, 0, 0, 0, 0, 16, 0, 0, 1, 0xF8};
    const std::vector<uint8_t> read10 = {0x28, 0, 0, 0, 0, 16, 0, 0, 1, 0};
    const Case cases[] = {
        {readCd, 0, 0, kStatusNotDelivered},
        {read10, 0, 0, kStatusNotDelivered},
        {{0xA8, 0, 0, 0, 0, 16, 0, 0, 0, 1, 0, 0}, 0, 0, kStatusNotDelivered},  // READ(12)
        {readCd, 0, 2, kStatusCheckCondition},
        {{0x12, 0, 0, 0, 76, 0}, 0, 0, kStatusGood},              // INQUIRY
        {{0x2A, 0, 0, 0, 0, 16, 0, 0, 1, 0}, 1, 0, kStatusGood},  // data out
    };
    std::vector<uint8_t> buffer(4096);
    std::array<uint8_t, 32> sense{0x70, 0, 0x03, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x11, 0x05};
    for (const Case& c : cases) {
        SgIoRequest r;
        BuildSgIoRequest(r, c.cdb, static_cast<uint8_t>(c.cdb.size()), c.direction, buffer.data(),
                         4096, 5);
        r.header.status = c.status;
        r.header.resid = 2048;
        r.header.sb_len_wr = c.status == 0 ? 0 : 18;
        const SgIoResult result = InterpretSgIo(r.header, sense, 0);
        EXPECT_EQ(result.status, c.expected) << std::hex << int(c.cdb[0]);
        EXPECT_EQ(result.asc, c.status == 0 ? 0 : 0x11) << std::hex << int(c.cdb[0]);
        r.header.resid = 0;
        EXPECT_EQ(InterpretSgIo(r.header, sense, 0).status, c.status) << std::hex << int(c.cdb[0]);
    }
}
