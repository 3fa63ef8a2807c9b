// The MMC command blocks the program sends, as pure builders, the functions that send them
// through a transport, and the parsers of their replies.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "ISCSI.h"

namespace plattmix::modMMC {

inline constexpr int16_t kCommandTimeOut = 5;  // seconds, for every command below
inline constexpr int kInquiryLength = 76;
inline constexpr int kTocReplyLength = 804;
inline constexpr int kTocMaxDescriptors = 100;
inline constexpr uint8_t kLeadOutTrack = 0xAA;
// From a session's lead-out to the first track of the next: the lead-out (6750), the next
// lead-in (4500) and that track's pre-gap (150).
inline constexpr int32_t kSessionGapSectors = 6750 + 4500 + 150;
inline constexpr int kSessionInfoLength = 12;
// Room for the full TOC of any disc: 99 tracks and every session's A0, A1, A2 and more.
inline constexpr int kFullTocLength = 4096;
// The reply of READ SUB-CHANNEL for the catalog number or an ISRC.
inline constexpr int kSubChannelReplyLength = 24;
// READ CD with the formatted Q sub-channel: each sector's 2352 raw bytes, then its 16 Q bytes.
inline constexpr int kQBytes = 16;
inline constexpr int kSectorWithQBytes = 2352 + kQBytes;

using Cdb6 = std::array<uint8_t, 6>;
using Cdb10 = std::array<uint8_t, 10>;
using Cdb12 = std::array<uint8_t, 12>;

// Builders: the exact bytes of each command block.
Cdb6 BuildTestUnitReady();
Cdb6 BuildInquiry();
Cdb10 BuildReadTOC(bool msf);
// READ TOC/PMA/ATIP with another format (1 session info, 2 full TOC) and allocation length.
Cdb10 BuildReadTOCFormat(bool msf, uint8_t format, uint8_t track, uint16_t allocation);
Cdb10 BuildRead10(uint32_t lba, uint16_t blocks);
// READ CD is a 12-byte command; the program sends its first ten bytes only.
Cdb10 BuildReadCD(uint32_t lba, uint32_t blocks, uint8_t flags);
Cdb6 BuildStartStopUnit(bool loadEject, bool start);
Cdb10 BuildGetEventStatus(uint8_t classes, uint16_t allocation);
// GET CONFIGURATION for the one feature (RT 2).
Cdb10 BuildGetConfiguration(uint16_t feature, uint16_t allocation);
Cdb10 BuildReadCapacity();
// READ SUB-CHANNEL with Q data: format kSubChannelCatalog or kSubChannelIsrc (of track).
Cdb10 BuildReadSubChannel(uint8_t format, uint8_t track, uint16_t allocation);
// READ CD of any sector type, all 2352 bytes of each and its formatted Q sub-channel.
Cdb12 BuildReadCdWithQ(uint32_t lba, uint32_t blocks);

// Senders: each returns the transport's status unchanged.
int32_t TestUnitReady(scsi::ISCSI& transport, std::string& Handle);
int32_t Inquiry(scsi::ISCSI& transport, std::string& Handle,
                std::array<uint8_t, kInquiryLength>& reply);
int32_t ReadTOC(scsi::ISCSI& transport, std::string& Handle, bool msf,
                std::array<uint8_t, kTocReplyLength>& reply);
int32_t Read10(scsi::ISCSI& transport, std::string& Handle, uint32_t lba, uint16_t blocks,
               std::span<uint8_t> buffer);
int32_t ReadCD(scsi::ISCSI& transport, std::string& Handle, uint32_t lba, uint32_t blocks,
               std::span<uint8_t> buffer, uint8_t flags);
int32_t StartStopUnit(scsi::ISCSI& transport, std::string& Handle, bool loadEject, bool start);
int32_t ReadSubChannel(scsi::ISCSI& transport, std::string& Handle, uint8_t format, uint8_t track,
                       std::array<uint8_t, kSubChannelReplyLength>& reply);
// buffer: kSectorWithQBytes per block.
int32_t ReadCdWithQ(scsi::ISCSI& transport, std::string& Handle, uint32_t lba, uint32_t blocks,
                    std::span<uint8_t> buffer);
// READ TOC format 1 in LBA form.
int32_t ReadSessionInfo(scsi::ISCSI& transport, std::string& Handle,
                        std::array<uint8_t, kSessionInfoLength>& reply);
// READ TOC format 2 (the full TOC) from the first session on; its times are always MSF.
int32_t ReadFullToc(scsi::ISCSI& transport, std::string& Handle,
                    std::array<uint8_t, kFullTocLength>& reply);

// Replies.
struct InquiryIdent {
    std::string vendor;    // bytes 8..15
    std::string product;   // bytes 16..31
    std::string revision;  // bytes 32..35
};
InquiryIdent ParseInquiry(std::span<const uint8_t> reply);
// The 28 identification characters as the drive list shows them: padding kept, NULs removed.
std::string InquiryIdentText(std::span<const uint8_t> reply);

struct TocDescriptor {
    uint8_t adrControl = 0;  // ADR high nibble, control low nibble
    uint8_t track = 0;
    std::array<uint8_t, 4> address{};  // reserved/M/S/F or big-endian LBA
};
struct Toc {
    uint16_t dataLength = 0;
    uint8_t firstTrack = 0;
    uint8_t lastTrack = 0;
    std::vector<TocDescriptor> descriptors;  // tracks in order, then the lead-out
};
// Reads the header and as many descriptors as the data length announces and the reply holds
// (at most 100). Nothing when the reply is shorter than the header.
std::optional<Toc> ParseTOC(std::span<const uint8_t> reply);

// The READ TOC session information (format 1, LBA form): the first and last session numbers,
// and the first track of the last session with its start. Nothing for a short reply.
struct SessionInfo {
    uint8_t firstSession = 0;
    uint8_t lastSession = 0;
    uint8_t lastSessionFirstTrack = 0;
    uint32_t lastSessionStartLba = 0;
};
std::optional<SessionInfo> ParseSessionInfo(std::span<const uint8_t> reply);

// The full TOC (format 2): one 11-byte entry per Q sub-channel point of the lead-ins. Points
// 1..99 are track starts, A0/A1 the session's first and last track (in pMinute), A2 the
// session's lead-out (pMinute, pSecond, pFrame).
inline constexpr uint8_t kPointFirstTrack = 0xA0;
inline constexpr uint8_t kPointLastTrack = 0xA1;
inline constexpr uint8_t kPointLeadOut = 0xA2;
struct FullTocEntry {
    uint8_t session = 0;
    uint8_t adrControl = 0;
    uint8_t point = 0;
    uint8_t pMinute = 0, pSecond = 0, pFrame = 0;
};
struct FullToc {
    uint8_t firstSession = 0;
    uint8_t lastSession = 0;
    std::vector<FullTocEntry> entries;
};
// Reads the entries the data length announces and the reply holds. Nothing when the reply is
// shorter than the header.
std::optional<FullToc> ParseFullToc(std::span<const uint8_t> reply);

// The CRC of a CD-Text pack over its first 16 bytes: CRC-16/CCITT (polynomial 0x1021, start
// 0), inverted; stored big-endian in bytes 16 and 17.
uint16_t CdTextCrc(std::span<const uint8_t> bytes);

// Whether a GET CONFIGURATION reply holds the CD Read feature with its C2 flag set.
bool ReportsC2Pointers(std::span<const uint8_t> reply);
// Asks the drive; false when it does not answer or has no C2 flag.
bool DriveReportsC2(scsi::ISCSI& transport, std::string& Handle);

}  // namespace plattmix::modMMC
