// An execute block carried out over SG_IO, as pure functions: the check of the block, the SG_IO
// request made from it, and how the kernel's answer is written back into the block.
#pragma once

#include <cstdint>
#include <span>

#include "AspiSrb.h"
#include "SgIo.h"

namespace plattmix::scsi::aspi {

// kSrbPending when the block can be carried out, else the status it is refused with.
uint8_t CheckExecSrb(const ExecFields& fields);

// The request for a checked block; timeOut in half-seconds (0: the default).
void BuildExecRequest(SgIoRequest& request, const ExecFields& fields, uint32_t halfSeconds);

// Writes host status, target status and sense data into the block and answers the block's
// final status (not written: the caller publishes it last). A request the kernel or the adapter
// did not carry to its end (ioctl failure, host or driver error, time-out) is aborted, and so is
// a READ that delivered fewer bytes than it asked for.
uint8_t FinishExecSrb(std::span<uint8_t, kExecSrbSize> srb, const sg_io_hdr_t& header,
                      std::span<const uint8_t> sense, int ioctlResult);

}  // namespace plattmix::scsi::aspi
