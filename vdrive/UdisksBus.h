// The few udisks2 calls the virtual drives need, over D-Bus: the block devices udisks knows, a
// read-only loop device for an open image, and mounting, unmounting and deleting it.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace plattmix::vdrive {

// One block device as udisks shows it.
struct UdisksBlock {
    std::string object;       // "/org/freedesktop/UDisks2/block_devices/loop0"
    std::string device;       // "/dev/loop0"
    std::string backingFile;  // a loop device's image, else empty
    bool hasFilesystem = false;
    std::vector<std::string> mountPoints;
};

// A call's answer: the returned text (an object path or a mount path) or the D-Bus error.
struct UdisksReply {
    bool ok = false;
    std::string value;
    std::string error;
};

class UdisksBus {
  public:
    // The system bus (DBUS_SYSTEM_BUS_ADDRESS when set), or the bus at address when it is not
    // empty. Null when no connection can be made; why tells the reason.
    static std::unique_ptr<UdisksBus> Connect(const std::string& address, std::string& why);
    ~UdisksBus();
    UdisksBus(const UdisksBus&) = delete;
    UdisksBus& operator=(const UdisksBus&) = delete;

    // Whether udisks answers on the bus (started by the bus first when it is not running).
    bool Answers(std::string& why);

    // Every block device udisks knows. Empty with why set when the call fails.
    std::vector<UdisksBlock> Blocks(std::string& why);

    // Manager.LoopSetup, read-only and without a partition scan: the new block's object path.
    UdisksReply LoopSetup(int fd);
    // Filesystem.Mount, read-only: the mount path.
    UdisksReply Mount(const std::string& object);
    UdisksReply Unmount(const std::string& object);
    // Loop.Delete: the loop device goes away.
    UdisksReply Delete(const std::string& object);

  private:
    struct Connection;
    explicit UdisksBus(std::unique_ptr<Connection> connection);
    std::unique_ptr<Connection> connection_;
};

}  // namespace plattmix::vdrive
