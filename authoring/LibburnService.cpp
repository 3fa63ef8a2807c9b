// IBurnService over libburn, with libisoburn in front of it: libisoburn emulates sessions on
// media that keep none of their own (overwritable discs and the regular files of "stdio:"
// pseudo-drives), so an ISO image there reads as an appendable disc growing at its end, where
// libburn alone would see an overwritable medium.
#include <cstdint>
#include <string>

#include "BurnService.h"
#include "LibburnLibrary.h"
#include "LibburnRecorder.h"

namespace plattmix::authoring {

namespace {

// Recorders truncate a "stdio:" file at the start of what they write, so nothing of an earlier
// content is left behind a new image.
constexpr int kTruncateStdioFile = 4;

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
    const int64_t freeBlocks = isoburn_disc_available_space(drive, nullptr) / kBurnBlockBytes;
    return {MediaState::Appendable, nextWritable + freeBlocks, freeBlocks};
}

// The medium's MMC profile as the drive names it; kProfileNone when it names none.
int ProfileOf(const GrabbedDrive& drive) {
    char name[80] = {};
    int profile = kProfileNone;
    if (burn_disc_get_profile(drive.drive(), &profile, name) != 1)
        return kProfileNone;
    return profile;
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
                isoburn_disc_available_space(drive.drive(), nullptr) / kBurnBlockBytes;
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
        lastProfile_ = kProfileNone;
        if (address.empty())  // no drive chosen: nothing to start the libraries for
            return {MediaState::NoRecorder, 0, 0};
        LibburnLibrary& library = LibburnLibrary::Instance();
        if (!library.ok())
            return {MediaState::NoService, 0, 0};
        const std::lock_guard lock(library.mutex());
        TakeBurnMessages();  // left over from before
        MediaInfo media = Query(address, lastProfile_);
        lastMessage_ = TakeBurnMessages();
        return media;
    }

    std::string LastMessage() const override { return lastMessage_; }
    int LastProfile() const override { return lastProfile_; }

    std::unique_ptr<IRecorder> OpenRecorder(const std::string& address, MediaState& why) override {
        lastMessage_.clear();
        why = MediaState::NoRecorder;
        if (address.empty())
            return nullptr;
        LibburnLibrary& library = LibburnLibrary::Instance();
        if (!library.ok()) {
            why = MediaState::NoService;
            return nullptr;
        }
        const std::lock_guard lock(library.mutex());
        TakeBurnMessages();
        if (IsStdioFolder(address))
            return nullptr;
        auto drive = std::make_unique<GrabbedDrive>(address, kTruncateStdioFile);
        lastMessage_ = TakeBurnMessages();
        if (!drive->ok() || !CanWrite(*drive))
            return nullptr;
        return MakeLibburnRecorder(std::move(drive));
    }

  private:
    static MediaInfo Query(const std::string& address, int& profile) {
        profile = kProfileNone;
        // libburn takes a folder for a write-only pseudo-drive; nothing can be written to it.
        if (IsStdioFolder(address))
            return {MediaState::NoRecorder, 0, 0};
        const GrabbedDrive drive(address, 0);
        if (!drive.ok())
            return {MediaState::NoRecorder, 0, 0};
        profile = ProfileOf(drive);
        return ReadMedia(drive);
    }

    std::string lastMessage_;
    int lastProfile_ = kProfileNone;
};

}  // namespace

std::unique_ptr<IBurnService> MakeLibburnService() {
    return std::make_unique<LibburnService>();
}

}  // namespace plattmix::authoring
