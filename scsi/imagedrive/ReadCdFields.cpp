#include "imagedrive/ReadCdFields.h"

namespace plattmix::scsi::imagedrive {

namespace {

constexpr uint8_t kFlagSync = 0x80;
constexpr uint8_t kFlagUserData = 0x10;
constexpr uint8_t kFlagEdcEcc = 0x08;
constexpr size_t kC2ErrorBits = 294;
constexpr size_t kC2WithBlockErrors = 296;

// Parts of a sector in order: sync, header, sub-header, user data, EDC/ECC.
using Layout = std::array<ByteRange, 5>;

Layout LayoutOf(SectorKind kind) {
    switch (kind) {
        case SectorKind::Mode1:
            return {{{0, 12}, {12, 4}, {16, 0}, {16, 2048}, {2064, 288}}};
        case SectorKind::Mode2Form1:
            return {{{0, 12}, {12, 4}, {16, 8}, {24, 2048}, {2072, 280}}};
        case SectorKind::Mode2Form2:
            return {{{0, 12}, {12, 4}, {16, 8}, {24, 2324}, {2348, 4}}};
        case SectorKind::Mode2Formless:
            return {{{0, 12}, {12, 4}, {16, 0}, {16, 2336}, {2352, 0}}};
        case SectorKind::Audio:
            break;
    }
    return {{{0, 0}, {0, 0}, {0, 0}, {0, 2352}, {2352, 0}}};
}

std::optional<size_t> C2Bytes(uint8_t flags) {
    switch ((flags >> 1) & 0x3) {
        case 0:
            return size_t{0};
        case 1:
            return kC2ErrorBits;
        case 2:
            return kC2WithBlockErrors;
        default:
            return std::nullopt;
    }
}

}  // namespace

size_t SectorFields::Size() const {
    size_t size = c2Bytes;
    for (size_t i = 0; i < rangeCount; ++i)
        size += ranges[i].length;
    return size;
}

std::optional<SectorFields> SelectFields(SectorKind kind, uint8_t flags) {
    const auto c2 = C2Bytes(flags);
    if (!c2)
        return std::nullopt;
    SectorFields fields;
    fields.c2Bytes = *c2;
    const Layout layout = LayoutOf(kind);
    if (kind == SectorKind::Audio) {
        if (flags & kFlagUserData)
            fields.ranges[fields.rangeCount++] = layout[3];
        return fields;
    }
    const uint8_t headerCode = (flags >> 5) & 0x3;
    const std::array<bool, 5> wanted{(flags & kFlagSync) != 0, (headerCode & 1) != 0,
                                     (headerCode & 2) != 0, (flags & kFlagUserData) != 0,
                                     (flags & kFlagEdcEcc) != 0};
    if (wanted[0] && !wanted[1])
        return std::nullopt;  // sync only comes with the header
    // The wanted parts that exist in this kind of sector must follow each other without a gap.
    bool started = false, ended = false;
    for (size_t i = 0; i < layout.size(); ++i) {
        if (layout[i].length == 0)
            continue;
        if (wanted[i]) {
            if (ended)
                return std::nullopt;
            started = true;
            fields.ranges[fields.rangeCount++] = layout[i];
        } else if (started) {
            ended = true;
        }
    }
    return fields;
}

bool IsValidExpectedType(uint8_t type) {
    return type <= 5;
}

bool MatchesExpectedType(uint8_t type, SectorKind kind) {
    switch (type) {
        case 0:
            return true;
        case 1:
            return kind == SectorKind::Audio;
        case 2:
            return kind == SectorKind::Mode1;
        case 3:
            return kind == SectorKind::Mode2Formless;
        case 4:
            return kind == SectorKind::Mode2Form1;
        case 5:
            return kind == SectorKind::Mode2Form2;
        default:
            return false;
    }
}

std::optional<ByteRange> BlockUserData(SectorKind kind) {
    if (kind == SectorKind::Mode1)
        return ByteRange{16, 2048};
    if (kind == SectorKind::Mode2Form1)
        return ByteRange{24, 2048};
    return std::nullopt;
}

}  // namespace plattmix::scsi::imagedrive
