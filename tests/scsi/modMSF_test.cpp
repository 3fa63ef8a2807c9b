#include <gtest/gtest.h>

#include <array>

#include "modMSF.h"

using namespace plattmix::modMSF;

// The byte helpers are proved through the tables of contents read in the track list's tests.
TEST(ModMSF, MakeMSFFromTocAddresses) {
    EXPECT_EQ(MakeMSF(0xEE, 3, 7, 1), (MSF{3, 7, 1}));  // the first of four is ignored
    const std::array<uint8_t, 4> toc{0, 12, 34, 56};
    EXPECT_EQ(MakeMSF(std::span<const uint8_t>(toc)), (MSF{12, 34, 56}));
    const std::array<uint8_t, 3> three{12, 34, 56};
    EXPECT_EQ(MakeMSF(std::span<const uint8_t>(three)), (MSF{12, 34, 56}));
}

TEST(ModMSF, TextsUseTwoDigitFields) {
    EXPECT_EQ(MSFToString(MSF{3, 7, 0}), "03:07:00");
    EXPECT_EQ(MSFToString(MSF{100, 59, 74}), "100:59:74");
}

TEST(ModMSF, AddressArithmeticHasTheTwoSecondPregap) {
    EXPECT_EQ(MSFToFrames(MSF{0, 2, 0}), 150);
    EXPECT_EQ(MSFToLBA(MSF{0, 2, 0}), 0);
    EXPECT_EQ(MSFToLBA(MSF{1, 0, 0}), 4350);
    EXPECT_EQ(LBAToMSF(0), (MSF{0, 2, 0}));
    EXPECT_EQ(LBAToMSF(4350), (MSF{1, 0, 0}));
    EXPECT_EQ(LBAToMSF(333000 - 150), (MSF{74, 0, 0}));
    for (int32_t lba : {0, 1, 74, 75, 4499, 123456})
        EXPECT_EQ(MSFToLBA(LBAToMSF(lba)), lba);
}
