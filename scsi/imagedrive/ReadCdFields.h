// Which bytes of a raw sector READ CD hands back: the kind of sector decides where sync,
// header, sub-header, user data and EDC/ECC lie, the flags byte (CDB byte 9) which of them
// are wanted, and the expected sector type (CDB byte 1) which kinds may be read at all.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace plattmix::scsi::imagedrive {

enum class SectorKind { Audio, Mode1, Mode2Form1, Mode2Form2, Mode2Formless };

struct ByteRange {
    size_t offset = 0;
    size_t length = 0;
};

// The wanted parts of one sector, in sector order, and the C2 error bytes appended after them.
struct SectorFields {
    std::array<ByteRange, 5> ranges{};
    size_t rangeCount = 0;
    size_t c2Bytes = 0;  // 0, 294 (C2 error bits) or 296 (with the block error byte)
    size_t Size() const;
};

// Nothing for a combination a drive rejects (sync without header, a gap between the parts,
// the reserved C2 code); for audio every flag but user data and C2 is ignored.
std::optional<SectorFields> SelectFields(SectorKind kind, uint8_t flags);

// Expected sector type (bits 4..2 of CDB byte 1): 0 any, 1 CD-DA, 2 Mode 1, 3 Mode 2 formless,
// 4 Mode 2 Form 1, 5 Mode 2 Form 2. Types 6 and 7 are reserved.
bool IsValidExpectedType(uint8_t type);
bool MatchesExpectedType(uint8_t type, SectorKind kind);

// User data of a READ(10) block: 2048 bytes of a Mode 1 or Mode 2 Form 1 sector.
std::optional<ByteRange> BlockUserData(SectorKind kind);

}  // namespace plattmix::scsi::imagedrive
