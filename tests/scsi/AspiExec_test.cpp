#include "AspiExec.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "ScsiStatus.h"

using namespace plattmix::scsi;
using namespace plattmix::scsi::aspi;

namespace {

struct Block {
    std::array<uint8_t, kExecSrbSize> srb{};
    std::array<uint8_t, 4096> buffer{};
    Block(std::vector<uint8_t> cdb, bool dataIn, uint32_t length) {
        ExecRequest request;
        request.address = {0, 1, 0};
        request.dataIn = dataIn;
        request.bufferLength = length;
        request.bufferAddress = reinterpret_cast<uintptr_t>(buffer.data());
        request.cdb = cdb;
        request.cdbLength = static_cast<uint8_t>(cdb.size());
        BuildExecSrb(srb, request);
    }
    ExecFields Fields() const { return ReadExecSrb(srb); }
};

}  // namespace

TEST(AspiExec, BlocksThatCannotBeCarriedOut) {
    Block good({0x12, 0, 0, 0, 36, 0}, true, 36);
    EXPECT_EQ(CheckExecSrb(good.Fields()), kSrbPending);

    Block noCdb({}, true, 36);
    EXPECT_EQ(CheckExecSrb(noCdb.Fields()), kSrbInvalidSrb);
    good.srb[kExecCdbLengthAt] = 17;
    EXPECT_EQ(CheckExecSrb(good.Fields()), kSrbInvalidSrb);
    good.srb[kExecCdbLengthAt] = 16;
    EXPECT_EQ(CheckExecSrb(good.Fields()), kSrbPending);

    // Data without a direction or without a buffer.
    Block noDirection({0x28, 0, 0, 0, 0, 0, 0, 0, 1, 0}, true, 2048);
    noDirection.srb[kSrbFlagsByte] = 0;
    EXPECT_EQ(CheckExecSrb(noDirection.Fields()), kSrbInvalidSrb);
    Block noBuffer({0x28, 0, 0, 0, 0, 0, 0, 0, 1, 0}, true, 2048);
    WriteLittle32(noBuffer.srb, kExecBufferAt, 0);
    WriteLittle32(noBuffer.srb, kExecBufferHighAt, 0);
    EXPECT_EQ(CheckExecSrb(noBuffer.Fields()), kSrbInvalidSrb);
    // Without data the direction does not matter.
    Block tur({0, 0, 0, 0, 0, 0}, true, 0);
    tur.srb[kSrbFlagsByte] = 0;
    EXPECT_EQ(CheckExecSrb(tur.Fields()), kSrbPending);
}

TEST(AspiExec, RequestFollowsTheBlock) {
    Block readCd({0xBE, 0, 0, 0, 0, 0x10, 0, 0, 0x01, 0x10}, true, 2048);
    SgIoRequest request;
    BuildExecRequest(request, readCd.Fields(), 10);
    EXPECT_EQ(request.header.interface_id, 'S');
    EXPECT_EQ(request.header.cmd_len, 12);  // raised to READ CD's group, the rest zero
    EXPECT_EQ(request.cdb[9], 0x10);
    EXPECT_EQ(request.cdb[10], 0);
    EXPECT_EQ(request.header.dxfer_direction, SG_DXFER_FROM_DEV);
    EXPECT_EQ(request.header.dxferp, readCd.buffer.data());
    EXPECT_EQ(request.header.dxfer_len, 2048u);
    EXPECT_EQ(request.header.mx_sb_len, 14);
    EXPECT_EQ(request.header.timeout, 5000u);  // ten half-seconds

    // Never set: the default, 108000 half-seconds.
    BuildExecRequest(request, readCd.Fields(), 0);
    EXPECT_EQ(request.header.timeout, 54000000u);
    // Beyond what the kernel takes: as long as it allows.
    BuildExecRequest(request, readCd.Fields(), 0xFFFFFFFE);
    EXPECT_EQ(request.header.timeout, 0xFFFFFFFFu);

    Block write({0x2A, 0, 0, 0, 0, 0, 0, 0, 1, 0}, false, 2048);
    BuildExecRequest(request, write.Fields(), 10);
    EXPECT_EQ(request.header.dxfer_direction, SG_DXFER_TO_DEV);
    // Both direction flags: no data moves.
    write.srb[kSrbFlagsByte] = kSrbDataIn | kSrbDataOut;
    BuildExecRequest(request, write.Fields(), 10);
    EXPECT_EQ(request.header.dxfer_direction, SG_DXFER_NONE);
    EXPECT_EQ(request.header.dxferp, nullptr);
    // A sense area asked larger than the block's is cut to the block.
    write.srb[kExecSenseLengthAt] = 40;
    BuildExecRequest(request, write.Fields(), 10);
    EXPECT_EQ(request.header.mx_sb_len, 16);
}

TEST(AspiExec, AnswersWrittenBackIntoTheBlock) {
    Block block({0x00, 0, 0, 0, 0, 0}, true, 0);
    sg_io_hdr_t header{};
    std::array<uint8_t, 32> sense{};
    for (size_t i = 0; i < sense.size(); ++i)
        sense[i] = static_cast<uint8_t>(0xA0 + i);

    // GOOD: complete, no sense.
    EXPECT_EQ(FinishExecSrb(block.srb, header, sense, 0), kSrbComplete);
    EXPECT_EQ(block.srb[kExecHostStatusAt], kHostOk);
    EXPECT_EQ(block.srb[kExecTargetStatusAt], 0);
    EXPECT_EQ(block.srb[kExecSenseAt], 0);

    // CHECK CONDITION with 18 bytes of sense: the status as the drive gave it and only the
    // fourteen sense bytes the block asked for; the driver's "sense present" is no failure.
    header.status = 0x02;
    header.driver_status = 0x08;
    header.sb_len_wr = 18;
    EXPECT_EQ(FinishExecSrb(block.srb, header, sense, 0), kSrbError);
    EXPECT_EQ(block.srb[kExecTargetStatusAt], 0x02);
    EXPECT_EQ(block.srb[kExecSenseAt], 0xA0);
    EXPECT_EQ(block.srb[kExecSenseAt + 13], 0xAD);
    EXPECT_EQ(block.srb[kExecSenseAt + 14], 0x00);

    // A READ that left blocks out is aborted as an underrun, though the drive said GOOD; an
    // INQUIRY that answered with less than its allocation length is complete.
    Block readCd({0xBE, 0, 0, 0, 0, 16, 0, 0, 1, 0x10}, true, 4096);
    SgIoRequest request;
    BuildExecRequest(request, readCd.Fields(), 0);
    request.header.resid = 2048;
    EXPECT_EQ(FinishExecSrb(readCd.srb, request.header, sense, 0), kSrbAborted);
    EXPECT_EQ(readCd.srb[kExecHostStatusAt], kHostDataUnderrun);
    EXPECT_EQ(ExecResult(kSrbAborted, readCd.srb[kExecTargetStatusAt], false), kStatusNotDelivered);
    Block inquiry({0x12, 0, 0, 0, 76, 0}, true, 76);
    BuildExecRequest(request, inquiry.Fields(), 0);
    request.header.resid = 40;
    EXPECT_EQ(FinishExecSrb(inquiry.srb, request.header, sense, 0), kSrbComplete);

    // Not carried to its end: aborted, with the host status saying why.
    struct Case {
        int ioctl;
        unsigned short host, driver;
        uint8_t hostStatus;
    };
    for (const Case c :
         {Case{-1, 0, 0, kHostSelectionTimeOut}, Case{0, 0x03, 0, kHostCommandTimeOut},
          Case{0, 0, 0x06, kHostCommandTimeOut}, Case{0, 0x08, 0, kHostBusReset},
          Case{0, 0x01, 0, kHostSelectionTimeOut}, Case{0, 0x07, 0, kHostSelectionTimeOut}}) {
        Block failed({0x00, 0, 0, 0, 0, 0}, true, 0);
        header = sg_io_hdr_t{};
        header.host_status = c.host;
        header.driver_status = c.driver;
        header.status = 0x02;
        EXPECT_EQ(FinishExecSrb(failed.srb, header, sense, c.ioctl), kSrbAborted) << c.host;
        EXPECT_EQ(failed.srb[kExecHostStatusAt], c.hostStatus) << c.host << " " << c.driver;
        EXPECT_EQ(failed.srb[kExecTargetStatusAt], 0);
    }
}
