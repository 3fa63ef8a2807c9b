// ISO images attached as read-only drives and detached again. The window's two buttons and
// plattmix-cli's mount and unmount run the same functions; every outcome comes back as the
// message boxes to show, in order, with their text, title and icon.
#pragma once

#include <string>
#include <vector>

#include "IVirtualDriveService.h"

namespace plattmix::vdrive {

// The open-file dialog of both buttons: the same title for attaching and detaching.
inline constexpr const char* kDialogTitle = "ISO Dateien trennen";
inline constexpr const char* kDialogFilter = "ISO Dateien|*.iso";

// Titles of the final message box.
inline constexpr const char* kTitleMount = "Mount ISO";
inline constexpr const char* kTitleUnmount = "Unmount ISO";

// The box about the mount point reads exactly this.
inline constexpr const char* kTextMountPointOk = "OK";
inline constexpr const char* kTextMountPointFailed = "NIcht OK";

enum class MessageIcon { None, Information, Exclamation, Critical };

struct DriveMessage {
    std::string text;
    std::string title;  // empty: the program's own title
    MessageIcon icon = MessageIcon::None;
};

enum class DriveOutcome {
    NoService,        // neither udisks2 nor root rights: nothing done
    NoHandle,         // the image could not be opened (or is no ISO image)
    AlreadyAttached,  // mount: a drive shows the image already; not attached twice
    AttachFailed,     // mount: the service refused
    Attached,         // mount: attached (mountPointOk tells whether the mount point was given)
    NotAttached,      // unmount: no drive shows the image
    DetachFailed,     // unmount: the drive stays
    Detached,         // unmount: done
};

struct DriveResult {
    DriveOutcome outcome = DriveOutcome::NoService;
    std::vector<DriveMessage> messages;  // the boxes to show, in order
    std::string device;                  // the drive's block device ("/dev/loop3"), when known
    std::string drive;                   // the mount point reported as the drive, may be empty
    bool mountPointOk = false;           // mount: the volume got the program's mount point
    std::string detail;                  // what the service said when a step failed
};

// Attaches the image at path read-only and gives its volume the program's fixed mount point.
// service may be null (no service available): the result then says so.
DriveResult MountIso(IVirtualDriveService* service, const std::string& path);

// Unmounts the volume of every drive that shows the image at path and detaches the drives.
DriveResult UnmountIso(IVirtualDriveService* service, const std::string& path);

// The mount point that shows the drive's volume: the program's fixed mount point when the volume
// is there, else the first place it is mounted, else an empty text.
std::string FindDriveForVolume(IVirtualDriveService& service, const std::string& device);

// The text shown when no service can attach images.
std::string NoServiceText();

}  // namespace plattmix::vdrive
