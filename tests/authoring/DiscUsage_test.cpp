// The disc's fill and the compilation's bar: states, exact fits, proportions.
#include "DiscUsage.h"

#include <gtest/gtest.h>

#include <string>

#include "ScriptedBurnService.h"

namespace plattmix::authoring {
namespace {

constexpr int64_t kMB = 1048576;
constexpr int64_t kSectorsPerMB = kMB / kDataBlockBytes;
const NumberFormat kGerman{".", ","};

DiskInfo Info(MediaState state, int64_t totalSectors = 0, int64_t freeBlocks = 0) {
    burntest::ScriptedBurnService service;
    service.script.media = {state, totalSectors, freeBlocks};
    return GetDiskInfo(service, "/dev/sr0");
}

struct Checked {
    DiskUsageView usage;
    CompilationView compilation;
};

Checked Check(const DiskInfo& info, int64_t sum, int width = 100) {
    const DiskUsageView usage = ShowDiskUsage(info, width, nullptr);
    return {usage, TotalSizeZusammenstellung(sum, usage.DiskCapacity, usage.DiskUsed, width,
                                             usage.usedWidth, nullptr, kGerman)};
}

TEST(DiskUsage, NoDiscClosedDiscAndNoFreeSpace) {
    const Checked none = Check(Info(MediaState::NoDisc, 100, 100), 5000);
    EXPECT_FALSE(none.usage.barsShown);
    EXPECT_EQ(none.usage.label4, "Keine Disk im Laufwerk");
    EXPECT_EQ(none.compilation.label4, "Keine CD im Laufwerk!");
    EXPECT_EQ(none.compilation.label5, "5 KB");
    // A written disc without room reads as none.
    EXPECT_EQ(Check(Info(MediaState::Appendable, 1000, 0), 1).usage.label4,
              "Keine Disk im Laufwerk");

    const Checked closed = Check(Info(MediaState::Closed, 100, 0), kMB, 250);
    EXPECT_EQ(closed.usage.usedWidth, 250);
    EXPECT_EQ(closed.usage.label4, "100 % der Disk belegt");
    EXPECT_EQ(closed.compilation.label4, "100 % der Disk belegt!");
    EXPECT_EQ(closed.compilation.newWidth, 0);
}

// A disc with room: an exact fit is too large; whole numbers on the label, bars in proportion.
TEST(DiskUsage, DiscWithRoom) {
    const DiskInfo blank = Info(MediaState::Blank, 702 * kSectorsPerMB, 702 * kSectorsPerMB);
    const Checked exact = Check(blank, 702 * kMB);
    EXPECT_EQ(exact.usage.label4, "0 % der Disk belegt 0 / 702 MB");
    EXPECT_EQ(exact.compilation.label4, "Zusammenstellung zu groß für die Disk!");
    EXPECT_EQ(exact.compilation.label5, "702,00 MB");
    EXPECT_EQ(exact.compilation.newWidth, 100);
    const Checked byteLess = Check(blank, 702 * kMB - 1);
    EXPECT_EQ(byteLess.compilation.label4, "");
    EXPECT_EQ(byteLess.compilation.newWidth, 99);
    EXPECT_FALSE(Check(blank, 0).compilation.newShown);
    // More than 4 GiB does not wrap.
    EXPECT_EQ(Info(MediaState::Blank, 12219392, 12219392).total, 25025314816.0);

    // 1000 MB in all, 250 MB and one block free: 749.998 MB used.
    const DiskInfo info =
        Info(MediaState::Appendable, 1000 * kSectorsPerMB, 250 * kSectorsPerMB + 1);
    const Checked part = Check(info, 100 * kMB, 400);
    EXPECT_EQ(part.usage.label4, "74 % der Disk belegt 749 / 1000 MB");
    EXPECT_EQ(part.usage.usedWidth, 299);
    EXPECT_EQ(part.compilation.newWidth, 40);
    EXPECT_EQ(Check(info, 250 * kMB, 400).compilation.label4, "");  // the free space less a block
    const Checked tooLarge = Check(info, 250 * kMB + kDataBlockBytes, 400);
    EXPECT_EQ(tooLarge.compilation.label4, "Zusammenstellung zu groß für die Disk!");
    EXPECT_EQ(tooLarge.compilation.newWidth, 400 - 299);
}

}  // namespace
}  // namespace plattmix::authoring
