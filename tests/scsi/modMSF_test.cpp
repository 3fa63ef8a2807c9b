#include <gtest/gtest.h>

#include "modMSF.h"

using namespace plattmix::modMSF;

// The byte helpers and the texts are proved through the tables of contents and cue sheets read
// in the track list's and the rips' tests.
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
