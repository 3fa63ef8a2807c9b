// The fall-back transport in the test bed's guest, booted without the sr driver (sg-only: the
// two drives are /dev/sg0 and /dev/sg1, drive 0 holding disc A, drive 1 empty) or without
// either driver (no-driver). The program's own start, the drive list, INQUIRY, TEST UNIT READY,
// the TOC and READ CD against the image, and plattmix-cli with the same choice of transport.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <span>
#include <string>
#include <vector>

#include "ProbeChannel.h"

namespace plattmix::testbed {

// What the window does at its start, printed: the chosen transport's name and its drive list,
// or the two-line message when nothing works; 1 (the program ends) then, else 0.
int StartLikeTheWindow(std::ostream& out);

// self: this program's path (run again with --select); cli: plattmix-cli linked the same way.
void CheckFallbackTransport(Report& report, const std::string& data, const std::string& self,
                            const std::string& cli);
void CheckNoTransport(Report& report, const std::string& self, const std::string& cli);

// The bytes of an image file in the guest.
std::vector<uint8_t> LoadImage(const std::string& path);
// A sector as READ CD gives it with every field (2352 bytes): the sync pattern, the header with
// the sector's MSF address and mode 1, then the sector's 2048 bytes as the image holds them.
bool RawSectorMatches(std::span<const uint8_t> raw, uint32_t lba, std::span<const uint8_t> image);

}  // namespace plattmix::testbed
