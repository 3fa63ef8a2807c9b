#include "DiscUsage.h"

#include <cmath>
#include <limits>

namespace plattmix::authoring {

namespace {

constexpr double kBytesPerMB = 1048576.0;
constexpr double kClosed = -1;

std::string Tr(const Translate& tr, const std::string& german) {
    return tr ? tr(german) : german;
}

// A width or a count for the window: the fraction is cut off; values outside int (only from
// nonsense input) are held at its ends.
int Truncated(double value) {
    if (std::isnan(value))
        return 0;
    const double cut = std::trunc(value);
    if (cut <= std::numeric_limits<int>::min())
        return std::numeric_limits<int>::min();
    if (cut >= std::numeric_limits<int>::max())
        return std::numeric_limits<int>::max();
    return static_cast<int>(cut);
}

std::string WholeNumber(double value) {
    return std::to_string(static_cast<int64_t>(std::trunc(value)));
}

}  // namespace

DiskInfo GetDiskInfo(IBurnService& service, const std::string& drive) {
    const MediaInfo media = service.QueryMedia(drive);
    DiskInfo info;
    switch (media.state) {
        case MediaState::Blank:
            info.total = static_cast<double>(media.totalSectors * kDataBlockBytes);
            info.free = info.total;
            break;
        case MediaState::Appendable:
            info.total = static_cast<double>(media.totalSectors * kDataBlockBytes);
            info.free = static_cast<double>(media.freeBlocks * kDataBlockBytes);
            break;
        case MediaState::Closed:
            info.total = kClosed;
            info.free = kClosed;
            break;
        case MediaState::NoService:
        case MediaState::NoRecorder:
        case MediaState::NoDisc:
            break;
    }
    return info;
}

DiskUsageView ShowDiskUsage(const DiskInfo& info, int totalWidth, const Translate& tr) {
    DiskUsageView view;
    // The capacity starts as the free space, the one value the query hands back.
    view.DiskCapacity = info.free;
    if (info.free == kClosed) {
        view.DiskCapacity = kClosed;
        view.barsShown = true;
        view.usedWidth = totalWidth;
        view.label4 = Tr(tr, "100 % der Disk belegt");
        return view;
    }
    // No free space at all reads as no disc, as does a total nothing can be divided by.
    if (info.free == 0 || info.total <= 0) {
        view.DiskUsed = 0;
        view.barsShown = false;
        view.label4 = Tr(tr, "Keine Disk im Laufwerk");
        return view;
    }
    const double used = info.total - info.free;
    const double percent = used * 100 / info.total;
    view.DiskCapacity = info.total / kBytesPerMB;
    view.DiskUsed = used / kBytesPerMB;
    view.barsShown = true;
    view.usedWidth = Truncated(totalWidth / view.DiskCapacity * view.DiskUsed);
    // Percent and megabytes are shown as whole numbers, the fraction cut off: a disc reads as
    // 100 % only when it is full.
    const std::string usedMB = WholeNumber(view.DiskUsed);
    view.label4 = WholeNumber(percent) + Tr(tr, " % der Disk belegt ") + usedMB + " / " +
                  WholeNumber(view.DiskCapacity) + " MB";
    view.label5 = usedMB + " MB";
    return view;
}

CompilationView TotalSizeZusammenstellung(int64_t sum, double diskCapacity, double diskUsed,
                                          int totalWidth, int usedWidth, const Translate& tr,
                                          const NumberFormat& format) {
    CompilationView view;
    view.sum = sum;
    view.label5 = FormatGroesse(sum, format);
    view.newShown = sum != 0;
    const double newMB = static_cast<double>(sum) / kBytesPerMB;
    if (diskCapacity == 0) {
        view.label4 = Tr(tr, "Keine CD im Laufwerk!");
    } else if (diskCapacity == kClosed) {
        view.label4 = Tr(tr, "100 % der Disk belegt!");
    } else if (newMB + diskUsed < diskCapacity) {
        if (diskCapacity < 0) {
            view.newShown = false;
            view.label4 = Tr(tr, "Kein freier Speicher auf der Disk!");
        } else {
            view.newWidth = Truncated(totalWidth / diskCapacity * newMB);
            view.label4.clear();
        }
    } else {
        view.label4 = Tr(tr, "Zusammenstellung zu groß für die Disk!");
        view.newWidth = totalWidth - usedWidth;
    }
    return view;
}

}  // namespace plattmix::authoring
