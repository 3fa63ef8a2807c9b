#include "imagedrive/DriveSlot.h"

#include "ScsiStatus.h"
#include "imagedrive/MmcReplies.h"

namespace plattmix::scsi::imagedrive {

void DriveSlot::Loaded() {
    unitAttention_ = true;
    mediaEvent_ = kMediaEventNew;
    becomingReadyLeft_ = becomingReadyCount_;
}

void DriveSlot::Insert(std::shared_ptr<const SectorSource> medium, bool quiet) {
    medium_ = std::move(medium);
    if (!trayOpen_ && !quiet)
        Loaded();
}

void DriveSlot::Remove() {
    if (medium_ != nullptr && !trayOpen_)
        mediaEvent_ = kMediaEventRemoval;
    medium_.reset();
    unitAttention_ = false;
    becomingReadyLeft_ = 0;
}

void DriveSlot::OpenTray() {
    if (trayOpen_)
        return;
    trayOpen_ = true;
    unitAttention_ = false;
    becomingReadyLeft_ = 0;
    if (medium_ != nullptr)
        mediaEvent_ = kMediaEventRemoval;
}

void DriveSlot::CloseTray() {
    if (!trayOpen_)
        return;
    trayOpen_ = false;
    if (medium_ != nullptr)
        Loaded();
}

std::optional<Sense> DriveSlot::TakeUnitAttention() {
    if (!unitAttention_)
        return std::nullopt;
    unitAttention_ = false;
    return Sense{kSenseUnitAttention, kAscMediumChanged, 0x00};
}

std::optional<Sense> DriveSlot::MediumCheck() {
    if (trayOpen_)
        return Sense{kSenseNotReady, kAscMediumNotPresent, kAscqTrayOpen};
    if (medium_ == nullptr)
        return Sense{kSenseNotReady, kAscMediumNotPresent, kAscqTrayClosed};
    if (becomingReadyLeft_ > 0) {
        --becomingReadyLeft_;
        return Sense{kSenseNotReady, kAscBecomingReady, kAscqBecomingReady};
    }
    return std::nullopt;
}

uint8_t DriveSlot::TakeMediaEvent() {
    const uint8_t event = mediaEvent_;
    mediaEvent_ = kMediaEventNone;
    return event;
}

}  // namespace plattmix::scsi::imagedrive
