#include "imagedrive/ReadCommands.h"

#include <algorithm>
#include <array>

namespace plattmix::scsi::imagedrive {

namespace {

constexpr uint8_t kOpRead10 = 0x28;
constexpr uint8_t kOpReadCd = 0xBE;

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

}  // namespace

int64_t RequestedBlocks(Cdb cdb) {
    if (cdb[0] == kOpReadCd)
        return (int64_t{cdb[6]} << 16) | (int64_t{cdb[7]} << 8) | cdb[8];
    if (cdb[0] == kOpRead10)
        return (int64_t{cdb[7]} << 8) | cdb[8];
    return 0;
}

CommandResult ExecuteReadCd(const SectorSource& medium, const Faults& faults, Cdb cdb,
                            std::span<uint8_t> buffer) {
    const auto expectedType = static_cast<uint8_t>((cdb[1] >> 2) & 0x7);
    const uint8_t flags = cdb[9];
    if (!IsValidExpectedType(expectedType) || cdb[10] != 0)
        return kInvalidField;
    if (!SelectFields(SectorKind::Audio, flags))
        return kInvalidField;  // reserved C2 code
    const int64_t lba = Lba(cdb);
    const int64_t blocks = RequestedBlocks(cdb);
    if (blocks == 0)
        return CommandResult::Good();
    if (auto failure = Precheck(medium, faults, lba, blocks))
        return *failure;

    std::array<uint8_t, kRawSectorSize> sector{};
    const std::array<uint8_t, 296> noC2Errors{};
    size_t filled = 0;
    for (int64_t i = 0; i < blocks && filled < buffer.size(); ++i) {
        const RawSector raw = medium.Read(static_cast<int32_t>(lba + i), sector);
        if (auto failure = ReadFailure(raw.result))
            return *failure;
        if (!MatchesExpectedType(expectedType, raw.kind))
            return kIllegalMode;
        const auto fields = SelectFields(raw.kind, flags);
        if (!fields)
            return kInvalidField;
        for (size_t r = 0; r < fields->rangeCount; ++r) {
            const ByteRange range = fields->ranges[r];
            filled = Append(buffer, filled,
                            std::span<const uint8_t>(sector).subspan(range.offset, range.length));
        }
        filled = Append(buffer, filled, std::span(noC2Errors).first(fields->c2Bytes));
    }
    return CommandResult::Good(filled);
}

CommandResult ExecuteRead10(const SectorSource& medium, const Faults& faults, Cdb cdb,
                            std::span<uint8_t> buffer) {
    const int64_t lba = static_cast<uint32_t>(Lba(cdb));
    const int64_t blocks = RequestedBlocks(cdb);
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
        const auto user = BlockUserData(raw.kind);
        if (!user)
            return kIllegalMode;
        filled = Append(buffer, filled,
                        std::span<const uint8_t>(sector).subspan(user->offset, user->length));
    }
    return CommandResult::Good(filled);
}

}  // namespace plattmix::scsi::imagedrive
