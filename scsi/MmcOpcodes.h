// Operation codes of the MMC commands the program sends and the disc-image drive answers.
#pragma once

#include <cstdint>

namespace plattmix::scsi {

inline constexpr uint8_t kOpTestUnitReady = 0x00;
inline constexpr uint8_t kOpInquiry = 0x12;
inline constexpr uint8_t kOpStartStopUnit = 0x1B;
inline constexpr uint8_t kOpReadCapacity = 0x25;
inline constexpr uint8_t kOpRead10 = 0x28;
inline constexpr uint8_t kOpReadSubChannel = 0x42;
inline constexpr uint8_t kOpReadToc = 0x43;
inline constexpr uint8_t kOpGetConfiguration = 0x46;
inline constexpr uint8_t kOpGetEventStatus = 0x4A;
inline constexpr uint8_t kOpReadDiscInformation = 0x51;
inline constexpr uint8_t kOpReadCd = 0xBE;
// The other READ commands, whose length is a transfer length as READ(10)'s and READ CD's is.
inline constexpr uint8_t kOpRead6 = 0x08;
inline constexpr uint8_t kOpRead12 = 0xA8;
inline constexpr uint8_t kOpRead16 = 0x88;
inline constexpr uint8_t kOpReadCdMsf = 0xB9;

// READ TOC/PMA/ATIP formats beyond the table of contents (format 0).
inline constexpr uint8_t kTocFormatSessionInfo = 0x01;
inline constexpr uint8_t kTocFormatFullToc = 0x02;
inline constexpr uint8_t kTocFormatCdText = 0x05;

// READ SUB-CHANNEL formats: the media catalog number and a track's ISRC.
inline constexpr uint8_t kSubChannelCatalog = 0x02;
inline constexpr uint8_t kSubChannelIsrc = 0x03;

// The peripheral device type (INQUIRY byte 0, low five bits) of a CD/DVD drive.
inline constexpr uint8_t kDeviceTypeCdDvd = 0x05;

}  // namespace plattmix::scsi
