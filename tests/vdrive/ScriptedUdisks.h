// A scripted stand-in for udisksd on a private bus, for what the real udisksd in the drive test
// bed will not do: refuse. LoopSetup answers as scripted, Mount is always refused; the rest of
// what the virtual drive service calls (GetManagedObjects with Block, Loop and Filesystem,
// Loop.Delete) is answered over the real D-Bus protocol for its one loop device, bound to a file
// or not.
#pragma once

#include <systemd/sd-bus.h>

#include <filesystem>
#include <mutex>
#include <string>
#include <thread>

namespace plattmix::test {

class ScriptedUdisks {
  public:
    explicit ScriptedUdisks(const std::string& address) {
        if (sd_bus_new(&bus_) < 0 || sd_bus_set_address(bus_, address.c_str()) < 0 ||
            sd_bus_set_bus_client(bus_, 1) < 0 || sd_bus_start(bus_) < 0 ||
            sd_bus_add_object_manager(bus_, nullptr, "/org/freedesktop/UDisks2") < 0 ||
            sd_bus_add_object_vtable(bus_, nullptr, "/org/freedesktop/UDisks2/Manager",
                                     "org.freedesktop.UDisks2.Manager", kManagerTable, this) < 0 ||
            sd_bus_add_object_vtable(bus_, nullptr, kLoop, "org.freedesktop.UDisks2.Block",
                                     kBlockTable, this) < 0 ||
            sd_bus_add_object_vtable(bus_, nullptr, kLoop, "org.freedesktop.UDisks2.Loop",
                                     kLoopTable, this) < 0 ||
            sd_bus_add_object_vtable(bus_, nullptr, kLoop, "org.freedesktop.UDisks2.Filesystem",
                                     kFilesystemTable, this) < 0 ||
            sd_bus_request_name(bus_, "org.freedesktop.UDisks2", 0) < 0) {
            error_ = "no udisks objects on " + address;
            return;
        }
        worker_ = std::jthread([this](std::stop_token stop) {
            while (!stop.stop_requested()) {
                while (sd_bus_process(bus_, nullptr) > 0) {
                }
                sd_bus_wait(bus_, 10000);  // microseconds
            }
        });
    }
    ~ScriptedUdisks() {
        if (worker_.joinable()) {
            worker_.request_stop();
            worker_.join();
        }
        sd_bus_flush_close_unref(bus_);
    }
    ScriptedUdisks(const ScriptedUdisks&) = delete;
    ScriptedUdisks& operator=(const ScriptedUdisks&) = delete;

    bool ok() const { return error_.empty(); }
    const std::string& error() const { return error_; }

    // The next LoopSetup calls answer with this D-Bus error name; empty: with a loop device.
    void RefuseLoopSetup(const std::string& error) {
        std::lock_guard lock(mutex_);
        loopSetupError_ = error;
    }
    // The file the loop device is bound to; empty when it is free.
    std::string Backing() const {
        std::lock_guard lock(mutex_);
        return backing_;
    }

  private:
    static constexpr const char* kLoop = "/org/freedesktop/UDisks2/block_devices/loop0";

    static ScriptedUdisks& Self(void* userdata) { return *static_cast<ScriptedUdisks*>(userdata); }

    static int AppendBytes(sd_bus_message* reply, const std::string& text) {
        return sd_bus_message_append_array(reply, 'y', text.c_str(), text.size() + 1);
    }
    static int GetDevice(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply,
                         void*, sd_bus_error*) {
        return AppendBytes(reply, "/dev/loop0");
    }
    static int GetBackingFile(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply,
                              void* userdata, sd_bus_error*) {
        return AppendBytes(reply, Self(userdata).Backing());
    }
    static int GetMountPoints(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply,
                              void*, sd_bus_error*) {
        return sd_bus_message_append(reply, "aay", 0);
    }

    // The options (read-only, no partition scan) are the real udisksd's to check.
    static int LoopSetup(sd_bus_message* m, void* userdata, sd_bus_error* error) {
        ScriptedUdisks& self = Self(userdata);
        int fd = -1;
        if (const int r = sd_bus_message_read(m, "h", &fd); r < 0)
            return r;
        std::lock_guard lock(self.mutex_);
        if (!self.loopSetupError_.empty())
            return sd_bus_error_set(error, self.loopSetupError_.c_str(), "scripted");
        // The kernel names the backing file by the open file's path.
        std::error_code ec;
        self.backing_ =
            std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd), ec).string();
        return sd_bus_reply_method_return(m, "o", kLoop);
    }
    static int Mount(sd_bus_message*, void*, sd_bus_error* error) {
        return sd_bus_error_set(error, "org.freedesktop.UDisks2.Error.Failed", "scripted");
    }
    static int Delete(sd_bus_message* m, void* userdata, sd_bus_error*) {
        std::lock_guard lock(Self(userdata).mutex_);
        Self(userdata).backing_.clear();
        return sd_bus_reply_method_return(m, "");
    }

    static constexpr uint64_t kAnyone = SD_BUS_VTABLE_UNPRIVILEGED;
    static constexpr sd_bus_vtable kManagerTable[] = {
        SD_BUS_VTABLE_START(0), SD_BUS_METHOD("LoopSetup", "ha{sv}", "o", LoopSetup, kAnyone),
        SD_BUS_VTABLE_END};
    static constexpr sd_bus_vtable kBlockTable[] = {
        SD_BUS_VTABLE_START(0), SD_BUS_PROPERTY("Device", "ay", GetDevice, 0, 0),
        SD_BUS_VTABLE_END};
    static constexpr sd_bus_vtable kLoopTable[] = {
        SD_BUS_VTABLE_START(0), SD_BUS_PROPERTY("BackingFile", "ay", GetBackingFile, 0, 0),
        SD_BUS_METHOD("Delete", "a{sv}", "", Delete, kAnyone), SD_BUS_VTABLE_END};
    static constexpr sd_bus_vtable kFilesystemTable[] = {
        SD_BUS_VTABLE_START(0), SD_BUS_PROPERTY("MountPoints", "aay", GetMountPoints, 0, 0),
        SD_BUS_METHOD("Mount", "a{sv}", "s", Mount, kAnyone), SD_BUS_VTABLE_END};

    sd_bus* bus_ = nullptr;
    std::jthread worker_;
    std::string error_;
    mutable std::mutex mutex_;
    std::string loopSetupError_;
    std::string backing_;
};

}  // namespace plattmix::test
