// The SG_IO request of the pass-through transport as pure functions: what is sent for a
// command, and how the kernel's answer becomes a status and three sense bytes.
#pragma once

#include <scsi/sg.h>

#include <array>
#include <cstdint>
#include <span>

namespace plattmix::scsi {

// Sense bytes asked for: the record's sense area minus four, one short of what fits (kept).
inline constexpr uint8_t kSptiSenseLength = 31;

struct SgIoRequest {
    sg_io_hdr_t header{};
    std::array<uint8_t, 16> cdb{};
    std::array<uint8_t, 32> sense{};
};

// How many command bytes reach the kernel: cdblen, raised to the opcode group's length.
uint8_t SentCdbLength(uint8_t opcode, uint8_t cdblen);

// Fills the request; cdb and sense pointers of the header point into the request itself, so
// it must not be copied after this call.
void BuildSgIoRequest(SgIoRequest& request, std::span<const uint8_t> cdb, uint8_t cdblen,
                      int32_t direction, uint8_t* buffer, int32_t bufferLen, int16_t timeOut);

// Whether a command's length field is a transfer length: the READ commands ask for exactly that
// many blocks. The other commands give an allocation length, room that a shorter reply (INQUIRY,
// READ TOC, GET CONFIGURATION and the like) need not fill.
bool TransferLengthIsExact(uint8_t opcode);

// A request that read fewer bytes than its transfer length asked for (the kernel's residual
// count is not zero). The missing bytes are no data, whatever the status says.
bool IsShortTransfer(const sg_io_hdr_t& header);

struct SgIoResult {
    int32_t status = 0;
    uint8_t senseKey = 0;  // the whole byte, flag bits included
    uint8_t asc = 0;
    uint8_t ascq = 0;
};

// ioctlResult is the ioctl's return value. Fixed-format sense is read at bytes 2, 12 and 13;
// descriptor-format sense is read where that format keeps the same three values. A short
// transfer (above) that the drive reports as GOOD did not complete: 255, without sense.
SgIoResult InterpretSgIo(const sg_io_hdr_t& header, std::span<const uint8_t> sense,
                         int ioctlResult);

}  // namespace plattmix::scsi
