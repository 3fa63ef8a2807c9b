// The progress handler's texts and bar, and the time text.
#include "BurnProgress.h"

#include <gtest/gtest.h>

#include "DiscProfile.h"

namespace plattmix::authoring {
namespace {

WriteProgress At(int action, int elapsed, int total) {
    WriteProgress progress;
    progress.action = action;
    progress.elapsedSeconds = elapsed;
    progress.totalSeconds = total;
    return progress;
}

TEST(BurnProgress, FormatMinuten) {
    EXPECT_EQ(FormatMinuten(0), "00:00");
    EXPECT_EQ(FormatMinuten(59), "00:59");
    EXPECT_EQ(FormatMinuten(60), "01:00");
    EXPECT_EQ(FormatMinuten(3599), "59:59");
    EXPECT_EQ(FormatMinuten(6000), "100:00");
    EXPECT_EQ(FormatMinuten(-5), "00:00");
}

TEST(BurnProgress, EachActionsText) {
    const char* expected[] = {"Medien validieren 01:02 / 10:00",
                              "Medien formatieren 01:02 / 10:00",
                              "Hardware initialisieren 01:02 / 10:00",
                              "Kalibriere die Leistung (OPC)01:02 / 10:00",
                              "Schreibe... 01:02 / 10:00",
                              "Beende das Schreiben 01:02 / 10:00",
                              "Brennvorgang abgeschlossen.",
                              "Überprüfen der Daten..."};
    for (int action = 0; action < 8; ++action) {
        const ProgressView view = cDFileSystemImageEvents_Update(At(action, 62, 600));
        EXPECT_EQ(view.text, expected[action]) << action;
        EXPECT_FALSE(view.bar.has_value()) << action;  // no sectors known
    }
    EXPECT_EQ(cDFileSystemImageEvents_Update(At(8, 1, 2)).text, "Unbekannte Aktion: 8");
    EXPECT_EQ(cDFileSystemImageEvents_Update(At(-1, 1, 2)).text, "Unbekannte Aktion: -1");
}

TEST(BurnProgress, BarWhileWritingData) {
    WriteProgress progress = At(kActionWritingData, 1, 2);
    progress.startLba = 500;
    progress.lastWrittenLba = 833;
    progress.sectorCount = 1000;
    EXPECT_EQ(cDFileSystemImageEvents_Update(progress).bar, 33);  // cut, not rounded
    progress.lastWrittenLba = 1500;
    EXPECT_EQ(cDFileSystemImageEvents_Update(progress).bar, 100);
    progress.action = kActionFinalization;
    EXPECT_FALSE(cDFileSystemImageEvents_Update(progress).bar.has_value());
}

TEST(DiscProfile, NamesByProfileNumber) {
    EXPECT_STREQ(ProfileName(0x00), "TYPE_INVALID");
    EXPECT_STREQ(ProfileName(0x09), "CD_RECORDABLE");
    EXPECT_STREQ(ProfileName(0x0a), "CD_REWRITABLE");
    EXPECT_STREQ(ProfileName(0x13), "DVD_DASH_REWRITABLE");
    EXPECT_STREQ(ProfileName(0x1a), "DVD_PLUS_RW");
    EXPECT_STREQ(ProfileName(0x2b), "DVD_PLUS_R_DUAL");
    EXPECT_STREQ(ProfileName(0x43), "BD_REWRITABLE");
    EXPECT_STREQ(ProfileName(0x52), "HD_DVD_RAM");
    EXPECT_STREQ(ProfileName(0xffff), "NON_STANDARD");  // a stdio: file
    EXPECT_STREQ(ProfileName(0x08), "NON_STANDARD");    // CD-ROM is not in the list
}

}  // namespace
}  // namespace plattmix::authoring
