#include "imagedrive/ImageCommands.h"

#include <algorithm>

#include "imagedrive/CdTextReply.h"
#include "imagedrive/MmcReplies.h"
#include "imagedrive/SubChannelReply.h"

namespace plattmix::scsi::imagedrive {

namespace {

// How a command meets the drive's state: some answer regardless of a pending unit attention,
// some need a ready medium.
enum class Access { Unknown, IgnoresAttention, NoMedium, NeedsMedium };

Access AccessOf(uint8_t opcode) {
    switch (opcode) {
        case kOpInquiry:
        case kOpGetConfiguration:
        case kOpGetEventStatus:
            return Access::IgnoresAttention;
        case kOpStartStopUnit:
            return Access::NoMedium;
        case kOpTestUnitReady:
        case kOpReadCapacity:
        case kOpRead10:
        case kOpReadToc:
        case kOpReadSubChannel:
        case kOpReadDiscInformation:
        case kOpReadCd:
            return Access::NeedsMedium;
        default:
            return Access::Unknown;
    }
}

const CommandResult kInvalidField =
    CommandResult::Check(kSenseIllegalRequest, kAscInvalidFieldInCdb, 0);

size_t Be16(Cdb cdb, size_t at) {
    return (size_t{cdb[at]} << 8) | cdb[at + 1];
}

// Hands a reply over, no longer than the allocation length and the buffer.
CommandResult Deliver(const Reply& reply, size_t allocation, std::span<uint8_t> buffer) {
    const size_t n = std::min({reply.size(), allocation, buffer.size()});
    std::copy_n(reply.begin(), n, buffer.begin());
    return CommandResult::Good(n);
}

CommandResult ReadToc(const DiscImage& disc, Cdb cdb, std::span<uint8_t> buffer) {
    const bool msf = (cdb[1] & 0x02) != 0;
    uint8_t format = cdb[2] & 0x0F;
    if (format == 0)
        format = static_cast<uint8_t>(cdb[9] >> 6);  // the older place for it
    std::optional<Reply> reply;
    if (format == 0)
        reply = TocReply(disc, msf, cdb[6]);
    if (format == kTocFormatSessionInfo)
        reply = SessionInfoReply(disc, msf);
    if (format == kTocFormatFullToc)
        reply = FullTocReply(disc, cdb[6]);
    if (format == kTocFormatCdText)
        reply = CdTextReply(disc);  // nothing without texts: as a drive without CD-Text
    if (!reply)
        return kInvalidField;
    return Deliver(*reply, Be16(cdb, 7), buffer);
}

// Q data of the catalog number or a track's ISRC; the current position is not offered.
CommandResult ReadSubChannel(const DiscImage& disc, Cdb cdb, std::span<uint8_t> buffer) {
    if ((cdb[2] & 0x40) == 0)
        return Deliver(Reply(4, 0), Be16(cdb, 7), buffer);  // the header alone
    const auto reply = SubChannelReply(disc, cdb[3], cdb[6]);
    if (!reply)
        return kInvalidField;
    return Deliver(*reply, Be16(cdb, 7), buffer);
}

CommandResult StartStopUnit(DriveSlot& slot, Cdb cdb) {
    const bool loadEject = (cdb[4] & 0x02) != 0;
    const bool start = (cdb[4] & 0x01) != 0;
    if (loadEject && start)
        slot.CloseTray();
    if (loadEject && !start)
        slot.OpenTray();
    return CommandResult::Good();  // spinning up or down alone changes nothing here
}

CommandResult GetConfiguration(const DriveSlot& slot, Cdb cdb, std::span<uint8_t> buffer) {
    const auto requestType = static_cast<uint8_t>(cdb[1] & 0x03);
    if (requestType == 3)
        return kInvalidField;
    const uint16_t profile = slot.Medium() != nullptr ? kProfileCdRom : kProfileNone;
    const Reply reply = ConfigurationReply(
        profile, requestType, static_cast<uint16_t>(Be16(cdb, 2)), slot.Injected().c2Pointers);
    return Deliver(reply, Be16(cdb, 7), buffer);
}

CommandResult GetEventStatus(DriveSlot& slot, Cdb cdb, std::span<uint8_t> buffer) {
    if ((cdb[1] & 0x01) == 0)
        return kInvalidField;  // only polling is supported
    const bool mediaClass = (cdb[4] & 0x10) != 0;
    const uint8_t event = mediaClass ? slot.TakeMediaEvent() : kMediaEventNone;
    // A disc on an open tray is out of the drive: not present.
    const Reply reply = EventStatusReply(cdb[4], event, slot.TrayOpen(), slot.Medium() != nullptr);
    return Deliver(reply, Be16(cdb, 7), buffer);
}

CommandResult MediumCommand(const SectorSource& medium, Faults& faults, Cdb cdb,
                            std::span<uint8_t> buffer) {
    switch (cdb[0]) {
        case kOpReadCapacity:
            return Deliver(CapacityReply(medium.Disc()), 8, buffer);
        case kOpRead10:
            return ExecuteRead10(medium, faults, cdb, buffer);
        case kOpReadToc:
            return ReadToc(medium.Disc(), cdb, buffer);
        case kOpReadSubChannel:
            return ReadSubChannel(medium.Disc(), cdb, buffer);
        case kOpReadDiscInformation:
            if ((cdb[1] & 0x07) != 0)
                return kInvalidField;  // only standard disc information
            return Deliver(DiscInformationReply(medium.Disc()), Be16(cdb, 7), buffer);
        case kOpReadCd:
            return ExecuteReadCd(medium, faults, cdb, buffer);
        default:
            return CommandResult::Good();  // TEST UNIT READY
    }
}

}  // namespace

CommandResult ExecuteCommand(DriveSlot& slot, Cdb cdb, std::span<uint8_t> buffer) {
    const Access access = AccessOf(cdb[0]);
    if (access != Access::IgnoresAttention) {
        if (const auto attention = slot.TakeUnitAttention())
            return CommandResult::Check(*attention);
    }
    switch (access) {
        case Access::Unknown:
            return CommandResult::Check(kSenseIllegalRequest, kAscInvalidOpcode, 0);
        case Access::NoMedium:
            return StartStopUnit(slot, cdb);
        case Access::NeedsMedium:
            if (const auto notReady = slot.MediumCheck())
                return CommandResult::Check(*notReady);
            return MediumCommand(*slot.Medium(), slot.Injected(), cdb, buffer);
        case Access::IgnoresAttention:
            break;
    }
    if (cdb[0] == kOpInquiry) {
        if ((cdb[1] & 0x01) != 0)
            return kInvalidField;  // no vital product data pages
        return Deliver(InquiryReply(), Be16(cdb, 3), buffer);
    }
    if (cdb[0] == kOpGetConfiguration)
        return GetConfiguration(slot, cdb, buffer);
    return GetEventStatus(slot, cdb, buffer);
}

}  // namespace plattmix::scsi::imagedrive
