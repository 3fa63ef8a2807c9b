// READ TOC replies of an Enhanced CD, as literal bytes: audio tracks 1 at LBA 0 and 2 at 300 in
// the first session, data track 3 at 12005 in the second, the disc's lead-out at 12505.
#pragma once

#include <cstdint>
#include <vector>

namespace plattmix::test {

// Format 0, LBA form: two audio tracks (control 0), a data track (control 4), the lead-out.
inline const std::vector<uint8_t> kEnhancedToc{
    0x00, 0x22, 0x01, 0x03,                           //
    0x00, 0x10, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00,   // 1 at 0
    0x00, 0x10, 0x02, 0x00, 0x00, 0x00, 0x01, 0x2C,   // 2 at 300
    0x00, 0x14, 0x03, 0x00, 0x00, 0x00, 0x2E, 0xE5,   // 3 at 12005
    0x00, 0x14, 0xAA, 0x00, 0x00, 0x00, 0x30, 0xD9};  // lead-out at 12505

// Format 1: sessions 1 to 2, the last one starting with track 3 at 12005.
inline const std::vector<uint8_t> kTwoSessions{0x00, 0x0A, 0x01, 0x02, 0x00, 0x14,
                                               0x03, 0x00, 0x00, 0x00, 0x2E, 0xE5};

}  // namespace plattmix::test
