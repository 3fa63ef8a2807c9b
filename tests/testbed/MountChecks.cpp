#include "MountChecks.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>
#include <vector>

#include "LoopDevices.h"
#include "MountTable.h"
#include "TreeChecks.h"
#include "VirtualDrive.h"

namespace plattmix::testbed {

namespace {

using vdrive::DriveMessage;
using vdrive::DriveOutcome;
using vdrive::DriveResult;
using vdrive::MessageIcon;

const char* OutcomeName(DriveOutcome outcome) {
    switch (outcome) {
        case DriveOutcome::NoService:
            return "NoService";
        case DriveOutcome::NoHandle:
            return "NoHandle";
        case DriveOutcome::AlreadyAttached:
            return "AlreadyAttached";
        case DriveOutcome::AttachFailed:
            return "AttachFailed";
        case DriveOutcome::Attached:
            return "Attached";
        case DriveOutcome::NotAttached:
            return "NotAttached";
        case DriveOutcome::DetachFailed:
            return "DetachFailed";
        case DriveOutcome::Detached:
            return "Detached";
    }
    return "?";
}

const char* IconName(MessageIcon icon) {
    switch (icon) {
        case MessageIcon::None:
            return "none";
        case MessageIcon::Information:
            return "information";
        case MessageIcon::Exclamation:
            return "exclamation";
        case MessageIcon::Critical:
            return "critical";
    }
    return "?";
}

std::string Describe(const DriveResult& result) {
    std::string text = OutcomeName(result.outcome);
    for (const DriveMessage& m : result.messages)
        text += " [" + m.title + "|" + IconName(m.icon) + "|" + m.text + "]";
    if (!result.detail.empty())
        text += " (" + result.detail + ")";
    return text;
}

bool Shows(const DriveResult& result, DriveOutcome outcome,
           const std::vector<DriveMessage>& messages) {
    if (result.outcome != outcome || result.messages.size() != messages.size())
        return false;
    for (size_t i = 0; i < messages.size(); ++i) {
        const DriveMessage& shown = result.messages[i];
        if (shown.text != messages[i].text || shown.title != messages[i].title ||
            shown.icon != messages[i].icon)
            return false;
    }
    return true;
}

// A value of the loop device's sysfs folder ("ro", "loop/autoclear"), without its line feed.
std::string SysValue(const std::string& device, const std::string& name) {
    std::ifstream in("/sys/block/" + device.substr(device.rfind('/') + 1) + "/" + name);
    std::string value;
    std::getline(in, value);
    return value;
}

std::string Error(int error) {
    return std::strerror(error);
}

class Steps {
  public:
    Steps(Report& report, const std::string& data, vdrive::IVirtualDriveService& service,
          const std::string& prefix)
        : report_(report),
          service_(service),
          prefix_(prefix + "."),
          point_(service.FixedMountPoint()),
          image_(data + "/" + kVirtualDriveImage),
          listing_(data + "/" + kVirtualDriveListing),
          link_(data + "/verweis.iso") {}

    void Run() {
        std::ifstream in(listing_, std::ios::binary);
        std::stringstream text;
        text << in.rdbuf();
        std::string error;
        expected_ = ParseTreeListing(text.str(), error);
        if (!report_.Check(prefix_ + "listing", error.empty() && !expected_.empty(),
                           error.empty() ? std::to_string(expected_.size()) + " entries" : error))
            return;
        std::error_code ec;
        realImage_ = std::filesystem::canonical(image_, ec).string();

        NoImage();
        if (!Attach())
            return;
        AttachAgain();
        Busy();
        Detach();
        TakenByMount();
        TakenByFile();
    }

  private:
    size_t Attachments() const { return vdrive::LoopDevicesBackedBy(realImage_).size(); }
    bool Mounted() const { return !service_.MountPointsOf(device_).empty(); }
    // The folder the fixed mount point shows (udisks's, behind the link).
    std::string Shown() const {
        std::error_code ec;
        const auto shown = std::filesystem::canonical(point_, ec);
        return ec ? point_ : shown.string();
    }

    void NoImage() {
        for (const std::string& path : {listing_, image_ + ".fehlt"}) {
            const DriveResult result = vdrive::MountIso(&service_, path);
            const std::string text =
                "Es konnte kein Handle von der ISO '" + path + "' erstellt werden!";
            report_.Check(prefix_ + "no-image",
                          Shows(result, DriveOutcome::NoHandle,
                                {{text, "Mount ISO", MessageIcon::Critical}}) &&
                              vdrive::LoopDevicesBackedBy(path).empty(),
                          Describe(result));
        }
    }

    bool Attach() {
        const DriveResult result = vdrive::MountIso(&service_, image_);
        device_ = result.device;
        const std::string text =
            "Die ISO '" + image_ + "' wurde als virtuelles Laufwerk '" + point_ + "' geladen.";
        const bool ok = report_.Check(
            prefix_ + "mount",
            Shows(result, DriveOutcome::Attached,
                  {{"OK", "", MessageIcon::None}, {text, "Mount ISO", MessageIcon::Information}}) &&
                result.mountPointOk && result.drive == point_ && Attachments() == 1 && Mounted(),
            Describe(result) + " on " + device_);
        if (!ok)
            return false;

        // Read-only all the way down, and bound without autoclear so that it outlives the
        // program (which ends here only after the checks).
        errno = 0;
        const int file = ::open((Shown() + "/neu.txt").c_str(), O_WRONLY | O_CREAT, 0644);
        const int fileError = errno;
        // The kernel refuses either the open for writing or the write itself.
        errno = 0;
        const int node = ::open(device_.c_str(), O_WRONLY);
        const char zeros[2048] = {};
        const bool written = node >= 0 && ::write(node, zeros, sizeof zeros) == sizeof zeros;
        const int nodeError = errno;
        if (file >= 0)
            ::close(file);
        if (node >= 0)
            ::close(node);
        report_.Check(prefix_ + "read-only",
                      SysValue(device_, "ro") == "1" && file < 0 && fileError == EROFS &&
                          !written && nodeError != 0,
                      "ro " + SysValue(device_, "ro") + ", new file: " + Error(fileError) +
                          ", writing the device: " + Error(nodeError));
        report_.Check(prefix_ + "kept", SysValue(device_, "loop/autoclear") == "0",
                      "autoclear " + SysValue(device_, "loop/autoclear") + ", backing file " +
                          SysValue(device_, "loop/backing_file"));

        const TreeComparison files = CompareRockRidge(expected_, Shown());
        std::string problems;
        for (const TreeProblem& problem : files.problems)
            problems += problem.group + ": " + problem.text + "; ";
        report_.Check(prefix_ + "files", files.problems.empty() && !files.groups.empty(),
                      std::to_string(files.groups.size()) + " top-level names through " + point_ +
                          (problems.empty() ? "" : ": " + problems));
        return true;
    }

    void AttachAgain() {
        ::symlink(kVirtualDriveImage, link_.c_str());
        for (const std::string& path : {image_, link_}) {
            const DriveResult result = vdrive::MountIso(&service_, path);
            const std::string text = "Die ISO '" + path + "' ist breits als virtuelles Laufwerk '" +
                                     point_ + "' geladen!";
            report_.Check(prefix_ + "again",
                          Shows(result, DriveOutcome::AlreadyAttached,
                                {{text, "Mount ISO", MessageIcon::Exclamation}}) &&
                              result.device == device_ && Attachments() == 1,
                          Describe(result));
        }
    }

    // A file open on the volume keeps it: the drive stays attached and mounted.
    void Busy() {
        std::string file;
        for (const TreeEntry& entry : expected_) {
            if (entry.kind == 'F') {
                file = Shown() + "/" + entry.path;
                break;
            }
        }
        const int fd = ::open(file.c_str(), O_RDONLY);
        const DriveResult result = vdrive::UnmountIso(&service_, image_);
        const std::string text = "Die ISO '" + image_ + "' konnte nicht vom virtuellem Laufwerk '" +
                                 point_ + "' entfernt werden!";
        report_.Check(prefix_ + "busy",
                      fd >= 0 &&
                          Shows(result, DriveOutcome::DetachFailed,
                                {{text, "Unmount ISO", MessageIcon::None}}) &&
                          Attachments() == 1 && Mounted(),
                      Describe(result) + " while " + file + " is open");
        if (fd >= 0)
            ::close(fd);
    }

    void Detach() {
        const DriveResult result = vdrive::UnmountIso(&service_, image_);
        const std::string text =
            "Die ISO '" + image_ + "' wurde als virtuelles Laufwerk '" + point_ + "' entfernt.";
        report_.Check(
            prefix_ + "unmount",
            Shows(result, DriveOutcome::Detached, {{text, "Unmount ISO", MessageIcon::None}}) &&
                Attachments() == 0 && !Mounted() &&
                SysValue(device_, "loop/backing_file").empty() &&
                !vdrive::IsMountPoint(vdrive::ReadMountTable(), Shown()),
            Describe(result));

        const DriveResult again = vdrive::UnmountIso(&service_, image_);
        const std::string none =
            "Die ISO '" + image_ + "' ist in keinem virtuellen Laufwerk geladen!";
        report_.Check(
            prefix_ + "unmount-again",
            Shows(again, DriveOutcome::NotAttached, {{none, "Unmount ISO", MessageIcon::None}}),
            Describe(again));
    }

    // With the mount point taken the image is attached all the same, without a mount point, and
    // the message names no drive; detaching it works as ever.
    void TakenCase(const std::string& name) {
        const DriveResult result = vdrive::MountIso(&service_, image_);
        const std::string text =
            "Die ISO '" + image_ + "' wurde als virtuelles Laufwerk '' geladen.";
        const std::vector<std::string> points = service_.MountPointsOf(result.device);
        report_.Check(prefix_ + name,
                      Shows(result, DriveOutcome::Attached,
                            {{"NIcht OK", "", MessageIcon::Exclamation},
                             {text, "Mount ISO", MessageIcon::Information}}) &&
                          !result.mountPointOk && result.drive.empty() && Attachments() == 1 &&
                          points.empty(),
                      Describe(result));
        const DriveResult detached = vdrive::UnmountIso(&service_, image_);
        const std::string gone =
            "Die ISO '" + image_ + "' wurde als virtuelles Laufwerk '' entfernt.";
        report_.Check(
            prefix_ + name + ".unmount",
            Shows(detached, DriveOutcome::Detached, {{gone, "Unmount ISO", MessageIcon::None}}) &&
                Attachments() == 0,
            Describe(detached));
    }

    void TakenByMount() {
        std::error_code ec;
        std::filesystem::create_directories(point_, ec);
        const bool mounted = ::mount("tmpfs", point_.c_str(), "tmpfs", 0, "size=64k") == 0;
        if (!report_.Check(prefix_ + "taken-by-mount.setup", mounted,
                           "tmpfs on " + point_ + (mounted ? "" : ": " + Error(errno))))
            return;
        TakenCase("taken-by-mount");
        ::umount(point_.c_str());
        ::rmdir(point_.c_str());
    }

    void TakenByFile() {
        const std::string file = point_ + "/fremd.txt";
        std::error_code ec;
        std::filesystem::create_directories(point_, ec);
        std::ofstream(file) << "belegt\n";
        TakenCase("taken-by-file");
        ::unlink(file.c_str());
        ::rmdir(point_.c_str());
    }

    Report& report_;
    vdrive::IVirtualDriveService& service_;
    const std::string prefix_;
    const std::string point_;
    const std::string image_;
    const std::string listing_;
    const std::string link_;
    std::string realImage_;
    std::string device_;
    std::vector<TreeEntry> expected_;
};

}  // namespace

void CheckVirtualDrives(Report& report, const std::string& data,
                        vdrive::IVirtualDriveService& service, const std::string& prefix) {
    report.Info(prefix + ".service", service.Name() + ", mount point " + service.FixedMountPoint());
    Steps(report, data, service, prefix).Run();
}

}  // namespace plattmix::testbed
