#include "imagedrive/ReadCommands.h"

#include <algorithm>
#include <array>
#include <numeric>

#include "MmcOpcodes.h"
#include "imagedrive/AudioQuirks.h"
#include "imagedrive/SubChannelReply.h"

namespace plattmix::scsi::imagedrive {

namespace {

constexpr size_t kC2WithBlockErrorBytes = kC2PointerBytes + 2;  // the OR of them, a pad byte
constexpr uint8_t kSubChannelNone = 0;
constexpr uint8_t kSubChannelFormattedQ = 2;

int32_t Lba(Cdb cdb) {
    const uint32_t value = (uint32_t{cdb[2]} << 24) | (uint32_t{cdb[3]} << 16) |
                           (uint32_t{cdb[4]} << 8) | uint32_t{cdb[5]};
    return static_cast<int32_t>(value);  // READ CD addresses are signed
}

const CommandResult kInvalidField =
    CommandResult::Check(kSenseIllegalRequest, kAscInvalidFieldInCdb, 0);
const CommandResult kOutOfRange = CommandResult::Check(kSenseIllegalRequest, kAscLbaOutOfRange, 0);
const CommandResult kIllegalMode =
    CommandResult::Check(kSenseIllegalRequest, kAscIllegalModeForTrack, 0);
const CommandResult kUnrecoveredRead =
    CommandResult::Check(kSenseMediumError, kAscUnrecoveredRead, kAscqLecUncorrectable);

bool Touches(const std::vector<LbaRange>& ranges, int64_t lba, int64_t blocks) {
    return std::any_of(ranges.begin(), ranges.end(),
                       [&](const LbaRange& range) { return range.Touches(lba, blocks); });
}

// The checks every read makes before it touches a sector: the addresses lie on the disc and
// no injected fault lies in the way. Nothing when the read may go ahead.
std::optional<CommandResult> Precheck(const SectorSource& medium, const Faults& faults, int64_t lba,
                                      int64_t blocks) {
    if (lba < 0 || lba + blocks > medium.Disc().LeadOut())
        return kOutOfRange;
    if (Touches(faults.timeOuts, lba, blocks))
        return CommandResult::TimedOut();
    if (Touches(faults.readErrors, lba, blocks))
        return kUnrecoveredRead;
    return std::nullopt;
}

std::optional<CommandResult> ReadFailure(SectorRead result) {
    if (result == SectorRead::OutOfRange)
        return kOutOfRange;  // between two sessions
    if (result == SectorRead::ReadFailed)
        return kUnrecoveredRead;
    return std::nullopt;
}

// Copies as much of the bytes as still fits; answers the new fill level.
size_t Append(std::span<uint8_t> buffer, size_t filled, std::span<const uint8_t> bytes) {
    const size_t n = std::min(bytes.size(), buffer.size() - filled);
    std::copy_n(bytes.begin(), n, buffer.begin() + static_cast<std::ptrdiff_t>(filled));
    return filled + n;
}

// Reads the blocks one sector at a time; take(lba, kind, sector, filled) copies what the
// command wants of each sector into the buffer, or answers the failure that ends the read.
template <typename TakeFn>
CommandResult ReadSectors(const SectorSource& medium, const Faults& faults, int64_t lba,
                          int64_t blocks, std::span<uint8_t> buffer, TakeFn take) {
    if (blocks == 0)
        return CommandResult::Good();
    if (auto failure = Precheck(medium, faults, lba, blocks))
        return *failure;
    std::array<uint8_t, kRawSectorSize> sector{};
    size_t filled = 0;
    for (int64_t i = 0; i < blocks && filled < buffer.size(); ++i) {
        const RawSector raw = medium.Read(static_cast<int32_t>(lba + i), sector);
        if (auto failure = ReadFailure(raw.result))
            return *failure;
        if (auto failure = take(static_cast<int32_t>(lba + i), raw.kind,
                                std::span<uint8_t, kRawSectorSize>(sector), filled))
            return *failure;
    }
    return CommandResult::Good(filled);
}

}  // namespace

int64_t RequestedBlocks(Cdb cdb) {
    if (cdb[0] == kOpReadCd)
        return (int64_t{cdb[6]} << 16) | (int64_t{cdb[7]} << 8) | cdb[8];
    if (cdb[0] == kOpRead10)
        return (int64_t{cdb[7]} << 8) | cdb[8];
    return 0;
}

CommandResult ExecuteReadCd(const SectorSource& medium, Faults& faults, Cdb cdb,
                            std::span<uint8_t> buffer) {
    const auto expectedType = static_cast<uint8_t>((cdb[1] >> 2) & 0x7);
    const uint8_t flags = cdb[9];
    const uint8_t subChannel = cdb[10];  // raw P-W and corrected R-W are not offered
    if (!IsValidExpectedType(expectedType) ||
        (subChannel != kSubChannelNone && subChannel != kSubChannelFormattedQ))
        return kInvalidField;
    const auto audioFields = SelectFields(SectorKind::Audio, flags);
    if (!audioFields)
        return kInvalidField;  // reserved C2 code
    if (audioFields->c2Bytes > 0 && !faults.c2Pointers)
        return kInvalidField;  // this drive has no C2 error pointers
    ShiftedAudio shifted(medium, faults.readOffsetSamples);
    return ReadSectors(
        medium, faults, Lba(cdb), RequestedBlocks(cdb), buffer,
        [&](int32_t lba, SectorKind kind, std::span<uint8_t, kRawSectorSize> sector,
            size_t& filled) -> std::optional<CommandResult> {
            if (!MatchesExpectedType(expectedType, kind))
                return kIllegalMode;
            const auto fields = SelectFields(kind, flags);
            if (!fields)
                return kInvalidField;
            std::array<uint8_t, kC2WithBlockErrorBytes> c2{};
            if (kind == SectorKind::Audio) {
                if (faults.readOffsetSamples != 0)
                    shifted.Read(lba, sector);
                const auto pointers = std::span(c2).first<kC2PointerBytes>();
                if (FlakyRead(faults.flaky, lba, sector, pointers)) {
                    c2[kC2PointerBytes] = std::accumulate(
                        pointers.begin(), pointers.end(), uint8_t{0},
                        [](uint8_t all, uint8_t byte) { return static_cast<uint8_t>(all | byte); });
                }
            }
            for (size_t r = 0; r < fields->rangeCount; ++r) {
                const ByteRange range = fields->ranges[r];
                filled = Append(buffer, filled, sector.subspan(range.offset, range.length));
            }
            filled = Append(buffer, filled, std::span(c2).first(fields->c2Bytes));
            if (subChannel == kSubChannelFormattedQ)
                filled = Append(buffer, filled, QSubChannel(medium.Disc(), lba));
            return std::nullopt;
        });
}

CommandResult ExecuteRead10(const SectorSource& medium, const Faults& faults, Cdb cdb,
                            std::span<uint8_t> buffer) {
    const int64_t lba = static_cast<uint32_t>(Lba(cdb));  // READ(10) addresses are unsigned
    return ReadSectors(medium, faults, lba, RequestedBlocks(cdb), buffer,
                       [&](int32_t, SectorKind kind, std::span<uint8_t, kRawSectorSize> sector,
                           size_t& filled) -> std::optional<CommandResult> {
                           const auto user = BlockUserData(kind);
                           if (!user)
                               return kIllegalMode;
                           filled =
                               Append(buffer, filled, sector.subspan(user->offset, user->length));
                           return std::nullopt;
                       });
}

}  // namespace plattmix::scsi::imagedrive
