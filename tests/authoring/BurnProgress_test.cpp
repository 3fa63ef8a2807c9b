// The progress handler's time text and bar.
#include "BurnProgress.h"

#include <gtest/gtest.h>

namespace plattmix::authoring {
namespace {

TEST(BurnProgress, TimesTextsAndBar) {
    EXPECT_EQ(FormatMinuten(59), "00:59");
    EXPECT_EQ(FormatMinuten(6000), "100:00");
    EXPECT_EQ(FormatMinuten(-5), "00:00");

    WriteProgress progress;
    progress.action = kActionCalibratingPower;
    progress.elapsedSeconds = 62;
    progress.totalSeconds = 600;
    EXPECT_EQ(cDFileSystemImageEvents_Update(progress).text,
              "Kalibriere die Leistung (OPC)01:02 / 10:00");
    progress.action = 8;
    EXPECT_EQ(cDFileSystemImageEvents_Update(progress).text, "Unbekannte Aktion: 8");

    // The bar only while data is written and the session's size is known; cut, not rounded.
    progress.action = kActionWritingData;
    EXPECT_FALSE(cDFileSystemImageEvents_Update(progress).bar.has_value());
    progress.startLba = 500;
    progress.lastWrittenLba = 833;
    progress.sectorCount = 1000;
    EXPECT_EQ(cDFileSystemImageEvents_Update(progress).bar, 33);
    progress.action = kActionFinalization;
    EXPECT_FALSE(cDFileSystemImageEvents_Update(progress).bar.has_value());
}

}  // namespace
}  // namespace plattmix::authoring
