// The sub-channel replies as drives send them, byte for byte: what is refused, and where the
// pregap's index 0 is counted. Valid catalogs, ISRCs and pregaps reach the cue sheet in the
// secure rip's tests.
#include <gtest/gtest.h>

#include <algorithm>
#include <span>
#include <string>
#include <vector>

#include "SubChannel.h"
#include "modMMC.h"

using namespace plattmix::modMMC;

namespace {

using Bytes = std::vector<uint8_t>;

// READ SUB-CHANNEL's 24 bytes: header, format, then the valid flag and the text.
Bytes Reply(uint8_t format, uint8_t valid, const std::string& text) {
    Bytes reply(24, 0);
    const Bytes head{0, 0x15, 0, 20, format, 0, 0, 0, valid};
    std::copy(head.begin(), head.end(), reply.begin());
    std::copy_n(text.begin(), std::min<size_t>(text.size(), 15), reply.begin() + 9);
    return reply;
}

// One READ CD block with its Q: control/ADR, track and index in BCD, the rest left zero.
void AddSector(Bytes& sectors, uint8_t adr, uint8_t track, uint8_t index) {
    sectors.resize(sectors.size() + 2352, 0x55);
    const Bytes q{static_cast<uint8_t>(adr), track, index, 0, 0, 1, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0};
    const size_t at = sectors.size();
    sectors.resize(at + q.size());
    std::copy(q.begin(), q.end(), sectors.begin() + static_cast<std::ptrdiff_t>(at));
}

}  // namespace

TEST(SubChannel, CommandBlocks) {
    const Cdb10 isrc = BuildReadSubChannel(3, 12, 24);
    EXPECT_EQ(Bytes(isrc.begin(), isrc.end()), (Bytes{0x42, 0, 0x40, 0x03, 0, 0, 12, 0, 24, 0}));
    const Cdb12 readQ = BuildReadCdWithQ(0x1234, 300);
    EXPECT_EQ(Bytes(readQ.begin(), readQ.end()),
              (Bytes{0xBE, 0, 0, 0, 0x12, 0x34, 0, 0x01, 0x2C, 0xF8, 0x02, 0}));
}

// Valid ones reach the secure rip's cue sheet; these are refused.
TEST(SubChannel, CatalogAndIsrcOnlyWhenValid) {
    EXPECT_EQ(ParseCatalog(Reply(2, 0x00, "4006381333931")), std::nullopt);  // MCVal clear
    EXPECT_EQ(ParseCatalog(Reply(2, 0x80, "0000000000000")), std::nullopt);
    EXPECT_EQ(ParseCatalog(Reply(2, 0x80, "40063813339\x01\x02")), std::nullopt);
    EXPECT_EQ(ParseCatalog(Reply(3, 0x80, "4006381333931")), std::nullopt);  // another format
    const Bytes catalog = Reply(2, 0x80, "4006381333931");
    EXPECT_EQ(ParseCatalog(std::span(catalog).first(20)), std::nullopt);

    EXPECT_EQ(ParseIsrc(Reply(3, 0x00, "DEA123400002")), std::nullopt);  // TCVal clear
    EXPECT_EQ(ParseIsrc(Reply(3, 0x80, "dea12340000 ")), std::nullopt);
}

TEST(SubChannel, PregapCountsTheTracksIndexZeroBeforeItsStart) {
    Bytes sectors;
    AddSector(sectors, 0x01, 0x09, 0x01);  // the previous track
    AddSector(sectors, 0x02, 0x00, 0x00);  // a catalog Q on the edge: not counted
    AddSector(sectors, 0x01, 0x10, 0x00);
    AddSector(sectors, 0x03, 0x00, 0x00);  // an ISRC Q inside: counted
    AddSector(sectors, 0x01, 0x10, 0x00);
    EXPECT_EQ(PregapSectorsBefore(sectors, 10), 3);
    EXPECT_EQ(PregapSectorsBefore(sectors, 9), 0);

    Bytes noGap;
    AddSector(noGap, 0x01, 0x09, 0x01);
    AddSector(noGap, 0x01, 0x09, 0x02);  // the previous track's second index
    EXPECT_EQ(PregapSectorsBefore(noGap, 10), 0);
    EXPECT_EQ(PregapSectorsBefore({}, 10), 0);
}
