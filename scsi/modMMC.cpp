#include "modMMC.h"

#include <algorithm>

#include "MmcOpcodes.h"
#include "ScsiStatus.h"
#include "modMSF.h"

namespace plattmix::modMMC {

using modMSF::HiByte;
using modMSF::LoByte;
using modMSF::ShiftRight;

namespace {

template <size_t N>
void PutBigEndian32(std::array<uint8_t, N>& cdb, size_t at, uint32_t value) {
    cdb[at] = static_cast<uint8_t>(ShiftRight(value, 24) & 255);
    cdb[at + 1] = static_cast<uint8_t>(ShiftRight(value, 16) & 255);
    cdb[at + 2] = static_cast<uint8_t>(ShiftRight(value, 8) & 255);
    cdb[at + 3] = static_cast<uint8_t>(value & 255);
}

template <size_t N>
void PutBigEndian16(std::array<uint8_t, N>& cdb, size_t at, uint16_t value) {
    cdb[at] = HiByte(value);
    cdb[at + 1] = LoByte(value);
}

// Every command is sent from the device with the module's five-second time-out.
template <size_t N>
int32_t Send(scsi::ISCSI& transport, std::string& Handle, const std::array<uint8_t, N>& cdb,
             std::span<uint8_t> buffer) {
    uint8_t cdblen = static_cast<uint8_t>(N);
    int32_t direction = 0;
    int16_t timeOut = kCommandTimeOut;
    return transport.ExecCMD(Handle, cdb, cdblen, direction,
                             buffer.empty() ? nullptr : buffer.data(),
                             static_cast<int32_t>(buffer.size()), timeOut);
}

}  // namespace

Cdb6 BuildTestUnitReady() {
    return Cdb6{};
}

Cdb6 BuildInquiry() {
    Cdb6 cdb{};
    cdb[0] = scsi::kOpInquiry;
    cdb[4] = kInquiryLength;
    return cdb;
}

Cdb10 BuildReadTOC(bool msf) {
    return BuildReadTOCFormat(msf, 0, 0, kTocReplyLength);
}

Cdb10 BuildReadTOCFormat(bool msf, uint8_t format, uint8_t track, uint16_t allocation) {
    Cdb10 cdb{};
    cdb[0] = scsi::kOpReadToc;
    cdb[1] = msf ? 2 : 0;
    cdb[2] = format;
    cdb[6] = track;
    PutBigEndian16(cdb, 7, allocation);
    return cdb;
}

Cdb10 BuildRead10(uint32_t lba, uint16_t blocks) {
    Cdb10 cdb{};
    cdb[0] = scsi::kOpRead10;
    PutBigEndian32(cdb, 2, lba);
    PutBigEndian16(cdb, 7, blocks);
    return cdb;
}

Cdb10 BuildReadCD(uint32_t lba, uint32_t blocks, uint8_t flags) {
    Cdb10 cdb{};
    cdb[0] = scsi::kOpReadCd;
    PutBigEndian32(cdb, 2, lba);
    cdb[6] = static_cast<uint8_t>(ShiftRight(blocks, 16) & 255);
    cdb[7] = static_cast<uint8_t>(ShiftRight(blocks, 8) & 255);
    cdb[8] = static_cast<uint8_t>(blocks & 255);
    cdb[9] = flags;
    return cdb;
}

Cdb10 BuildGetConfiguration(uint16_t feature, uint16_t allocation) {
    Cdb10 cdb{};
    cdb[0] = scsi::kOpGetConfiguration;
    cdb[1] = 2;  // the one feature named
    PutBigEndian16(cdb, 2, feature);
    PutBigEndian16(cdb, 7, allocation);
    return cdb;
}

Cdb6 BuildStartStopUnit(bool loadEject, bool start) {
    Cdb6 cdb{};
    cdb[0] = scsi::kOpStartStopUnit;
    cdb[4] = static_cast<uint8_t>((loadEject ? 2 : 0) | (start ? 1 : 0));
    return cdb;
}

Cdb10 BuildGetEventStatus(uint8_t classes, uint16_t allocation) {
    Cdb10 cdb{};
    cdb[0] = scsi::kOpGetEventStatus;
    cdb[1] = 1;  // polled
    cdb[4] = classes;
    PutBigEndian16(cdb, 7, allocation);
    return cdb;
}

Cdb10 BuildReadCapacity() {
    Cdb10 cdb{};
    cdb[0] = scsi::kOpReadCapacity;
    return cdb;
}

Cdb10 BuildReadSubChannel(uint8_t format, uint8_t track, uint16_t allocation) {
    Cdb10 cdb{};
    cdb[0] = scsi::kOpReadSubChannel;
    cdb[2] = 0x40;  // Q data wanted
    cdb[3] = format;
    cdb[6] = track;
    PutBigEndian16(cdb, 7, allocation);
    return cdb;
}

Cdb12 BuildReadCdWithQ(uint32_t lba, uint32_t blocks) {
    constexpr uint8_t kAllBytes = 0xF8;  // sync, headers, user data, EDC/ECC
    constexpr uint8_t kFormattedQ = 0x02;
    const Cdb10 head = BuildReadCD(lba, blocks, kAllBytes);
    Cdb12 cdb{};
    std::copy(head.begin(), head.end(), cdb.begin());
    cdb[10] = kFormattedQ;
    return cdb;
}

int32_t TestUnitReady(scsi::ISCSI& transport, std::string& Handle) {
    return Send(transport, Handle, BuildTestUnitReady(), {});
}

int32_t Inquiry(scsi::ISCSI& transport, std::string& Handle,
                std::array<uint8_t, kInquiryLength>& reply) {
    return Send(transport, Handle, BuildInquiry(), reply);
}

int32_t ReadTOC(scsi::ISCSI& transport, std::string& Handle, bool msf,
                std::array<uint8_t, kTocReplyLength>& reply) {
    return Send(transport, Handle, BuildReadTOC(msf), reply);
}

int32_t Read10(scsi::ISCSI& transport, std::string& Handle, uint32_t lba, uint16_t blocks,
               std::span<uint8_t> buffer) {
    return Send(transport, Handle, BuildRead10(lba, blocks), buffer);
}

int32_t ReadCD(scsi::ISCSI& transport, std::string& Handle, uint32_t lba, uint32_t blocks,
               std::span<uint8_t> buffer, uint8_t flags) {
    return Send(transport, Handle, BuildReadCD(lba, blocks, flags), buffer);
}

int32_t StartStopUnit(scsi::ISCSI& transport, std::string& Handle, bool loadEject, bool start) {
    return Send(transport, Handle, BuildStartStopUnit(loadEject, start), {});
}

int32_t ReadSubChannel(scsi::ISCSI& transport, std::string& Handle, uint8_t format, uint8_t track,
                       std::array<uint8_t, kSubChannelReplyLength>& reply) {
    return Send(transport, Handle, BuildReadSubChannel(format, track, kSubChannelReplyLength),
                reply);
}

int32_t ReadCdWithQ(scsi::ISCSI& transport, std::string& Handle, uint32_t lba, uint32_t blocks,
                    std::span<uint8_t> buffer) {
    return Send(transport, Handle, BuildReadCdWithQ(lba, blocks), buffer);
}

int32_t ReadSessionInfo(scsi::ISCSI& transport, std::string& Handle,
                        std::array<uint8_t, kSessionInfoLength>& reply) {
    return Send(transport, Handle,
                BuildReadTOCFormat(false, scsi::kTocFormatSessionInfo, 0, kSessionInfoLength),
                reply);
}

int32_t ReadFullToc(scsi::ISCSI& transport, std::string& Handle,
                    std::array<uint8_t, kFullTocLength>& reply) {
    return Send(transport, Handle,
                BuildReadTOCFormat(false, scsi::kTocFormatFullToc, 1, kFullTocLength), reply);
}

namespace {
std::string Field(std::span<const uint8_t> reply, size_t from, size_t length) {
    std::string text;
    for (size_t i = from; i < from + length && i < reply.size(); ++i) {
        if (reply[i] != 0)
            text.push_back(static_cast<char>(reply[i]));
    }
    return text;
}
}  // namespace

InquiryIdent ParseInquiry(std::span<const uint8_t> reply) {
    return InquiryIdent{Field(reply, 8, 8), Field(reply, 16, 16), Field(reply, 32, 4)};
}

std::string InquiryIdentText(std::span<const uint8_t> reply) {
    const InquiryIdent ident = ParseInquiry(reply);
    return ident.vendor + ident.product + ident.revision;
}

std::optional<Toc> ParseTOC(std::span<const uint8_t> reply) {
    if (reply.size() < 4)
        return std::nullopt;
    Toc toc;
    toc.dataLength = static_cast<uint16_t>((reply[0] << 8) | reply[1]);
    toc.firstTrack = reply[2];
    toc.lastTrack = reply[3];
    // The data length counts the bytes after itself: two header bytes, then the descriptors.
    const size_t announced = toc.dataLength >= 2 ? (toc.dataLength - 2u) / 8u : 0u;
    const size_t held = (reply.size() - 4) / 8;
    const size_t count = std::min({announced, held, size_t{kTocMaxDescriptors}});
    for (size_t i = 0; i < count; ++i) {
        const auto d = reply.subspan(4 + i * 8, 8);
        toc.descriptors.push_back(TocDescriptor{d[1], d[2], {d[4], d[5], d[6], d[7]}});
    }
    return toc;
}

std::optional<SessionInfo> ParseSessionInfo(std::span<const uint8_t> reply) {
    if (reply.size() < kSessionInfoLength)
        return std::nullopt;
    return SessionInfo{reply[2], reply[3], reply[6],
                       modMSF::BytesToLong(reply[8], reply[9], reply[10], reply[11])};
}

std::optional<FullToc> ParseFullToc(std::span<const uint8_t> reply) {
    constexpr size_t kEntryBytes = 11;
    if (reply.size() < 4)
        return std::nullopt;
    FullToc toc;
    toc.firstSession = reply[2];
    toc.lastSession = reply[3];
    const size_t announced = static_cast<size_t>((reply[0] << 8) | reply[1]);
    const size_t end = std::min(reply.size(), announced + 2);
    for (size_t at = 4; at + kEntryBytes <= end; at += kEntryBytes) {
        toc.entries.push_back(FullTocEntry{reply[at], reply[at + 1], reply[at + 3], reply[at + 8],
                                           reply[at + 9], reply[at + 10]});
    }
    return toc;
}

uint16_t CdTextCrc(std::span<const uint8_t> bytes) {
    uint16_t crc = 0;
    for (const uint8_t byte : bytes) {
        crc = static_cast<uint16_t>(crc ^ (byte << 8));
        for (int bit = 0; bit < 8; ++bit) {
            const bool top = (crc & 0x8000u) != 0;
            crc = static_cast<uint16_t>(crc << 1);
            if (top)
                crc = static_cast<uint16_t>(crc ^ 0x1021u);
        }
    }
    return static_cast<uint16_t>(~crc);
}

namespace {
constexpr uint16_t kFeatureCdRead = 0x001E;
constexpr uint8_t kCdReadC2Flag = 0x02;
constexpr size_t kFeatureHeaderBytes = 8;
}  // namespace

bool ReportsC2Pointers(std::span<const uint8_t> reply) {
    // The header, then descriptors: code (2), version and flags, length, then the data.
    size_t at = kFeatureHeaderBytes;
    while (at + 4 <= reply.size()) {
        const auto code = static_cast<uint16_t>((reply[at] << 8) | reply[at + 1]);
        const size_t length = reply[at + 3];
        if (code == kFeatureCdRead)
            return length >= 1 && at + 4 < reply.size() && (reply[at + 4] & kCdReadC2Flag) != 0;
        at += 4 + length;
    }
    return false;
}

bool DriveReportsC2(scsi::ISCSI& transport, std::string& Handle) {
    std::array<uint8_t, 32> reply{};
    return Send(transport, Handle, BuildGetConfiguration(kFeatureCdRead, reply.size()), reply) ==
               scsi::kStatusGood &&
           ReportsC2Pointers(reply);
}

}  // namespace plattmix::modMMC
