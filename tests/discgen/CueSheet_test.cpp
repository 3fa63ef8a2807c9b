// The sheets are read by the image drive and by people: their exact text matters.
#include "CueSheet.h"

#include <gtest/gtest.h>

#include "DiscLayout.h"
#include "Fixtures.h"

namespace plattmix::discgen {
namespace {

std::string SheetOf(const DiscSpec& spec) {
    const Result<DiscLayout> layout = LayOut(spec);
    EXPECT_TRUE(layout.ok()) << layout.error;
    return layout.ok() ? CueSheetText(spec, *layout.value) : "";
}

TEST(CueSheet, PregapSheetIsExactlyAsExpected) {
    EXPECT_EQ(SheetOf(Pregap()),
              "TITLE \"Luecken\"\n"
              "PERFORMER \"Plattmix Testchor\"\n"
              "FILE \"Pregap.bin\" BINARY\n"
              "  TRACK 01 AUDIO\n"
              "    TITLE \"Spur 01\"\n"
              "    PERFORMER \"Plattmix Testchor\"\n"
              "    INDEX 01 00:00:00\n"
              "  TRACK 02 AUDIO\n"
              "    TITLE \"Spur 02\"\n"
              "    PERFORMER \"Plattmix Testchor\"\n"
              "    INDEX 00 00:04:00\n"
              "    INDEX 01 00:06:00\n"
              "  TRACK 03 AUDIO\n"
              "    TITLE \"Spur 03\"\n"
              "    PERFORMER \"Plattmix Testchor\"\n"
              "    PREGAP 00:02:00\n"
              "    INDEX 01 00:09:00\n");
}

TEST(CueSheet, EnhancedSheetMarksBothSessionsBeforeTheirFiles) {
    EXPECT_EQ(SheetOf(Enhanced()),
              "TITLE \"Erweitert\"\n"
              "PERFORMER \"Plattmix Testchor\"\n"
              "REM SESSION 01\n"
              "FILE \"Enhanced-audio.bin\" BINARY\n"
              "  TRACK 01 AUDIO\n"
              "    TITLE \"Spur 01\"\n"
              "    PERFORMER \"Plattmix Testchor\"\n"
              "    INDEX 01 00:00:00\n"
              "  TRACK 02 AUDIO\n"
              "    TITLE \"Spur 02\"\n"
              "    PERFORMER \"Plattmix Testchor\"\n"
              "    INDEX 01 00:04:00\n"
              "REM SESSION 02\n"
              "FILE \"Enhanced-data.bin\" BINARY\n"
              "  TRACK 03 MODE1/2048\n"
              "    TITLE \"Daten\"\n"
              "    PERFORMER \"Plattmix Testchor\"\n"
              "    INDEX 01 00:00:00\n");
}

TEST(CueSheet, SingleSessionDiscsCarryNoSessionLinesAndEveryFileOnce) {
    const std::string multi = SheetOf(MultiFile());
    EXPECT_EQ(multi.find("REM SESSION"), std::string::npos);
    EXPECT_NE(multi.find("FILE \"MultiFile-01.bin\" BINARY\n  TRACK 01 AUDIO\n"),
              std::string::npos);
    EXPECT_NE(multi.find("FILE \"MultiFile-03.bin\" BINARY\n  TRACK 03 AUDIO\n"),
              std::string::npos);
    const std::string mixed = SheetOf(DataTrackFirst());
    EXPECT_NE(mixed.find("FILE \"DataTrackFirst-data.bin\" BINARY\n  TRACK 01 MODE1/2048\n"),
              std::string::npos);
    EXPECT_NE(mixed.find("FILE \"DataTrackFirst-audio.bin\" BINARY\n  TRACK 02 AUDIO\n"),
              std::string::npos);
}

TEST(CueSheet, TimesCarryOverAtSeventyFiveFramesAndSixtySeconds) {
    EXPECT_EQ(CueTime(0), "00:00:00");
    EXPECT_EQ(CueTime(74), "00:00:74");
    EXPECT_EQ(CueTime(75), "00:01:00");
    EXPECT_EQ(CueTime(4499), "00:59:74");
    EXPECT_EQ(CueTime(4500), "01:00:00");
    EXPECT_EQ(CueTime(449999), "99:59:74");
}

}  // namespace
}  // namespace plattmix::discgen
