// A scripted stand-in for udisksd on a private bus, for what the real udisksd in the drive test
// bed will not do: refuse LoopSetup or Mount. Otherwise it answers the calls the virtual drives
// make (Manager.LoopSetup and its Version, GetManagedObjects with Block, Loop and Filesystem,
// Filesystem.Mount and Unmount, Loop.Delete) over the real D-Bus protocol; loop devices are
// records, a mount is a folder below its media folder.
#pragma once

#include <systemd/sd-bus.h>

#include <cstring>
#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace plattmix::test {

class ScriptedUdisks {
  public:
    struct Loop {
        std::string backingFile;
        std::vector<std::string> mountPoints;
    };

    ScriptedUdisks(const std::string& address, const std::filesystem::path& media) : media_(media) {
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

    // The next calls answer with this D-Bus error name; empty: as udisks does.
    void RefuseLoopSetup(const std::string& error) { Set(loopSetupError_, error); }
    void RefuseMount(const std::string& error) { Set(mountError_, error); }

    std::map<int, Loop> Loops() const {
        std::lock_guard lock(mutex_);
        return loops_;
    }

  private:
    static constexpr const char* kBlocks = "/org/freedesktop/UDisks2/block_devices";

    void Set(std::string& field, const std::string& value) {
        std::lock_guard lock(mutex_);
        field = value;
    }

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
    // The loop of a call's object; called with mutex_ held.
    Loop* Find(const char* path) {
        const auto it = loops_.find(LoopOf(path));
        return it == loops_.end() ? nullptr : &it->second;
    }

    static int FindLoop(sd_bus*, const char* path, const char*, void* userdata, void** found,
                        sd_bus_error*) {
        std::lock_guard lock(Self(userdata).mutex_);
        *found = userdata;
        return Self(userdata).Find(path) != nullptr ? 1 : 0;
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
        return AppendBytes(reply, Self(userdata).Find(path)->backingFile);
    }
    static int GetMountPoints(sd_bus*, const char* path, const char*, const char*,
                              sd_bus_message* reply, void* userdata, sd_bus_error*) {
        std::lock_guard lock(Self(userdata).mutex_);
        int r = sd_bus_message_open_container(reply, 'a', "ay");
        for (const std::string& point : Self(userdata).Find(path)->mountPoints)
            r = r < 0 ? r : AppendBytes(reply, point);
        return r < 0 ? r : sd_bus_message_close_container(reply);
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
        self.loops_[number] = {file.string(), {}};
        const std::string object = std::string(kBlocks) + "/loop" + std::to_string(number);
        return sd_bus_reply_method_return(m, "o", object.c_str());
    }
    static int Mount(sd_bus_message* m, void* userdata, sd_bus_error* error) {
        ScriptedUdisks& self = Self(userdata);
        std::lock_guard lock(self.mutex_);
        if (!self.mountError_.empty())
            return sd_bus_error_set(error, self.mountError_.c_str(), "scripted");
        const char* path = sd_bus_message_get_path(m);
        const std::filesystem::path point = self.media_ / ("loop" + std::to_string(LoopOf(path)));
        std::filesystem::create_directories(point);
        self.Find(path)->mountPoints.push_back(point.string());
        return sd_bus_reply_method_return(m, "s", point.c_str());
    }
    static int Unmount(sd_bus_message* m, void* userdata, sd_bus_error*) {
        std::lock_guard lock(Self(userdata).mutex_);
        Self(userdata).Find(sd_bus_message_get_path(m))->mountPoints.clear();
        return sd_bus_reply_method_return(m, "");
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
        SD_BUS_METHOD("Mount", "a{sv}", "s", Mount, kAnyone),
        SD_BUS_METHOD("Unmount", "a{sv}", "", Unmount, kAnyone), SD_BUS_VTABLE_END};

    std::filesystem::path media_;
    sd_bus* bus_ = nullptr;
    std::jthread worker_;
    std::string error_;
    mutable std::mutex mutex_;
    std::string loopSetupError_, mountError_;
    std::map<int, Loop> loops_;
    int next_ = 0;
};

}  // namespace plattmix::test
