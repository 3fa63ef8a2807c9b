#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "ScsiStatus.h"
#include "modMMC.h"
#include "scsi/StubTransport.h"

using namespace plattmix;
using namespace plattmix::modMMC;

namespace {

template <size_t N>
std::vector<uint8_t> Bytes(const std::array<uint8_t, N>& a) {
    return {a.begin(), a.end()};
}

}  // namespace

TEST(ModMMC, BuildersGiveTheExactBytes) {
    EXPECT_EQ(Bytes(BuildTestUnitReady()), (std::vector<uint8_t>{0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(Bytes(BuildInquiry()), (std::vector<uint8_t>{0x12, 0, 0, 0, 76, 0}));
    EXPECT_EQ(Bytes(BuildReadTOC(true)),
              (std::vector<uint8_t>{0x43, 0x02, 0, 0, 0, 0, 0, 0x03, 0x24, 0}));
    EXPECT_EQ(Bytes(BuildReadTOC(false)),
              (std::vector<uint8_t>{0x43, 0x00, 0, 0, 0, 0, 0, 0x03, 0x24, 0}));
    EXPECT_EQ(Bytes(BuildRead10(16909060, 16)),
              (std::vector<uint8_t>{0x28, 0, 0x01, 0x02, 0x03, 0x04, 0, 0x00, 0x10, 0}));
    EXPECT_EQ(Bytes(BuildReadCD(0x00ABCDEF, 0x00123456, 0xF8)),
              (std::vector<uint8_t>{0xBE, 0, 0x00, 0xAB, 0xCD, 0xEF, 0x12, 0x34, 0x56, 0xF8}));
    EXPECT_EQ(Bytes(BuildStartStopUnit(true, false)), (std::vector<uint8_t>{0x1B, 0, 0, 0, 2, 0}));
    EXPECT_EQ(Bytes(BuildStartStopUnit(true, true)), (std::vector<uint8_t>{0x1B, 0, 0, 0, 3, 0}));
    EXPECT_EQ(Bytes(BuildGetEventStatus(16, 8)),
              (std::vector<uint8_t>{0x4A, 1, 0, 0, 16, 0, 0, 0, 8, 0}));
    EXPECT_EQ(Bytes(BuildReadTOCFormat(false, 2, 1, 0x1234)),
              (std::vector<uint8_t>{0x43, 0, 2, 0, 0, 0, 1, 0x12, 0x34, 0}));
}

TEST(ModMMC, ReadCdGoesOutAsTenBytesWithAFiveSecondTimeOut) {
    test::StubTransport t;
    std::string handle = "sr0";
    std::vector<uint8_t> buffer(27 * 2352);
    EXPECT_EQ(ReadCD(t, handle, 0, 27, buffer, 0x10), 0);
    EXPECT_EQ(t.cdblen, 10);  // READ CD goes out as ten bytes, deliberately
    EXPECT_EQ(t.cdb.size(), 10u);
    EXPECT_EQ(t.direction, 0);
    EXPECT_EQ(t.timeOut, 5);
    EXPECT_EQ(t.bufferLen, 27 * 2352);
}

TEST(ModMMC, InquiryIdentKeepsPaddingAndDropsNuls) {
    // Vendor "PLEXTOR" and a NUL, product "DVDR   PX-716A  ", revision "1.11".
    const std::string fields("PLEXTOR\0DVDR   PX-716A  1.11", 28);
    std::array<uint8_t, kInquiryLength> reply{};
    std::copy(fields.begin(), fields.end(), reply.begin() + 8);
    EXPECT_EQ(InquiryIdentText(reply), "PLEXTORDVDR   PX-716A  1.11");
    EXPECT_EQ(ParseInquiry(reply).vendor, "PLEXTOR");
}

// Whole tables are read in the disc and rip tests; here the lengths that do not fit.
TEST(ModMMC, ParseTocReadsAnnouncedDescriptorsOnly) {
    // One track and the lead-out announced (data length 2 + 2 * 8), a third descriptor beyond.
    const std::vector<uint8_t> reply = {0x00, 0x12, 0x01, 0x01, 0x00, 0x10, 0x01, 0x00, 0x00, 0x00,
                                        0x02, 0x00, 0x00, 0x10, 0xAA, 0x00, 0x00, 0x05, 0x00, 0x00,
                                        0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    ASSERT_TRUE(ParseTOC(reply));
    EXPECT_EQ(ParseTOC(reply)->descriptors.size(), 2u);
    EXPECT_FALSE(ParseTOC(std::vector<uint8_t>{0x00, 0x1A}));
    // A data length larger than the reply never reads past it.
    const std::vector<uint8_t> cut = {0x03, 0x22, 0x01, 0x63, 0, 0x10, 1, 0, 0, 0, 2, 0};
    EXPECT_EQ(ParseTOC(cut)->descriptors.size(), 1u);
}

TEST(ModMMC, GetConfigurationFindsTheCdReadFeaturesC2Flag) {
    EXPECT_EQ(Bytes(BuildGetConfiguration(0x001E, 32)),
              (std::vector<uint8_t>{0x46, 2, 0x00, 0x1E, 0, 0, 0, 0, 32, 0}));
    const std::vector<uint8_t> header = {0, 0, 0, 24, 0, 0, 0, 8};
    auto reply = [&header](std::vector<uint8_t> descriptors) {
        std::vector<uint8_t> bytes(header.size() + descriptors.size());
        std::copy(header.begin(), header.end(), bytes.begin());
        std::copy(descriptors.begin(), descriptors.end(),
                  bytes.begin() + static_cast<std::ptrdiff_t>(header.size()));
        return bytes;
    };
    // Another feature first, then CD Read with and without its C2 flag.
    EXPECT_TRUE(ReportsC2Pointers(reply({0, 0, 3, 4, 0, 8, 1, 0, 0, 0x1E, 8, 4, 0x02, 0, 0, 0})));
    EXPECT_FALSE(ReportsC2Pointers(reply({0, 0x1E, 8, 4, 0x01, 0, 0, 0})));
    // A descriptor cut off, or a length that runs past the reply, says no.
    EXPECT_FALSE(ReportsC2Pointers(reply({0, 0x1E, 8, 4})));
    EXPECT_FALSE(ReportsC2Pointers(reply({0, 0, 3, 200, 0, 0x1E, 8, 4, 0x02})));
}
