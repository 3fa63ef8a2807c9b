#include "DiscUsage.h"

#include <gtest/gtest.h>

#include <string>

namespace plattmix::authoring {
namespace {

constexpr int64_t kMB = 1048576;
constexpr int64_t kSectorsPerMB = kMB / kDataBlockBytes;
const NumberFormat kGerman{".", ","};

// A drive in whatever state the test needs; it remembers the address it was asked about.
class ScriptedService final : public IBurnService {
  public:
    explicit ScriptedService(MediaInfo media) : media_(media) {}
    MediaInfo QueryMedia(const std::string& drive) override {
        asked = drive;
        return media_;
    }
    std::string asked;

  private:
    MediaInfo media_;
};

DiskInfo Info(MediaState state, int64_t totalSectors = 0, int64_t freeBlocks = 0) {
    ScriptedService service({state, totalSectors, freeBlocks});
    return GetDiskInfo(service, "/dev/sr0");
}

std::string Bracketed(const std::string& german) {
    return "<" + german + ">";
}

TEST(GetDiskInfo, BytesForEachState) {
    ScriptedService service({MediaState::Blank, 100, 100});
    const DiskInfo blank = GetDiskInfo(service, "stdio:/tmp/x.iso");
    EXPECT_EQ(service.asked, "stdio:/tmp/x.iso");
    EXPECT_EQ(blank.total, 204800);
    EXPECT_EQ(blank.free, 204800);

    const DiskInfo appendable = Info(MediaState::Appendable, 100, 30);
    EXPECT_EQ(appendable.total, 204800);
    EXPECT_EQ(appendable.free, 61440);

    // More than 4 GiB does not wrap.
    EXPECT_EQ(Info(MediaState::Blank, 12219392, 12219392).total, 25025314816.0);

    for (const MediaState empty :
         {MediaState::NoService, MediaState::NoRecorder, MediaState::NoDisc}) {
        const DiskInfo info = Info(empty, 100, 100);
        EXPECT_EQ(info.total, 0);
        EXPECT_EQ(info.free, 0);
    }
    const DiskInfo closed = Info(MediaState::Closed, 100, 0);
    EXPECT_EQ(closed.total, -1);
    EXPECT_EQ(closed.free, -1);
}

TEST(DiskUsage, NoDiscAndNoFreeSpaceReadAsNoDiscAndNoCompilationFits) {
    for (const DiskInfo info : {Info(MediaState::NoDisc), Info(MediaState::NoRecorder),
                                Info(MediaState::Appendable, 1000, 0)}) {
        const DiskUsageView usage = ShowDiskUsage(info, 100, {});
        EXPECT_EQ(usage.DiskCapacity, 0);
        EXPECT_EQ(usage.DiskUsed, 0);
        EXPECT_FALSE(usage.barsShown);
        EXPECT_EQ(usage.label4, "Keine Disk im Laufwerk");
        EXPECT_EQ(usage.label5, "");

        const CompilationView compilation = TotalSizeZusammenstellung(
            5000, usage.DiskCapacity, usage.DiskUsed, 100, usage.usedWidth, {}, kGerman);
        EXPECT_EQ(compilation.label4, "Keine CD im Laufwerk!");
        EXPECT_EQ(compilation.label5, "5 KB");
        EXPECT_TRUE(compilation.newShown);
        EXPECT_EQ(compilation.newWidth, 0);
    }
}

TEST(DiskUsage, BlankDiscIsEmptyAndAnExactFitIsTooLarge) {
    const DiskUsageView usage =
        ShowDiskUsage(Info(MediaState::Blank, 702 * kSectorsPerMB, 702 * kSectorsPerMB), 100, {});
    EXPECT_EQ(usage.label4, "0 % der Disk belegt 0 / 702 MB");
    EXPECT_EQ(usage.label5, "0 MB");
    EXPECT_EQ(usage.DiskCapacity, 702);
    EXPECT_EQ(usage.DiskUsed, 0);
    EXPECT_TRUE(usage.barsShown);
    EXPECT_EQ(usage.usedWidth, 0);

    const auto check = [&](int64_t sum) {
        return TotalSizeZusammenstellung(sum, usage.DiskCapacity, usage.DiskUsed, 100,
                                         usage.usedWidth, {}, kGerman);
    };
    const CompilationView exact = check(702 * kMB);
    EXPECT_EQ(exact.label4, "Zusammenstellung zu groß für die Disk!");
    EXPECT_EQ(exact.newWidth, 100);
    EXPECT_EQ(exact.label5, "702,00 MB");
    EXPECT_EQ(exact.sum, 702 * kMB);

    const CompilationView byteLess = check(702 * kMB - 1);
    EXPECT_EQ(byteLess.label4, "");
    EXPECT_TRUE(byteLess.newShown);
    EXPECT_EQ(byteLess.newWidth, 99);

    const CompilationView nothing = check(0);
    EXPECT_FALSE(nothing.newShown);
    EXPECT_EQ(nothing.newWidth, 0);
    EXPECT_EQ(nothing.label5, "0 Byte");
}

TEST(DiskUsage, WrittenDiscShowsWholeNumbersAndProportionalBars) {
    // 1000 MB in all, 250 MB and one block free: 749.998 MB used.
    const DiskInfo info =
        Info(MediaState::Appendable, 1000 * kSectorsPerMB, 250 * kSectorsPerMB + 1);
    const DiskUsageView usage = ShowDiskUsage(info, 400, {});
    EXPECT_EQ(usage.label4, "74 % der Disk belegt 749 / 1000 MB");
    EXPECT_EQ(usage.label5, "749 MB");
    EXPECT_EQ(usage.usedWidth, 299);
    EXPECT_NEAR(usage.DiskUsed, 749.998, 0.001);

    const auto check = [&](int64_t sum) {
        return TotalSizeZusammenstellung(sum, usage.DiskCapacity, usage.DiskUsed, 400,
                                         usage.usedWidth, {}, kGerman);
    };
    EXPECT_EQ(check(100 * kMB).newWidth, 40);
    EXPECT_EQ(check(250 * kMB).label4, "");  // the free space less one block
    const CompilationView tooLarge = check(250 * kMB + kDataBlockBytes);
    EXPECT_EQ(tooLarge.label4, "Zusammenstellung zu groß für die Disk!");
    EXPECT_EQ(tooLarge.newWidth, 400 - 299);
}

TEST(DiskUsage, ClosedDiscShowsTheFullBar) {
    const DiskUsageView usage = ShowDiskUsage(Info(MediaState::Closed), 250, {});
    EXPECT_EQ(usage.DiskCapacity, -1);
    EXPECT_TRUE(usage.barsShown);
    EXPECT_EQ(usage.usedWidth, 250);
    EXPECT_EQ(usage.label4, "100 % der Disk belegt");
    EXPECT_EQ(usage.label5, "");

    const CompilationView compilation =
        TotalSizeZusammenstellung(kMB, usage.DiskCapacity, usage.DiskUsed, 250, 250, {}, kGerman);
    EXPECT_EQ(compilation.label4, "100 % der Disk belegt!");
    EXPECT_TRUE(compilation.newShown);
    EXPECT_EQ(compilation.newWidth, 0);

    // Any other negative capacity leaves no room at all.
    const CompilationView negative = TotalSizeZusammenstellung(0, -5, -10, 250, 0, {}, kGerman);
    EXPECT_EQ(negative.label4, "Kein freier Speicher auf der Disk!");
    EXPECT_FALSE(negative.newShown);
}

TEST(DiskUsage, TextsGoThroughTheTranslationNumbersDoNot) {
    const DiskInfo blank = Info(MediaState::Blank, 702 * kSectorsPerMB, 702 * kSectorsPerMB);
    EXPECT_EQ(ShowDiskUsage(blank, 100, Bracketed).label4, "0< % der Disk belegt >0 / 702 MB");
    EXPECT_EQ(TotalSizeZusammenstellung(2 * kMB, 1, 0, 100, 0, Bracketed, kGerman).label4,
              "<Zusammenstellung zu groß für die Disk!>");
}

}  // namespace
}  // namespace plattmix::authoring
