#include "LibburnLibrary.h"

#include <sys/stat.h>

#include <clocale>
#include <string_view>

namespace plattmix::authoring {

namespace {

// Severity names go to the libraries as char*.
char kAll[] = "ALL";
char kSorry[] = "SORRY";
char kDebug[] = "DEBUG";
char kNever[] = "NEVER";
char kPrefix[] = "libburn: ";
char kIsofsPrefix[] = "libisofs: ";

constexpr std::string_view kStdioPrefix = "stdio:";

// libburn's message codes for "Write thread on drive N ended" and "A drive operation is still
// going on".
constexpr int kWriteThreadEnded = 0x00020178;
constexpr int kDriveStillBusy = 0x00020102;

BurnThreadEvents threadEvents;  // guarded by the library's mutex, as the queue is

// Media profiles libburn writes (0xffff is its own number for a stdio file).
bool WritableProfile(int profile) {
    switch (profile) {
        case 0x09:  // CD-R
        case 0x0a:  // CD-RW
        case 0x11:  // DVD-R
        case 0x12:  // DVD-RAM
        case 0x13:  // DVD-RW restricted overwrite
        case 0x14:  // DVD-RW sequential
        case 0x15:  // DVD-R DL
        case 0x1a:  // DVD+RW
        case 0x1b:  // DVD+R
        case 0x2b:  // DVD+R DL
        case 0x41:  // BD-R
        case 0x43:  // BD-RE
        case 0xffff:
            return true;
        default:
            return false;
    }
}

// The number libburn gives a severity name; 0 (below every name) for one it does not know.
int SeverityLevel(char* name) {
    int level = 0;
    return burn_text_to_sev(name, &level, 0) > 0 ? level : 0;
}

}  // namespace

LibburnLibrary& LibburnLibrary::Instance() {
    static LibburnLibrary library;
    return library;
}

LibburnLibrary::LibburnLibrary() {
    if (!isofs_.ok())
        return;
    // libisoburn starts libisofs once more, which sets the character-type locale from the
    // environment and libisofs's message levels back to their defaults: the process keeps its
    // locale, libisofs gets back the levels the image writer gave it.
    const char* current = std::setlocale(LC_CTYPE, nullptr);
    const std::string ctype = current != nullptr ? current : "C";
    char message[1024] = {};
    ok_ = isoburn_initialize(message, 0) == 1;
    std::setlocale(LC_CTYPE, ctype.c_str());
    if (!ok_)
        return;
    iso_set_msgs_severities(kSorry, kNever, kIsofsPrefix);
    // Messages are queued, never printed; each job takes the ones it caused. The debug ones are
    // queued for the end of write threads.
    burn_msgs_set_severities(kDebug, kNever, kPrefix);
    // No exclusive opening: the program's own drive access or another program may have the
    // drive open.
    burn_preset_device_open(0, 0, 0);
    // A file that can only be read becomes a read-only pseudo-drive, not a writable one.
    burn_allow_drive_role_4(1 | 2);
}

LibburnLibrary::~LibburnLibrary() {
    if (ok_)
        isoburn_finish();
}

std::string TakeBurnMessages() {
    static const int sorry = SeverityLevel(kSorry);
    std::string first;
    int code = 0;
    int osErrno = 0;
    char text[BURN_MSGS_MESSAGE_LEN] = {};
    char severity[80] = {};
    while (burn_msgs_obtain(kAll, &code, text, &osErrno, severity) > 0) {
        if (code == kWriteThreadEnded)
            ++threadEvents.writesEnded;
        else if (code == kDriveStillBusy)
            ++threadEvents.refusedAsBusy;
        if (first.empty() && SeverityLevel(severity) >= sorry)
            first = text;
    }
    return first;
}

BurnThreadEvents BurnThreadEventCounts() {
    return threadEvents;
}

GrabbedDrive::GrabbedDrive(std::string address, int flags)
    : address_(std::move(address)), flags_(flags) {
    Acquire(flags_);
}

bool GrabbedDrive::Acquire(int flags) {
    // On failure the library leaves the array untouched or empty: nothing to free.
    if (isoburn_drive_aquire(&infos_, address_.data(), flags) <= 0)
        infos_ = nullptr;
    return infos_ != nullptr;
}

bool GrabbedDrive::Reload() {
    constexpr int kLoadTray = 1;
    Release(true);
    return Acquire(flags_ | kLoadTray);
}

bool GrabbedDrive::Reassess() {
    constexpr int kReassess = 256;
    return infos_ != nullptr &&
           isoburn_drive_aquire(&infos_, address_.data(), flags_ | kReassess) == 1;
}

void GrabbedDrive::Release(bool eject) {
    if (infos_ == nullptr)
        return;
    isoburn_drive_release(infos_[0].drive, eject ? 1 : 0);
    burn_drive_info_free(infos_);
    infos_ = nullptr;
}

ReadOptions::ReadOptions() {
    if (isoburn_ropt_new(&options_, 0) != 1)
        options_ = nullptr;
}

bool CanWrite(const GrabbedDrive& drive) {
    switch (burn_drive_get_drive_role(drive.drive())) {
        case 1: {
            const burn_drive_info& info = drive.info();
            if (info.write_cdr || info.write_cdrw || info.write_dvdr || info.write_dvdram)
                return true;
            // DVD+R, DVD+RW and BD media are announced only by the drive's profile list.
            int count = 0;
            int profiles[64] = {};
            char current[64] = {};
            burn_drive_get_all_profiles(drive.drive(), &count, profiles, current);
            for (int i = 0; i < count && i < 64; ++i) {
                if (WritableProfile(profiles[i]))
                    return true;
            }
            return false;
        }
        case 2:  // random access file or block device
        case 3:  // sequential file, written once
        case 5:  // random access, write-only
            return true;
        default:  // the null drive, a read-only file
            return false;
    }
}

bool IsStdioFolder(const std::string& address) {
    if (!address.starts_with(kStdioPrefix))
        return false;
    struct stat info {};
    const std::string path = address.substr(kStdioPrefix.size());
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

}  // namespace plattmix::authoring
