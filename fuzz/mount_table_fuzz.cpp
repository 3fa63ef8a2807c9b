// The mount table (/proc/self/mountinfo) as the virtual drives read it: which devices are
// mounted where.
#include <sys/sysmacros.h>

#include <cstdint>
#include <string>

#include "FuzzInput.h"
#include "MountTable.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace plattmix;
    const auto table = vdrive::ParseMountInfo(fuzz::AsText({data, size}));
    for (const vdrive::MountEntry& entry : table) {
        vdrive::MountPointsOfDevice(table, makedev(entry.major, entry.minor));
        vdrive::IsMountPoint(table, entry.mountPoint);
    }
    vdrive::IsMountPoint(table, "/media/plattmix");
    return 0;
}
