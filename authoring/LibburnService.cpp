// IBurnService over libburn, with libisoburn in front of it: libisoburn emulates sessions on
// media that keep none of their own (overwritable discs and the regular files of "stdio:"
// pseudo-drives), so an ISO image there reads as an appendable disc growing at its end, where
// libburn alone would see an overwritable medium.
#include "BurnService.h"

#include <sys/stat.h>

#include <clocale>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

// libisoburn's declarations name libisofs's image type as well.
#include <libburn/libburn.h>
#include <libisofs/libisofs.h>
// In C++ libburn declares its API in namespace burn, while libisoburn names libburn's structs
// unqualified: they have to be found from the global namespace.
using namespace burn;
#include <libisoburn/libisoburn.h>

#include "IsofsLibrary.h"

namespace plattmix::authoring {

namespace {

// Severity names go to the libraries as char*.
char kAll[] = "ALL";
char kSorry[] = "SORRY";
char kNever[] = "NEVER";
char kPrefix[] = "libburn: ";
char kIsofsPrefix[] = "libisofs: ";

constexpr int64_t kBlockBytes = 2048;
constexpr std::string_view kStdioPrefix = "stdio:";

// The three libraries, started on first use and finished when the process ends. Queries hold
// the mutex: the message queue and the drive list are the libraries' own global state.
class LibburnLibrary {
  public:
    static LibburnLibrary& Instance() {
        static LibburnLibrary library;
        return library;
    }

    bool ok() const { return ok_; }
    std::mutex& mutex() { return mutex_; }

  private:
    LibburnLibrary() {
        if (!isofs_.ok())
            return;
        // libisoburn starts libisofs once more, which sets the character-type locale from the
        // environment and libisofs's message levels back to their defaults: the process keeps
        // its locale, libisofs gets back the levels the image writer gave it.
        const char* current = std::setlocale(LC_CTYPE, nullptr);
        const std::string ctype = current != nullptr ? current : "C";
        char message[1024] = {};
        ok_ = isoburn_initialize(message, 0) == 1;
        std::setlocale(LC_CTYPE, ctype.c_str());
        if (!ok_)
            return;
        iso_set_msgs_severities(kSorry, kNever, kIsofsPrefix);
        // Messages are queued, never printed; each query takes the ones it caused.
        burn_msgs_set_severities(kSorry, kNever, kPrefix);
        // No exclusive opening: the query only reads, and the program's own drive access or
        // another program may have the drive open.
        burn_preset_device_open(0, 0, 0);
        // A file that can only be read becomes a read-only pseudo-drive, not a writable one.
        burn_allow_drive_role_4(1 | 2);
    }

    ~LibburnLibrary() {
        if (ok_)
            isoburn_finish();
    }

    // libisofs as the image writer starts it, shared with libisoburn.
    IsofsLibrary isofs_;
    bool ok_ = false;
    std::mutex mutex_;
};

// The first queued message since the last call (the cause; later ones tell the consequences);
// the queue is emptied.
std::string TakeMessages() {
    std::string first;
    int code = 0;
    int osErrno = 0;
    char text[BURN_MSGS_MESSAGE_LEN] = {};
    char severity[80] = {};
    while (burn_msgs_obtain(kAll, &code, text, &osErrno, severity) > 0) {
        if (first.empty())
            first = text;
    }
    return first;
}

// A drive grabbed through libisoburn, released and its description freed with the scope.
class GrabbedDrive {
  public:
    explicit GrabbedDrive(std::string address) {
        // On failure the library leaves the array untouched or empty: nothing to free.
        if (isoburn_drive_aquire(&infos_, address.data(), 0) <= 0)
            infos_ = nullptr;
    }
    ~GrabbedDrive() {
        if (infos_ != nullptr) {
            isoburn_drive_release(infos_[0].drive, 0);
            burn_drive_info_free(infos_);
        }
    }
    GrabbedDrive(const GrabbedDrive&) = delete;
    GrabbedDrive& operator=(const GrabbedDrive&) = delete;

    bool ok() const { return infos_ != nullptr; }
    const burn_drive_info& info() const { return infos_[0]; }
    burn_drive* drive() const { return infos_[0].drive; }

  private:
    burn_drive_info* infos_ = nullptr;
};

class ReadOptions {
  public:
    ReadOptions() {
        if (isoburn_ropt_new(&options_, 0) != 1)
            options_ = nullptr;
    }
    ~ReadOptions() { isoburn_ropt_destroy(&options_, 0); }
    ReadOptions(const ReadOptions&) = delete;
    ReadOptions& operator=(const ReadOptions&) = delete;

    isoburn_read_opts* get() const { return options_; }

  private:
    isoburn_read_opts* options_ = nullptr;
};

bool IsFolder(std::string_view path) {
    struct stat info {};
    return ::stat(std::string(path).c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

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

// A drive the library can write: a recorder, or a pseudo-drive that is not read-only.
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

MediaInfo Closed() {
    return {MediaState::Closed, 0, 0};
}

// The last session loaded as libisoburn would grow it: the next session's start is the part
// in use, the space after it is free.
MediaInfo ImportedSession(burn_drive* drive) {
    ReadOptions options;
    if (options.get() == nullptr)
        return Closed();
    // Only the tree is needed, none of the file attributes.
    isoburn_ropt_set_extensions(options.get(), isoburn_ropt_noaaip | isoburn_ropt_noacl |
                                                   isoburn_ropt_noea | isoburn_ropt_nomd5);
    if (isoburn_read_image(drive, options.get(), nullptr) != 1)
        return Closed();
    int start = 0;
    int nextWritable = 0;
    if (isoburn_disc_track_lba_nwa(drive, nullptr, 0, &start, &nextWritable) != 1 ||
        nextWritable < 0)
        return Closed();
    const int64_t freeBlocks = isoburn_disc_available_space(drive, nullptr) / kBlockBytes;
    return {MediaState::Appendable, nextWritable + freeBlocks, freeBlocks};
}

MediaInfo ReadMedia(const GrabbedDrive& drive) {
    if (!CanWrite(drive))
        return {MediaState::NoRecorder, 0, 0};
    switch (isoburn_disc_get_status(drive.drive())) {
        case BURN_DISC_EMPTY:
        case BURN_DISC_UNREADY:  // nothing recognised (yet)
            return {MediaState::NoDisc, 0, 0};
        case BURN_DISC_BLANK: {
            // On emulated media this is already less the 64 KiB libisoburn keeps at the start.
            const int64_t blocks =
                isoburn_disc_available_space(drive.drive(), nullptr) / kBlockBytes;
            return {MediaState::Blank, blocks, blocks};
        }
        case BURN_DISC_APPENDABLE:
            return ImportedSession(drive.drive());
        default:  // full, closed, or media neither readable nor writable
            return Closed();
    }
}

class LibburnService final : public IBurnService {
  public:
    MediaInfo QueryMedia(const std::string& address) override {
        lastMessage_.clear();
        if (address.empty())  // no drive chosen: nothing to start the libraries for
            return {MediaState::NoRecorder, 0, 0};
        LibburnLibrary& library = LibburnLibrary::Instance();
        if (!library.ok())
            return {MediaState::NoService, 0, 0};
        const std::lock_guard lock(library.mutex());
        TakeMessages();  // left over from before
        MediaInfo media = Query(address);
        lastMessage_ = TakeMessages();
        return media;
    }

    std::string LastMessage() const override { return lastMessage_; }

    std::unique_ptr<IRecorder> OpenRecorder(const std::string&, MediaState& why) override {
        why = MediaState::NoRecorder;
        return nullptr;
    }

  private:
    static MediaInfo Query(const std::string& address) {
        // libburn takes a folder for a write-only pseudo-drive; nothing can be written to it.
        if (address.starts_with(kStdioPrefix) && IsFolder(address.substr(kStdioPrefix.size())))
            return {MediaState::NoRecorder, 0, 0};
        const GrabbedDrive drive(address);
        if (!drive.ok())
            return {MediaState::NoRecorder, 0, 0};
        return ReadMedia(drive);
    }

    std::string lastMessage_;
};

}  // namespace

std::unique_ptr<IBurnService> MakeLibburnService() {
    return std::make_unique<LibburnService>();
}

}  // namespace plattmix::authoring
