#include "VirtualDrive.h"

#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

namespace plattmix::vdrive {

namespace {

std::string Quoted(const std::string& path) {
    return "'" + path + "'";
}

std::string NoHandleText(const std::string& path) {
    return "Es konnte kein Handle von der ISO " + Quoted(path) + " erstellt werden!";
}

// The final box of the call, after any earlier ones.
DriveResult Finish(DriveResult result, std::string text, const char* title, MessageIcon icon) {
    result.messages.push_back({std::move(text), title, icon});
    return result;
}

DriveResult Refused(DriveOutcome outcome, std::string text, const char* title, MessageIcon icon,
                    std::string detail = {}) {
    DriveResult result;
    result.outcome = outcome;
    result.detail = std::move(detail);
    return Finish(std::move(result), std::move(text), title, icon);
}

// The path with links resolved as far as it exists, without a trailing "/".
std::string Resolved(const std::string& path) {
    std::error_code ec;
    std::string resolved = std::filesystem::weakly_canonical(path, ec).string();
    if (ec)
        resolved = path;
    while (resolved.size() > 1 && resolved.back() == '/')
        resolved.pop_back();
    return resolved;
}

// The same place, the fixed mount point being possibly a link to where the volume is.
bool SamePlace(const std::string& mountPoint, const std::string& fixed) {
    return mountPoint == fixed || Resolved(mountPoint) == Resolved(fixed);
}

}  // namespace

std::string NoServiceText() {
    return "ISO-Dateien können nicht als Laufwerk geladen werden: udisks2 antwortet nicht auf dem "
           "Systembus, und ohne udisks2 braucht es Root-Rechte für Loop-Geräte und mount.";
}

std::string FindDriveForVolume(IVirtualDriveService& service, const std::string& device) {
    if (device.empty())
        return {};
    const std::vector<std::string> points = service.MountPointsOf(device);
    const std::string fixed = service.FixedMountPoint();
    for (const std::string& point : points) {
        if (!fixed.empty() && SamePlace(point, fixed))
            return fixed;
    }
    return points.empty() ? std::string() : points.front();
}

DriveResult MountIso(IVirtualDriveService* service, const std::string& path) {
    if (service == nullptr)
        return Refused(DriveOutcome::NoService, NoServiceText(), kTitleMount,
                       MessageIcon::Critical);
    std::string why;
    const std::optional<ImageFile> image = ImageFile::Open(path, why);
    if (!image) {
        return Refused(DriveOutcome::NoHandle, NoHandleText(path), kTitleMount,
                       MessageIcon::Critical, why);
    }

    if (const auto attached = service->DevicesOf(*image); !attached.empty()) {
        DriveResult result;
        result.outcome = DriveOutcome::AlreadyAttached;
        result.device = attached.front();
        result.drive = FindDriveForVolume(*service, result.device);
        return Finish(std::move(result),
                      "Die ISO " + Quoted(path) + " ist breits als virtuelles Laufwerk " +
                          Quoted(result.drive) + " geladen!",
                      kTitleMount, MessageIcon::Exclamation);
    }

    const AttachStep attach = service->Attach(*image);
    if (attach.device.empty()) {
        return Refused(DriveOutcome::AttachFailed,
                       "Die ISO " + Quoted(path) + " konnte nicht als virtuelles Laufwerk " +
                           "geladen werden!",
                       kTitleMount, MessageIcon::Exclamation, attach.detail);
    }

    DriveResult result;
    result.outcome = DriveOutcome::Attached;
    result.device = attach.device;
    const MountPointStep step = service->MountAtFixedPoint(attach.device);
    if (step.outcome == MountPointOutcome::Mounted) {
        result.mountPointOk = true;
        result.messages.push_back({kTextMountPointOk, "", MessageIcon::None});
    } else if (step.outcome == MountPointOutcome::Failed) {
        result.messages.push_back({kTextMountPointFailed, "", MessageIcon::Exclamation});
    }
    result.detail = step.detail;
    result.drive = FindDriveForVolume(*service, attach.device);
    const std::string text = "Die ISO " + Quoted(path) + " wurde als virtuelles Laufwerk " +
                             Quoted(result.drive) + " geladen.";
    return Finish(std::move(result), text, kTitleMount, MessageIcon::Information);
}

DriveResult UnmountIso(IVirtualDriveService* service, const std::string& path) {
    if (service == nullptr) {
        return Refused(DriveOutcome::NoService, NoServiceText(), kTitleUnmount,
                       MessageIcon::Critical);
    }
    std::string why;
    // A changed or damaged file can still be detached: only its identity counts here.
    const std::optional<ImageFile> image = ImageFile::Open(path, why, false);
    if (!image) {
        return Refused(DriveOutcome::NoHandle, NoHandleText(path), kTitleUnmount,
                       MessageIcon::Critical, why);
    }
    const std::vector<std::string> devices = service->DevicesOf(*image);
    if (devices.empty()) {
        return Refused(DriveOutcome::NotAttached,
                       "Die ISO " + Quoted(path) + " ist in keinem virtuellen Laufwerk geladen!",
                       kTitleUnmount, MessageIcon::None);
    }

    DriveResult result;
    result.device = devices.front();
    for (const std::string& device : devices) {
        result.drive = FindDriveForVolume(*service, device);
        if (!result.drive.empty()) {
            result.device = device;
            break;
        }
    }
    for (const std::string& device : devices) {
        const ServiceStep detach = service->Detach(device);
        if (!detach.ok) {
            result.outcome = DriveOutcome::DetachFailed;
            result.device = device;
            result.detail = detach.detail;
            return Finish(std::move(result),
                          "Die ISO " + Quoted(path) + " konnte nicht vom virtuellem Laufwerk " +
                              Quoted(result.drive) + " entfernt werden!",
                          kTitleUnmount, MessageIcon::None);
        }
    }
    result.outcome = DriveOutcome::Detached;
    const std::string text = "Die ISO " + Quoted(path) + " wurde als virtuelles Laufwerk " +
                             Quoted(result.drive) + " entfernt.";
    return Finish(std::move(result), text, kTitleUnmount, MessageIcon::None);
}

}  // namespace plattmix::vdrive
