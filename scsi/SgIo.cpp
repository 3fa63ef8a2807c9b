#include "SgIo.h"

#include <algorithm>
#include <limits>

#include "MmcOpcodes.h"
#include "ScsiStatus.h"

namespace plattmix::scsi {

namespace {
constexpr unsigned kDriverSense = 0x08;  // the driver merely reports that sense is present
constexpr unsigned kDriverStatusMask = 0x0F;
// The command length of each opcode group (the top three bits of the opcode).
constexpr std::array<uint8_t, 8> kGroupLength = {6, 10, 10, 12, 16, 12, 10, 10};
}  // namespace

uint8_t SentCdbLength(uint8_t opcode, uint8_t cdblen) {
    return std::max(cdblen, kGroupLength[opcode >> 5]);
}

void BuildSgIoRequest(SgIoRequest& request, std::span<const uint8_t> cdb, uint8_t cdblen,
                      int32_t direction, uint8_t* buffer, int32_t bufferLen, int16_t timeOut) {
    request = SgIoRequest{};
    const size_t length = std::min<size_t>({cdblen, cdb.size(), request.cdb.size()});
    std::copy_n(cdb.begin(), length, request.cdb.begin());

    sg_io_hdr_t& h = request.header;
    h.interface_id = 'S';
    // The kernel's ATA layer refuses a packet shorter than its opcode's group, so READ CD
    // sent with ten bytes goes out as twelve; the bytes beyond cdblen are zero.
    h.cmd_len = SentCdbLength(request.cdb[0], static_cast<uint8_t>(length));
    h.cmdp = request.cdb.data();
    h.mx_sb_len = kSptiSenseLength;
    h.sbp = request.sense.data();
    const bool hasData = buffer != nullptr && bufferLen > 0;
    h.dxfer_len = hasData ? static_cast<unsigned>(bufferLen) : 0u;
    h.dxferp = hasData ? buffer : nullptr;
    if (!hasData) {
        h.dxfer_direction = SG_DXFER_NONE;
    } else {
        h.dxfer_direction = direction == 0 ? SG_DXFER_FROM_DEV : SG_DXFER_TO_DEV;
    }
    // Seconds, sign-extended; a negative value means "as long as the kernel allows".
    h.timeout =
        timeOut < 0 ? std::numeric_limits<unsigned>::max() : static_cast<unsigned>(timeOut) * 1000u;
}

bool TransferLengthIsExact(uint8_t opcode) {
    switch (opcode) {
        case kOpRead6:
        case kOpRead10:
        case kOpRead12:
        case kOpRead16:
        case kOpReadCd:
        case kOpReadCdMsf:
            return true;
        default:
            return false;
    }
}

bool IsShortTransfer(const sg_io_hdr_t& header) {
    const auto* cdb = static_cast<const uint8_t*>(header.cmdp);
    return header.dxfer_direction == SG_DXFER_FROM_DEV && header.resid > 0 && cdb != nullptr &&
           header.cmd_len > 0 && TransferLengthIsExact(cdb[0]);
}

SgIoResult InterpretSgIo(const sg_io_hdr_t& header, std::span<const uint8_t> sense,
                         int ioctlResult) {
    SgIoResult result;
    // The kernel's or the adapter's failure (time-out included) means "not completed".
    const unsigned driverError = header.driver_status & kDriverStatusMask & ~kDriverSense;
    const bool completed = ioctlResult >= 0 && header.host_status == 0 && driverError == 0;
    result.status = completed ? header.status : kStatusNotDelivered;
    if (result.status == kStatusGood && IsShortTransfer(header)) {
        result.status = kStatusNotDelivered;
        return result;
    }

    const size_t written = ioctlResult >= 0 ? std::min<size_t>(header.sb_len_wr, sense.size()) : 0;
    if (written == 0)
        return result;
    const uint8_t responseCode = sense[0] & 0x7F;
    if (responseCode == 0x72 || responseCode == 0x73) {
        // Descriptor format: key in byte 1, ASC and ASCQ in bytes 2 and 3.
        if (written > 1)
            result.senseKey = sense[1];
        if (written > 2)
            result.asc = sense[2];
        if (written > 3)
            result.ascq = sense[3];
    } else {
        if (written > kSenseKeyByte)
            result.senseKey = sense[kSenseKeyByte];
        if (written > kSenseAscByte)
            result.asc = sense[kSenseAscByte];
        if (written > kSenseAscqByte)
            result.ascq = sense[kSenseAscqByte];
    }
    return result;
}

}  // namespace plattmix::scsi
