#include "IsofsLibrary.h"

#include <mutex>

#include "IsofsOwners.h"

namespace plattmix::authoring {

namespace {

std::mutex initMutex;

// The library's C interface takes these as char*.
char kSorry[] = "SORRY";
char kNever[] = "NEVER";
char kAll[] = "ALL";
char kPrefix[] = "libisofs: ";
char kUtf8[] = "UTF-8";

}  // namespace

IsofsLibrary::IsofsLibrary() {
    const std::lock_guard lock(initMutex);
    // No messenger: nobody has initialised libisofs yet, or somebody finished it since.
    if (iso_get_messenger() == nullptr) {
        // Bit 0: leave the process's locale alone (the window owns it).
        if (iso_init_with_flag(1) < 0)
            return;
        iso_set_msgs_severities(kSorry, kNever, kPrefix);
    }
    // File names on this system are UTF-8 whatever the locale says; Joliet names are
    // converted from them.
    iso_set_local_charset(kUtf8, 0);
    ok_ = true;
}

std::string IsofsLibrary::TakeMessages(int imageId) {
    std::string newest, mine;
    int code = 0, messageImage = 0;
    char text[ISO_MSGS_MESSAGE_LEN] = {};
    char severity[80] = {};
    while (iso_obtain_msgs(kAll, &code, &messageImage, text, severity) > 0) {
        newest = text;
        if (messageImage == imageId && mine.empty())
            mine = text;
    }
    return mine.empty() ? newest : mine;
}

}  // namespace plattmix::authoring
