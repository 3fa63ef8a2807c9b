#include "LoopDriveService.h"

#include <fcntl.h>
#include <linux/loop.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "LoopDevices.h"
#include "MountTable.h"

namespace plattmix::vdrive {

namespace {

namespace fs = std::filesystem;

// A file descriptor that closes itself.
class Fd {
  public:
    explicit Fd(int fd) : fd_(fd) {}
    ~Fd() {
        if (fd_ >= 0)
            close(fd_);
    }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    int get() const { return fd_; }
    bool ok() const { return fd_ >= 0; }

  private:
    int fd_;
};

std::string Failure(const std::string& what) {
    return what + ": " + std::strerror(errno);
}

// Another process may take the free device between asking and binding.
constexpr int kBindAttempts = 8;

loop_info64 ReadOnlyInfo(const ImageFile& image) {
    loop_info64 info{};
    info.lo_flags = LO_FLAGS_READ_ONLY;
    const std::string& name = image.realPath();
    std::memcpy(info.lo_file_name, name.data(), std::min<size_t>(name.size(), LO_NAME_SIZE - 1));
    return info;
}

// Binds the image to the loop device; errno tells why not. Kernels before 5.8 lack
// LOOP_CONFIGURE and take the two older requests.
bool Bind(int loop, const ImageFile& image) {
    loop_config config{};
    config.fd = static_cast<__u32>(image.fd());
    config.info = ReadOnlyInfo(image);
    if (ioctl(loop, LOOP_CONFIGURE, &config) == 0)
        return true;
    if (errno != EINVAL && errno != ENOTTY)
        return false;
    if (ioctl(loop, LOOP_SET_FD, image.fd()) != 0)
        return false;
    loop_info64 info = ReadOnlyInfo(image);
    if (ioctl(loop, LOOP_SET_STATUS64, &info) == 0)
        return true;
    const int saved = errno;
    ioctl(loop, LOOP_CLR_FD, 0);
    errno = saved;
    return false;
}

}  // namespace

LoopDriveService::LoopDriveService(LoopPaths paths) : paths_(std::move(paths)) {}

bool LoopDriveService::Usable() {
    return geteuid() == 0;
}

std::vector<std::string> LoopDriveService::DevicesOf(const ImageFile& image) {
    return LoopDevicesBackedBy(image.realPath(), paths_.sysBlock);
}

AttachStep LoopDriveService::Attach(const ImageFile& image) {
    const Fd control(open(paths_.loopControl.c_str(), O_RDWR | O_CLOEXEC));
    if (!control.ok())
        return {"", Failure(paths_.loopControl)};
    std::string detail;
    for (int attempt = 0; attempt < kBindAttempts; ++attempt) {
        const int number = ioctl(control.get(), LOOP_CTL_GET_FREE);
        if (number < 0)
            return {"", Failure("LOOP_CTL_GET_FREE")};
        const std::string device = "/dev/loop" + std::to_string(number);
        const Fd loop(open(device.c_str(), O_RDWR | O_CLOEXEC));
        if (!loop.ok())
            return {"", Failure(device)};
        if (Bind(loop.get(), image))
            return {device, ""};
        detail = Failure(device);
        if (errno != EBUSY)
            break;
    }
    return {"", detail};
}

MountPointStep LoopDriveService::MountAtFixedPoint(const std::string& device) {
    const std::string& point = paths_.mountPoint;
    if (IsMountPoint(ReadMountTable(paths_.mountInfo), point))
        return {MountPointOutcome::Failed, point + ": something is mounted there"};
    std::error_code ec;
    const auto status = fs::symlink_status(point, ec);
    if (fs::exists(status)) {
        if (!fs::is_directory(status) || !fs::is_empty(point, ec) || ec)
            return {MountPointOutcome::Failed, point + ": taken (not an empty folder)"};
    } else if (fs::create_directories(point, ec); ec) {
        return {MountPointOutcome::Failed, point + ": " + ec.message()};
    }
    constexpr unsigned long kFlags = MS_RDONLY | MS_NOSUID | MS_NODEV;
    if (mount(device.c_str(), point.c_str(), "iso9660", kFlags, nullptr) == 0)
        return {MountPointOutcome::Mounted, ""};
    const std::string detail = Failure("mount " + device + " " + point);
    // A UDF-only image, where the kernel has that file system.
    if (mount(device.c_str(), point.c_str(), "udf", kFlags, nullptr) == 0)
        return {MountPointOutcome::Mounted, ""};
    return {MountPointOutcome::Failed, detail};
}

std::vector<std::string> LoopDriveService::MountPointsOf(const std::string& device) {
    struct stat info {};
    if (stat(device.c_str(), &info) != 0 || !S_ISBLK(info.st_mode))
        return {};
    return MountPointsOfDevice(ReadMountTable(paths_.mountInfo), info.st_rdev);
}

ServiceStep LoopDriveService::Detach(const std::string& device) {
    std::vector<std::string> points = MountPointsOf(device);
    std::ranges::reverse(points);
    for (const std::string& point : points) {
        if (umount2(point.c_str(), 0) != 0)
            return {false, Failure("umount " + point)};
    }
    const Fd loop(open(device.c_str(), O_RDONLY | O_CLOEXEC));
    if (!loop.ok())
        return {false, Failure(device)};
    if (ioctl(loop.get(), LOOP_CLR_FD, 0) != 0)
        return {false, Failure("LOOP_CLR_FD " + device)};
    return {true, ""};
}

}  // namespace plattmix::vdrive
