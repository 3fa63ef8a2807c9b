#include "MountChecks.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
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

// The outcome and the messages with their titles and icons, by number.
std::string Describe(const DriveResult& result) {
    std::string text = "outcome " + std::to_string(static_cast<int>(result.outcome));
    for (const DriveMessage& m : result.messages)
        text +=
            " [" + m.title + "|" + std::to_string(static_cast<int>(m.icon)) + "|" + m.text + "]";
    if (!result.detail.empty())
        text += " (" + result.detail + ")";
    return text;
}

// A value of the loop device's sysfs folder ("ro", "loop/autoclear"), without its line feed.
std::string SysValue(const std::string& device, const std::string& name) {
    std::ifstream in("/sys/block/" + device.substr(device.rfind('/') + 1) + "/" + name);
    std::string value;
    std::getline(in, value);
    return value;
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
        expected_ = ReadTreeListing(report_, prefix_ + "listing", listing_);
        if (expected_.empty())
            return;
        std::error_code ec;
        realImage_ = std::filesystem::canonical(image_, ec).string();

        NoImage();
        if (!Attach())
            return;
        AttachAgain();
        Busy();
        Detach();
        Taken();
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

    // One call of the service: its outcome and messages (text, title, icon), and the state after.
    bool Expect(const std::string& step, const DriveResult& result, DriveOutcome outcome,
                const std::vector<DriveMessage>& messages, bool state,
                const std::string& more = "") {
        const auto same = [](const DriveMessage& a, const DriveMessage& b) {
            return a.text == b.text && a.title == b.title && a.icon == b.icon;
        };
        return report_.Check(prefix_ + step,
                             result.outcome == outcome && state &&
                                 std::ranges::equal(result.messages, messages, same),
                             Describe(result) + more);
    }

    void NoImage() {
        for (const std::string& path : {listing_, image_ + ".fehlt"}) {
            const DriveResult result = vdrive::MountIso(&service_, path);
            const std::string text =
                "Es konnte kein Handle von der ISO '" + path + "' erstellt werden!";
            Expect("no-image", result, DriveOutcome::NoHandle,
                   {{text, "Mount ISO", MessageIcon::Critical}},
                   vdrive::LoopDevicesBackedBy(path).empty());
        }
    }

    bool Attach() {
        const DriveResult result = vdrive::MountIso(&service_, image_);
        device_ = result.device;
        const std::string text =
            "Die ISO '" + image_ + "' wurde als virtuelles Laufwerk '" + point_ + "' geladen.";
        if (!Expect(
                "mount", result, DriveOutcome::Attached,
                {{"OK", "", MessageIcon::None}, {text, "Mount ISO", MessageIcon::Information}},
                result.mountPointOk && result.drive == point_ && Attachments() == 1 && Mounted(),
                " on " + device_))
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
                      "ro " + SysValue(device_, "ro") + ", new file: " + std::strerror(fileError) +
                          ", writing the device: " + std::strerror(nodeError));
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
            Expect("again", result, DriveOutcome::AlreadyAttached,
                   {{text, "Mount ISO", MessageIcon::Exclamation}},
                   result.device == device_ && Attachments() == 1);
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
        Expect("busy", result, DriveOutcome::DetachFailed,
               {{text, "Unmount ISO", MessageIcon::None}},
               fd >= 0 && Attachments() == 1 && Mounted(), " while " + file + " is open");
        if (fd >= 0)
            ::close(fd);
    }

    void Detach() {
        const DriveResult result = vdrive::UnmountIso(&service_, image_);
        const std::string text =
            "Die ISO '" + image_ + "' wurde als virtuelles Laufwerk '" + point_ + "' entfernt.";
        Expect("unmount", result, DriveOutcome::Detached,
               {{text, "Unmount ISO", MessageIcon::None}},
               Attachments() == 0 && !Mounted() && SysValue(device_, "loop/backing_file").empty() &&
                   !vdrive::IsMountPoint(vdrive::ReadMountTable(), Shown()));

        const DriveResult again = vdrive::UnmountIso(&service_, image_);
        const std::string none =
            "Die ISO '" + image_ + "' ist in keinem virtuellen Laufwerk geladen!";
        Expect("unmount-again", again, DriveOutcome::NotAttached,
               {{none, "Unmount ISO", MessageIcon::None}}, true);
    }

    // With the mount point taken the image is attached all the same, without a mount point, and
    // the message names no drive; detaching it works as ever.
    void TakenCase(const std::string& name) {
        const DriveResult result = vdrive::MountIso(&service_, image_);
        const std::string text =
            "Die ISO '" + image_ + "' wurde als virtuelles Laufwerk '' geladen.";
        const std::vector<std::string> points = service_.MountPointsOf(result.device);
        Expect(
            name, result, DriveOutcome::Attached,
            {{"NIcht OK", "", MessageIcon::Exclamation},
             {text, "Mount ISO", MessageIcon::Information}},
            !result.mountPointOk && result.drive.empty() && Attachments() == 1 && points.empty());
        const DriveResult detached = vdrive::UnmountIso(&service_, image_);
        const std::string gone =
            "Die ISO '" + image_ + "' wurde als virtuelles Laufwerk '' entfernt.";
        Expect(name + ".unmount", detached, DriveOutcome::Detached,
               {{gone, "Unmount ISO", MessageIcon::None}}, Attachments() == 0);
    }

    // The mount point taken by a mount, then by a file in it.
    void Taken() {
        std::error_code ec;
        std::filesystem::create_directories(point_, ec);
        const bool mounted = ::mount("tmpfs", point_.c_str(), "tmpfs", 0, "size=64k") == 0;
        if (report_.Check(
                prefix_ + "taken-by-mount.setup", mounted,
                "tmpfs on " + point_ + (mounted ? "" : std::string(": ") + std::strerror(errno)))) {
            TakenCase("taken-by-mount");
            ::umount(point_.c_str());
        }
        std::ofstream(point_ + "/fremd.txt") << "belegt\n";
        TakenCase("taken-by-file");
        std::filesystem::remove_all(point_, ec);
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
