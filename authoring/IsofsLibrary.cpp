#include "IsofsLibrary.h"

#include <mutex>

#include "IsofsOwners.h"

namespace plattmix::authoring {

namespace {

std::mutex usersMutex;
int users = 0;
bool initialised = false;

// Severity names are taken as char* by the library's C interface.
char kSorry[] = "SORRY";
char kNever[] = "NEVER";
char kAll[] = "ALL";
char kPrefix[] = "libisofs: ";

}  // namespace

IsofsLibrary::IsofsLibrary() {
    const std::lock_guard lock(usersMutex);
    if (users++ == 0) {
        // Bit 0: leave the process's locale alone (the window owns it). File names on this
        // system are UTF-8, whatever the environment's locale says; Joliet names are converted
        // from it.
        initialised = iso_init_with_flag(1) >= 0;
        if (initialised) {
            char utf8[] = "UTF-8";
            iso_set_local_charset(utf8, 0);
            iso_set_msgs_severities(kSorry, kNever, kPrefix);
        }
    }
    ok_ = initialised;
}

IsofsLibrary::~IsofsLibrary() {
    const std::lock_guard lock(usersMutex);
    if (--users == 0 && initialised) {
        iso_finish();
        initialised = false;
    }
}

std::string IsofsLibrary::TakeMessages() {
    std::string first;
    int code = 0, imageId = 0;
    char text[ISO_MSGS_MESSAGE_LEN] = {};
    char severity[80] = {};
    while (iso_obtain_msgs(kAll, &code, &imageId, text, severity) > 0) {
        if (first.empty())
            first = text;
    }
    return first;
}

}  // namespace plattmix::authoring
