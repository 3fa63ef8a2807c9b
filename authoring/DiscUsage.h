// How full the disc in the chosen drive is, and whether the compilation still fits: the values
// the burning page shows as bars and status texts.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "BurnService.h"
#include "SizeFormat.h"

namespace plattmix::authoring {

inline constexpr int64_t kDataBlockBytes = 2048;

// Looks up an interface text by its German original; an empty function keeps the German text.
using Translate = std::function<std::string(const std::string& german)>;

// Free and total bytes: free = total on a blank disc; free = the imported session's free blocks
// on an appendable one; -1 and -1 on a closed disc; 0 and 0 without service, recorder or disc.
struct DiskInfo {
    double total = 0;
    double free = 0;
};
DiskInfo GetDiskInfo(IBurnService& service, const std::string& drive);

// What ShowDiskUsage leaves in the window.
struct DiskUsageView {
    double DiskCapacity = 0;  // MB; 0 without a disc, -1 for a closed one
    double DiskUsed = 0;      // MB
    bool barsShown = false;   // PictureTotal and PictureUsed
    int usedWidth = 0;        // of PictureUsed, in the units of the total width
    std::string label4;
    std::string label5;  // empty: left as it was
};
// With free space: "<percent> % der Disk belegt <used> / <capacity> MB", the three numbers
// whole, their fractions cut off. No free space at all reads as no disc; a closed disc shows
// the full bar.
DiskUsageView ShowDiskUsage(const DiskInfo& info, int totalWidth, const Translate& tr);

// What TotalSizeZusammenstellung leaves in the window.
struct CompilationView {
    int64_t sum = 0;
    bool newShown = false;  // PictureNewValue
    int newWidth = 0;
    std::string label4;
    std::string label5;
};
// A compilation that exactly fills the free space counts as too large.
CompilationView TotalSizeZusammenstellung(int64_t sum, double diskCapacity, double diskUsed,
                                          int totalWidth, int usedWidth, const Translate& tr,
                                          const NumberFormat& format = SystemNumberFormat());

}  // namespace plattmix::authoring
