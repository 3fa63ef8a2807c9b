#include "AspiExec.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "ScsiStatus.h"

using namespace plattmix::scsi;
using namespace plattmix::scsi::aspi;

namespace {

// An execute block for adapter 0, target 1 with a buffer of its own.
struct Block {
    std::array<uint8_t, kExecSrbSize> srb{};
    std::array<uint8_t, 4096> buffer{};
    Block(std::vector<uint8_t> cdb, bool dataIn, uint32_t length) {
        BuildExecSrb(srb, {{0, 1, 0},
                           dataIn,
                           length,
                           reinterpret_cast<uintptr_t>(buffer.data()),
                           -1,
                           cdb,
                           static_cast<uint8_t>(cdb.size())});
    }
    ExecFields Fields() const { return ReadExecSrb(srb); }
};

}  // namespace

TEST(AspiExec, BlocksThatCannotBeCarriedOut) {
    const std::vector<uint8_t> read10{0x28, 0, 0, 0, 0, 0, 0, 0, 1, 0};
    Block good(read10, true, 2048);
    EXPECT_EQ(CheckExecSrb(good.Fields()), kSrbPending);
    EXPECT_EQ(CheckExecSrb(Block({}, true, 36).Fields()), kSrbInvalidSrb);
    good.srb[kExecCdbLengthAt] = 17;
    EXPECT_EQ(CheckExecSrb(good.Fields()), kSrbInvalidSrb);
    good.srb[kExecCdbLengthAt] = 16;
    EXPECT_EQ(CheckExecSrb(good.Fields()), kSrbPending);

    // Data without a direction or without a buffer; without data the direction does not matter.
    Block noDirection(read10, true, 2048);
    noDirection.srb[kSrbFlagsByte] = 0;
    EXPECT_EQ(CheckExecSrb(noDirection.Fields()), kSrbInvalidSrb);
    Block noBuffer(read10, true, 2048);
    WriteLittle32(noBuffer.srb, kExecBufferAt, 0);
    WriteLittle32(noBuffer.srb, kExecBufferHighAt, 0);
    EXPECT_EQ(CheckExecSrb(noBuffer.Fields()), kSrbInvalidSrb);
    Block tur({0, 0, 0, 0, 0, 0}, true, 0);
    tur.srb[kSrbFlagsByte] = 0;
    EXPECT_EQ(CheckExecSrb(tur.Fields()), kSrbPending);
}

// What the layer adds to the pass-through request: half-seconds, "both directions" and the
// block's own sense area.
TEST(AspiExec, RequestFollowsTheBlock) {
    Block readCd({0xBE, 0, 0, 0, 0, 0x10, 0, 0, 0x01, 0x10}, true, 2048);
    SgIoRequest request;
    for (const auto& [halfSeconds, milliseconds] :
         {std::pair{10u, 5000u}, std::pair{0u, 54000000u},  // never set: 108000 half-seconds
          std::pair{0xFFFFFFFEu, 0xFFFFFFFFu}}) {           // as long as the kernel allows
        BuildExecRequest(request, readCd.Fields(), halfSeconds);
        EXPECT_EQ(request.header.timeout, milliseconds) << halfSeconds;
    }
    EXPECT_EQ(request.header.dxfer_direction, SG_DXFER_FROM_DEV);
    EXPECT_EQ(request.header.dxferp, readCd.buffer.data());
    EXPECT_EQ(request.header.mx_sb_len, 14);

    Block write({0x2A, 0, 0, 0, 0, 0, 0, 0, 1, 0}, false, 2048);
    BuildExecRequest(request, write.Fields(), 10);
    EXPECT_EQ(request.header.dxfer_direction, SG_DXFER_TO_DEV);
    write.srb[kSrbFlagsByte] = kSrbDataIn | kSrbDataOut;
    write.srb[kExecSenseLengthAt] = 40;  // larger than the block's sense area
    BuildExecRequest(request, write.Fields(), 10);
    EXPECT_EQ(request.header.dxfer_direction, SG_DXFER_NONE);
    EXPECT_EQ(request.header.dxferp, nullptr);
    EXPECT_EQ(request.header.mx_sb_len, 16);
}

TEST(AspiExec, AnswersWrittenBackIntoTheBlock) {
    Block block({0x00, 0, 0, 0, 0, 0}, true, 0);
    sg_io_hdr_t header{};
    std::array<uint8_t, 32> sense{};
    for (size_t i = 0; i < sense.size(); ++i)
        sense[i] = static_cast<uint8_t>(0xA0 + i);

    EXPECT_EQ(FinishExecSrb(block.srb, header, sense, 0), kSrbComplete);
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

    // A READ that left blocks out is aborted as an underrun, though the drive said GOOD.
    Block readCd({0xBE, 0, 0, 0, 0, 16, 0, 0, 1, 0x10}, true, 4096);
    SgIoRequest request;
    BuildExecRequest(request, readCd.Fields(), 0);
    request.header.resid = 2048;
    EXPECT_EQ(FinishExecSrb(readCd.srb, request.header, sense, 0), kSrbAborted);
    EXPECT_EQ(readCd.srb[kExecHostStatusAt], kHostDataUnderrun);

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
