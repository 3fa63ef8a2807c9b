// A scripted stand-in for udisksd on a private bus, for what the real udisksd in the drive test
// bed will not do: refuse. LoopSetup answers as scripted, Mount is always refused; the rest of
// what the virtual drives call (GetManagedObjects with Block, Loop and Filesystem, Loop.Delete,
// the Manager's Version) is answered over the real D-Bus protocol, loop devices being records.
#pragma once

#include <systemd/sd-bus.h>

#include <cstring>
#include <filesystem>
#include <map>
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
            sd_bus_add_fallback_vtable(bus_, nullptr, kBlocks, "org.freedesktop.UDisks2.Block",
                                       kBlockTable, FindLoop, this) < 0 ||
            sd_bus_add_fallback_vtable(bus_, nullptr, kBlocks, "org.freedesktop.UDisks2.Loop",
                                       kLoopTable, FindLoop, this) < 0 ||
            sd_bus_add_fallback_vtable(bus_, nullptr, kBlocks, "org.freedesktop.UDisks2.Filesystem",
                                       kFilesystemTable, FindLoop, this) < 0 ||
            sd_bus_add_node_enumerator(bus_, nullptr, kBlocks, ListLoops, this) < 0 ||
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
    // The backing files of the loop devices set up, by number.
    std::map<int, std::string> Loops() const {
        std::lock_guard lock(mutex_);
        return loops_;
    }

  private:
    static constexpr const char* kBlocks = "/org/freedesktop/UDisks2/block_devices";

    // The loop number of an object path "…/loopN", or -1.
    static int LoopOf(const char* path) {
        const std::string prefix = std::string(kBlocks) + "/loop";
        const std::string text = path;
        if (!text.starts_with(prefix) || text.size() == prefix.size() ||
            text.find_first_not_of("0123456789", prefix.size()) != std::string::npos)
            return -1;
        return std::stoi(text.substr(prefix.size()));
    }
    static ScriptedUdisks& Self(void* userdata) { return *static_cast<ScriptedUdisks*>(userdata); }

    static int FindLoop(sd_bus*, const char* path, const char*, void* userdata, void** found,
                        sd_bus_error*) {
        std::lock_guard lock(Self(userdata).mutex_);
        *found = userdata;
        return Self(userdata).loops_.contains(LoopOf(path)) ? 1 : 0;
    }
    static int ListLoops(sd_bus*, const char*, void* userdata, char*** nodes, sd_bus_error*) {
        std::lock_guard lock(Self(userdata).mutex_);
        const auto& loops = Self(userdata).loops_;
        char** list = static_cast<char**>(calloc(loops.size() + 1, sizeof(char*)));
        size_t i = 0;
        for (const auto& entry : loops)
            list[i++] =
                strdup((std::string(kBlocks) + "/loop" + std::to_string(entry.first)).c_str());
        *nodes = list;
        return 0;
    }

    static int AppendBytes(sd_bus_message* reply, const std::string& text) {
        return sd_bus_message_append_array(reply, 'y', text.c_str(), text.size() + 1);
    }
    static int GetVersion(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply,
                          void*, sd_bus_error*) {
        return sd_bus_message_append(reply, "s", "2.9.4-scripted");
    }
    static int GetDevice(sd_bus*, const char* path, const char*, const char*, sd_bus_message* reply,
                         void*, sd_bus_error*) {
        return AppendBytes(reply, "/dev/loop" + std::to_string(LoopOf(path)));
    }
    static int GetBackingFile(sd_bus*, const char* path, const char*, const char*,
                              sd_bus_message* reply, void* userdata, sd_bus_error*) {
        std::lock_guard lock(Self(userdata).mutex_);
        return AppendBytes(reply, Self(userdata).loops_.at(LoopOf(path)));
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
        const auto file = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd), ec);
        const int number = self.next_++;
        self.loops_[number] = file.string();
        const std::string object = std::string(kBlocks) + "/loop" + std::to_string(number);
        return sd_bus_reply_method_return(m, "o", object.c_str());
    }
    static int Mount(sd_bus_message*, void*, sd_bus_error* error) {
        return sd_bus_error_set(error, "org.freedesktop.UDisks2.Error.Failed", "scripted");
    }
    static int Delete(sd_bus_message* m, void* userdata, sd_bus_error*) {
        std::lock_guard lock(Self(userdata).mutex_);
        Self(userdata).loops_.erase(LoopOf(sd_bus_message_get_path(m)));
        return sd_bus_reply_method_return(m, "");
    }

    static constexpr uint64_t kAnyone = SD_BUS_VTABLE_UNPRIVILEGED;
    static constexpr sd_bus_vtable kManagerTable[] = {
        SD_BUS_VTABLE_START(0), SD_BUS_PROPERTY("Version", "s", GetVersion, 0, 0),
        SD_BUS_METHOD("LoopSetup", "ha{sv}", "o", LoopSetup, kAnyone), SD_BUS_VTABLE_END};
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
    std::map<int, std::string> loops_;
    int next_ = 0;
};

}  // namespace plattmix::test
