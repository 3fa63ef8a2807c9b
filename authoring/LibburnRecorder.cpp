#include "LibburnRecorder.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "BurnProgress.h"
#include "LibburnOwners.h"
#include "LibburnWrite.h"

namespace plattmix::authoring {

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto kPollPause = std::chrono::milliseconds(100);
constexpr auto kThreadEndWait = std::chrono::seconds(10);

// What the drive does, in the progress texts' numbering. libburn reports no calibration of its
// own: the drive does it at the start of the write, while libburn writes the lead-in or pregap.
int ActionOf(burn_drive_status status) {
    switch (status) {
        case BURN_DRIVE_READING:
        case BURN_DRIVE_READING_SYNC:
            return kActionValidatingMedia;
        case BURN_DRIVE_FORMATTING:
        case BURN_DRIVE_ERASING:
            return kActionFormattingMedia;
        case BURN_DRIVE_SPAWNING:
        case BURN_DRIVE_GRABBING:
            return kActionInitializingHardware;
        case BURN_DRIVE_WRITING_LEADIN:
        case BURN_DRIVE_WRITING_PREGAP:
            return kActionCalibratingPower;
        case BURN_DRIVE_WRITING:
        case BURN_DRIVE_WRITING_SYNC:
            return kActionWritingData;
        case BURN_DRIVE_WRITING_LEADOUT:
        case BURN_DRIVE_CLOSING_TRACK:
        case BURN_DRIVE_CLOSING_SESSION:
            return kActionFinalization;
        case BURN_DRIVE_IDLE:
            break;
    }
    return kActionCompleted;
}

MediaState StateOf(burn_disc_status status) {
    switch (status) {
        case BURN_DISC_BLANK:
            return MediaState::Blank;
        case BURN_DISC_APPENDABLE:
            return MediaState::Appendable;
        case BURN_DISC_FULL:
            return MediaState::Closed;
        default:  // empty, not ready, unsuitable
            return MediaState::NoDisc;
    }
}

class LibburnRecorder final : public IRecorder {
  public:
    explicit LibburnRecorder(std::unique_ptr<GrabbedDrive> drive) : drive_(std::move(drive)) {}

    ~LibburnRecorder() override {
        const std::lock_guard lock(LibburnLibrary::Instance().mutex());
        if (running_ && drive_->ok()) {
            // Given up while writing: the drive stops before it is let go.
            burn_drive_cancel(drive_->drive());
            while (burn_drive_get_status(drive_->drive(), nullptr) != BURN_DRIVE_IDLE)
                std::this_thread::sleep_for(kPollPause);
        }
        WaitForWriteThread();
        EndJob(false);
        readBack_.reset();
        image_.reset();
        drive_->Release(false);
        TakeBurnMessages();
    }

    RecorderInfo Info() override {
        const std::lock_guard lock(LibburnLibrary::Instance().mutex());
        RecorderInfo info;
        if (!drive_->ok())
            return info;
        burn_drive* drive = drive_->drive();
        char name[80] = {};
        int profile = 0;
        if (burn_disc_get_profile(drive, &profile, name) == 1)
            info.profile = profile;
        info.state = StateOf(isoburn_disc_get_status(drive));
        info.freeBlocks = isoburn_disc_available_space(drive, nullptr) / kBurnBlockBytes;
        info.totalSectors = info.freeBlocks;
        if (info.state == MediaState::Appendable) {
            int start = 0;
            int next = 0;
            if (isoburn_disc_track_lba_nwa(drive, nullptr, 0, &start, &next) == 1 && next > 0)
                info.totalSectors += next;
        } else if (info.state == MediaState::Closed) {
            info.freeBlocks = 0;
        }
        // libisoburn adds a session to an appendable medium, real or emulated.
        info.multisession = info.state == MediaState::Appendable;
        Collect();
        return info;
    }

    Iso_Image* LoadImage() override {
        const std::lock_guard lock(LibburnLibrary::Instance().mutex());
        if (image_ || !drive_->ok())
            return image_.get();
        image_ = ReadTree();
        return image_.get();
    }

    WriteError StartImageWrite(bool closeDisc) override {
        const std::lock_guard lock(LibburnLibrary::Instance().mutex());
        if (!drive_->ok() || !image_)
            return WriteError::Failed;
        ImageOptions imageOptions;
        burn_disc* raw = nullptr;
        if (imageOptions.get() == nullptr ||
            isoburn_prepare_disc(drive_->drive(), &raw, imageOptions.get()) <= 0) {
            Collect();
            return WriteError::Failed;
        }
        disc_.reset(raw);
        imageWrite_ = true;  // from here on the image thread runs until EndJob
        return Start(closeDisc);
    }

    WriteError StartIsoWrite(const std::string& isoPath, bool closeDisc) override {
        const std::lock_guard lock(LibburnLibrary::Instance().mutex());
        if (!drive_->ok())
            return WriteError::MediaNotSupported;
        switch (StateOf(isoburn_disc_get_status(drive_->drive()))) {
            case MediaState::Blank:
                break;
            case MediaState::Appendable:
            case MediaState::Closed:
                return WriteError::MediaNotBlank;
            default:
                return WriteError::MediaNotSupported;
        }
        std::string error;
        disc_ = IsoFileDisc(isoPath, error);
        if (!disc_) {
            Note(error);
            return WriteError::Failed;
        }
        return Start(closeDisc);
    }

    WriteProgress Poll() override {
        if (running_)
            std::this_thread::sleep_for(kPollPause);
        const std::lock_guard lock(LibburnLibrary::Instance().mutex());
        WriteProgress progress;
        progress.elapsedSeconds = static_cast<int>(
            std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - started_).count());
        burn_progress state{};
        const burn_drive_status status =
            drive_->ok() ? burn_drive_get_status(drive_->drive(), &state) : BURN_DRIVE_IDLE;
        progress.action = ActionOf(status);
        progress.startLba = state.start_sector;
        progress.lastWrittenLba = static_cast<int64_t>(state.start_sector) + state.sector;
        progress.sectorCount = status == BURN_DRIVE_ERASING ? 0 : state.sectors;
        if (state.sector > 0 && state.sectors > 0)
            progress.totalSeconds = static_cast<int>(static_cast<int64_t>(progress.elapsedSeconds) *
                                                     state.sectors / state.sector);
        if (status == BURN_DRIVE_IDLE) {
            progress.running = false;
            if (running_) {
                WaitForWriteThread();
                EndJob(burn_drive_wrote_well(drive_->drive()) == 1);
            }
        }
        Collect();
        return progress;
    }

    void CancelWrite() override {
        const std::lock_guard lock(LibburnLibrary::Instance().mutex());
        if (running_ && drive_->ok())
            burn_drive_cancel(drive_->drive());
    }

    WriteError FinishWrite(bool keepSession) override {
        const std::lock_guard lock(LibburnLibrary::Instance().mutex());
        if (!wroteWell_)
            return WriteError::Failed;
        // On emulated media the new session's superblock goes to the start now; left out, the
        // medium goes on showing the previous session.
        if (imageDone_ && keepSession && isoburn_activate_session(drive_->drive()) <= 0) {
            Collect();
            return WriteError::Failed;
        }
        return WriteError::None;
    }

    bool StartQuickBlank() override {
        const std::lock_guard lock(LibburnLibrary::Instance().mutex());
        if (!drive_->ok() || running_)
            return false;
        started_ = Clock::now();
        wroteWell_ = false;
        running_ = true;
        // On media without sessions of their own this invalidates the image at once.
        isoburn_disc_erase(drive_->drive(), 1);
        Collect();
        return true;
    }

    bool FinishBlank() override {
        const std::lock_guard lock(LibburnLibrary::Instance().mutex());
        if (!drive_->ok())
            return false;
        // The drive says how the blanking went; the medium, read anew, must be blank.
        const bool blanked = wroteWell_ && drive_->Reassess() &&
                             isoburn_disc_get_status(drive_->drive()) == BURN_DISC_BLANK;
        Collect();
        return blanked;
    }

    bool Eject() override {
        const std::lock_guard lock(LibburnLibrary::Instance().mutex());
        if (!drive_->ok() || running_)
            return false;
        EndJob(false);
        readBack_.reset();
        image_.reset();
        drive_->Release(true);
        Collect();
        return true;
    }

    bool ReloadMedium() override {
        const std::lock_guard lock(LibburnLibrary::Instance().mutex());
        if (!drive_->ok() || running_)
            return false;
        // Both trees belong to the medium as it was; LoadImage reads it anew.
        readBack_.reset();
        image_.reset();
        bool written = drive_->Reassess() && ShowsWrittenMedium();
        // Some drives go on reporting the medium from before the write until it is loaded again.
        if (!written && burn_drive_get_drive_role(drive_->drive()) == 1)
            written = drive_->Reload() && ShowsWrittenMedium();
        Collect();
        return written;
    }

    int64_t WrittenStartLba() const override { return writtenStart_; }

    size_t ReadData(int64_t lba, char* data, size_t size) override {
        const std::lock_guard lock(LibburnLibrary::Instance().mutex());
        if (!drive_->ok() || running_)
            return 0;
        off_t count = 0;
        const int read = burn_read_data(drive_->drive(), static_cast<off_t>(lba) * kBurnBlockBytes,
                                        data, static_cast<off_t>(size), &count, 0);
        Collect();
        if (read == 1)
            return size;
        return static_cast<size_t>(std::clamp<off_t>(count, 0, static_cast<off_t>(size)));
    }

    Iso_Image* ReadBackImage() override {
        const std::lock_guard lock(LibburnLibrary::Instance().mutex());
        readBack_.reset();
        if (drive_->ok() && !running_)
            readBack_ = ReadTree();
        return readBack_.get();
    }

    std::string LastMessage() const override { return message_; }

  private:
    // The tree of the medium's last session (an empty one on a blank medium); nullptr when it
    // cannot be read. The mutex is held.
    ImportedImagePtr ReadTree() {
        ReadOptions options;
        if (options.get() == nullptr)
            return nullptr;
        // The tree and Rock Ridge; no ACLs, extended attributes or checksums.
        isoburn_ropt_set_extensions(options.get(), isoburn_ropt_noaaip | isoburn_ropt_noacl |
                                                       isoburn_ropt_noea | isoburn_ropt_nomd5);
        IsoImage* image = nullptr;
        ImportedImagePtr tree;
        if (isoburn_read_image(drive_->drive(), options.get(), &image) == 1)
            tree.reset(image);
        Collect();
        return tree;
    }

    // A medium that holds a session now. The mutex is held.
    bool ShowsWrittenMedium() const {
        const burn_disc_status status = isoburn_disc_get_status(drive_->drive());
        return status == BURN_DISC_APPENDABLE || status == BURN_DISC_FULL;
    }

    // Where the write with options begins. The mutex is held.
    int64_t NextWritable(burn_write_opts* options) const {
        int start = 0;
        int next = 0;
        const int found =
            imageWrite_ ? isoburn_disc_track_lba_nwa(drive_->drive(), options, 0, &start, &next)
                        : burn_disc_track_lba_nwa(drive_->drive(), options, 0, &start, &next);
        return found == 1 && next > 0 ? next : 0;
    }

    // Checks that the session fits, then starts writing disc_. The mutex is held.
    WriteError Start(bool closeDisc) {
        burn_drive* drive = drive_->drive();
        BurnWriteOptsPtr options = WriteOptions(drive, closeDisc);
        std::string reasons;
        WriteError refused = WriteError::None;
        if (!options) {
            refused = WriteError::Failed;
        } else if (DiscSectors(disc_.get()) >
                   isoburn_disc_available_space(drive, options.get()) / kBurnBlockBytes) {
            refused = WriteError::StreamTooLarge;
        } else if (!ChooseWriteType(options.get(), disc_.get(), reasons)) {
            Note(reasons);
            refused = WriteError::Failed;
        }
        if (refused != WriteError::None) {
            EndJob(false);
            Collect();
            return refused;
        }
        writtenStart_ = NextWritable(options.get());
        started_ = Clock::now();
        running_ = true;
        wroteWell_ = false;
        Collect();
        const BurnThreadEvents before = BurnThreadEventCounts();
        if (imageWrite_)
            isoburn_disc_write(options.get(), disc_.get());
        else
            burn_disc_write(options.get(), disc_.get());
        Collect();
        if (BurnThreadEventCounts().refusedAsBusy > before.refusedAsBusy) {
            EndJob(false);
            return WriteError::Failed;
        }
        // A refusal before the thread leaves the drive idle and marked as cancelled.
        endedAtStart_ = before.writesEnded;
        writeThread_ = burn_drive_get_status(drive_->drive(), nullptr) != BURN_DRIVE_IDLE ||
                       burn_drive_wrote_well(drive_->drive()) == 1;
        return WriteError::None;
    }

    // libburn shows the drive idle a moment before its write thread lets go of the drive's slot
    // in its list; a write started on a drive in that slot before then would be refused without
    // a failure. Waits for the thread's end (at most kThreadEndWait). The mutex is held.
    void WaitForWriteThread() {
        if (!writeThread_)
            return;
        writeThread_ = false;
        const Clock::time_point deadline = Clock::now() + kThreadEndWait;
        while (BurnThreadEventCounts().writesEnded <= endedAtStart_ && Clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            Collect();
        }
        // After its message the thread only takes itself off the list.
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }

    // The write is over (or never started): the image thread ends, waiting for its last files
    // when the write went well, stopped otherwise. The mutex is held.
    void EndJob(bool wroteWell) {
        if (imageWrite_ && drive_->ok()) {
            if (wroteWell)
                isoburn_sync_after_write(drive_->drive(), nullptr, 0);
            else
                isoburn_cancel_prepared_write(drive_->drive(), nullptr, 0);
        }
        imageDone_ = imageWrite_ && wroteWell;
        imageWrite_ = false;
        wroteWell_ = wroteWell;
        running_ = false;
        disc_.reset();
    }

    void Note(const std::string& text) {
        if (message_.empty())
            message_ = text;
    }

    void Collect() { Note(TakeBurnMessages()); }

    std::unique_ptr<GrabbedDrive> drive_;
    ImportedImagePtr image_;
    ImportedImagePtr readBack_;  // the tree as read back after a write
    BurnDiscPtr disc_;
    Clock::time_point started_ = Clock::now();
    int64_t writtenStart_ = 0;
    uint64_t endedAtStart_ = 0;  // write threads ended before this one started
    bool writeThread_ = false;   // a write thread was started and its end not yet seen
    bool imageWrite_ = false;    // disc_ comes from the image thread
    bool imageDone_ = false;     // an image session was written well and is not active yet
    bool running_ = false;
    bool wroteWell_ = false;
    std::string message_;
};

}  // namespace

std::unique_ptr<IRecorder> MakeLibburnRecorder(std::unique_ptr<GrabbedDrive> drive) {
    return std::make_unique<LibburnRecorder>(std::move(drive));
}

}  // namespace plattmix::authoring
