#include "DriveList.h"

#include <array>

#include "ProfileFile.h"
#include "modMMC.h"

namespace plattmix::audiocd {

std::string DriveEntryName(const std::string& driveChar) {
    return driveChar.find('/') == std::string::npos ? "/dev/" + driveChar : driveChar;
}

std::string DriveNameOf(scsi::ISCSI& transport, const std::string& handle) {
    return DriveEntryName(transport.DriveChar(handle));
}

std::string DriveEntryText(const std::string& driveChar, std::span<const uint8_t> inquiry) {
    return DriveEntryName(driveChar) + ":  " + modMMC::InquiryIdentText(inquiry);
}

std::string DriveIdentification(scsi::ISCSI& transport, std::string handle) {
    std::array<uint8_t, modMMC::kInquiryLength> reply{};
    if (modMMC::Inquiry(transport, handle, reply) != 0)
        return {};
    const std::string text = modMMC::InquiryIdentText(reply);
    return std::string(shell::profile::TrimBlanks(text));
}

void AddDriveEntry(scsi::ISCSI& transport, int16_t index, std::vector<DriveEntry>& entries,
                   const WarnFn& warn) {
    int16_t i = index;
    std::string handle = transport.DriveHandle(i);
    std::array<uint8_t, modMMC::kInquiryLength> reply{};
    if (modMMC::Inquiry(transport, handle, reply) != 0) {
        if (warn)
            warn("INQUIRY für Laufwerk " + std::to_string(index) + " gescheitert.");
        return;
    }
    entries.push_back(DriveEntry{DriveEntryText(transport.DriveChar(handle), reply), index});
}

std::vector<DriveEntry> FillDriveList(scsi::ISCSI& transport, const WarnFn& warn) {
    std::vector<DriveEntry> entries;
    for (int16_t index = 1; index <= transport.DriveCount(); ++index) {
        AddDriveEntry(transport, index, entries, warn);
    }
    return entries;
}

}  // namespace plattmix::audiocd
