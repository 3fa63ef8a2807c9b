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

TEST(CueSheet, EachSessionIsMarkedBeforeItsFile) {
    const std::string sheet = SheetOf(Enhanced());
    EXPECT_NE(sheet.find("\"\nREM SESSION 01\nFILE \"Enhanced-audio.bin\" BINARY\n"),
              std::string::npos);
    EXPECT_NE(sheet.find(
                  "00\nREM SESSION 02\nFILE \"Enhanced-data.bin\" BINARY\n  TRACK 03 MODE1/2048\n"),
              std::string::npos);
    EXPECT_EQ(SheetOf(MultiFile()).find("REM"), std::string::npos);
}

TEST(CueSheet, TimesCarryOverAtSeventyFiveFramesAndSixtySeconds) {
    const std::pair<int32_t, std::string> times[] = {{0, "00:00:00"},    {74, "00:00:74"},
                                                     {75, "00:01:00"},   {4499, "00:59:74"},
                                                     {4500, "01:00:00"}, {449999, "99:59:74"}};
    for (const auto& [sectors, text] : times) {
        EXPECT_EQ(CueTime(sectors), text);
    }
}

}  // namespace
}  // namespace plattmix::discgen
