// A scripted stand-in for udisksd on a private bus: it owns the name org.freedesktop.UDisks2 and
// answers the calls the virtual drives make (Manager.LoopSetup and its Version, GetManagedObjects
// with Block, Loop and Filesystem, Filesystem.Mount and Unmount, Loop.Delete) over the real D-Bus
// protocol. Loop devices are records; a mount is a folder it makes below its media folder, as
// udisks makes /media/USER/LABEL. Tests script refusals and read what was asked.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

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
        bool readOnly = false;
        bool noPartScan = false;
        bool hasFilesystem = true;
        std::vector<std::string> mountPoints;
        std::string mountOptions;  // of the last Mount call
    };

    // What the next calls meet: an error name to answer with, or empty for success.
    struct Script {
        std::string loopSetupError;
        std::string mountError;
        std::string unmountError;
        bool newLoopsHaveFilesystem = true;
    };

    ScriptedUdisks(const std::string& address, const std::filesystem::path& media) : media_(media) {
        std::filesystem::create_directories(media_);
        if (sd_bus_new(&bus_) < 0 || sd_bus_set_address(bus_, address.c_str()) < 0 ||
            sd_bus_set_bus_client(bus_, 1) < 0 || sd_bus_start(bus_) < 0) {
            error_ = "no connection to " + address;
            return;
        }
        if (sd_bus_add_object_manager(bus_, nullptr, kRoot) < 0 ||
            sd_bus_add_object_vtable(bus_, nullptr, "/org/freedesktop/UDisks2/Manager",
                                     "org.freedesktop.UDisks2.Manager", kManagerTable, this) < 0 ||
            sd_bus_add_fallback_vtable(bus_, nullptr, kBlocks, "org.freedesktop.UDisks2.Block",
                                       kBlockTable, FindLoop, this) < 0 ||
            sd_bus_add_fallback_vtable(bus_, nullptr, kBlocks, "org.freedesktop.UDisks2.Loop",
                                       kLoopTable, FindLoop, this) < 0 ||
            sd_bus_add_fallback_vtable(bus_, nullptr, kBlocks, "org.freedesktop.UDisks2.Filesystem",
                                       kFilesystemTable, FindFilesystem, this) < 0 ||
            sd_bus_add_node_enumerator(bus_, nullptr, kBlocks, ListLoops, this) < 0 ||
            sd_bus_request_name(bus_, "org.freedesktop.UDisks2", 0) < 0) {
            error_ = "the udisks objects cannot be offered";
            return;
        }
        wake_ = eventfd(0, EFD_CLOEXEC);
        worker_ = std::thread([this] { Serve(); });
    }

    ~ScriptedUdisks() {
        if (worker_.joinable()) {
            const uint64_t one = 1;
            [[maybe_unused]] const ssize_t n = write(wake_, &one, sizeof one);
            worker_.join();
        }
        if (wake_ >= 0)
            close(wake_);
        sd_bus_flush_close_unref(bus_);
    }
    ScriptedUdisks(const ScriptedUdisks&) = delete;
    ScriptedUdisks& operator=(const ScriptedUdisks&) = delete;

    bool ok() const { return error_.empty(); }
    const std::string& error() const { return error_; }

    // Scripts the next calls: each answers with the error name given, new loop devices show no
    // file system; Script{} ends all of it.
    void SetScript(const Script& script) {
        std::lock_guard lock(mutex_);
        script_ = script;
    }
    void RefuseLoopSetup(const std::string& error) { Change(&Script::loopSetupError, error); }
    void RefuseMount(const std::string& error) { Change(&Script::mountError, error); }
    void RefuseUnmount(const std::string& error) { Change(&Script::unmountError, error); }
    void NewLoopsWithoutFilesystem() { Change(&Script::newLoopsHaveFilesystem, false); }

    // A loop device set up (and perhaps mounted) by someone else; its node, /dev/loopN.
    std::string AddLoop(const std::string& backingFile, const std::vector<std::string>& mounts) {
        std::lock_guard lock(mutex_);
        Loop loop;
        loop.backingFile = backingFile;
        loop.mountPoints = mounts;
        loops_[next_] = loop;
        return "/dev/loop" + std::to_string(next_++);
    }
    std::map<int, Loop> Loops() const {
        std::lock_guard lock(mutex_);
        return loops_;
    }
    // The calls received, "LoopSetup", "Mount loop0", … in order.
    std::vector<std::string> Calls() const {
        std::lock_guard lock(mutex_);
        return calls_;
    }
    // Makes a folder below the media folder, as a mount by someone else.
    std::string MediaFolder(const std::string& name) const {
        const std::filesystem::path folder = media_ / name;
        std::filesystem::create_directories(folder);
        return folder.string();
    }

  private:
    template <typename T>
    void Change(T Script::*field, const T& value) {
        std::lock_guard lock(mutex_);
        script_.*field = value;
    }

    static constexpr const char* kRoot = "/org/freedesktop/UDisks2";
    static constexpr const char* kBlocks = "/org/freedesktop/UDisks2/block_devices";

    void Serve() {
        for (;;) {
            while (sd_bus_process(bus_, nullptr) > 0) {
            }
            uint64_t usec = UINT64_MAX;
            sd_bus_get_timeout(bus_, &usec);
            pollfd fds[2] = {{sd_bus_get_fd(bus_), static_cast<short>(sd_bus_get_events(bus_)), 0},
                             {wake_, POLLIN, 0}};
            poll(fds, 2, usec == UINT64_MAX ? -1 : 10);
            if (fds[1].revents != 0)
                return;
        }
    }

    // The loop number of an object path below kBlocks ("…/loop3"), or -1.
    static int LoopOf(const char* path) {
        const std::string prefix = std::string(kBlocks) + "/loop";
        const std::string text = path;
        if (!text.starts_with(prefix) || text.size() == prefix.size())
            return -1;
        const std::string digits = text.substr(prefix.size());
        if (digits.find_first_not_of("0123456789") != std::string::npos)
            return -1;
        return std::stoi(digits);
    }
    Loop* Find(const char* path) {
        const auto it = loops_.find(LoopOf(path));
        return it == loops_.end() ? nullptr : &it->second;
    }
    static ScriptedUdisks* Self(void* userdata) { return static_cast<ScriptedUdisks*>(userdata); }

    static int FindLoop(sd_bus*, const char* path, const char*, void* userdata, void** found,
                        sd_bus_error*) {
        std::lock_guard lock(Self(userdata)->mutex_);
        *found = userdata;
        return Self(userdata)->Find(path) != nullptr ? 1 : 0;
    }
    static int FindFilesystem(sd_bus*, const char* path, const char*, void* userdata, void** found,
                              sd_bus_error*) {
        std::lock_guard lock(Self(userdata)->mutex_);
        *found = userdata;
        const Loop* loop = Self(userdata)->Find(path);
        return loop != nullptr && loop->hasFilesystem ? 1 : 0;
    }
    static int ListLoops(sd_bus*, const char*, void* userdata, char*** nodes, sd_bus_error*) {
        std::lock_guard lock(Self(userdata)->mutex_);
        const auto& loops = Self(userdata)->loops_;
        char** list = static_cast<char**>(calloc(loops.size() + 1, sizeof(char*)));
        size_t i = 0;
        for (const auto& [number, loop] : loops)
            list[i++] = strdup((std::string(kBlocks) + "/loop" + std::to_string(number)).c_str());
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
        std::lock_guard lock(Self(userdata)->mutex_);
        const Loop* loop = Self(userdata)->Find(path);
        return AppendBytes(reply, loop != nullptr ? loop->backingFile : "");
    }
    static int GetMountPoints(sd_bus*, const char* path, const char*, const char*,
                              sd_bus_message* reply, void* userdata, sd_bus_error*) {
        std::lock_guard lock(Self(userdata)->mutex_);
        const Loop* loop = Self(userdata)->Find(path);
        int r = sd_bus_message_open_container(reply, 'a', "ay");
        for (size_t i = 0; r >= 0 && loop != nullptr && i < loop->mountPoints.size(); ++i)
            r = AppendBytes(reply, loop->mountPoints[i]);
        return r < 0 ? r : sd_bus_message_close_container(reply);
    }

    // Reads a{sv}: booleans into flags, strings into texts; others skipped.
    static int ReadOptions(sd_bus_message* m, std::map<std::string, bool>& flags,
                           std::map<std::string, std::string>& texts) {
        int r = sd_bus_message_enter_container(m, 'a', "{sv}");
        while (r >= 0 && (r = sd_bus_message_enter_container(m, 'e', "sv")) > 0) {
            const char* name = nullptr;
            const char* contents = nullptr;
            char type = 0;
            if ((r = sd_bus_message_read(m, "s", &name)) < 0 ||
                (r = sd_bus_message_peek_type(m, &type, &contents)) < 0)
                return r;
            if (std::strcmp(contents, "b") == 0) {
                int value = 0;
                r = sd_bus_message_read(m, "v", "b", &value);
                flags[name] = value != 0;
            } else if (std::strcmp(contents, "s") == 0) {
                const char* value = nullptr;
                r = sd_bus_message_read(m, "v", "s", &value);
                texts[name] = value;
            } else {
                r = sd_bus_message_skip(m, "v");
            }
            if (r < 0 || (r = sd_bus_message_exit_container(m)) < 0)
                return r;
        }
        return r < 0 ? r : sd_bus_message_exit_container(m);
    }

    static int LoopSetup(sd_bus_message* m, void* userdata, sd_bus_error* error) {
        ScriptedUdisks& self = *Self(userdata);
        int fd = -1;
        std::map<std::string, bool> flags;
        std::map<std::string, std::string> texts;
        int r = sd_bus_message_read(m, "h", &fd);
        if (r < 0 || (r = ReadOptions(m, flags, texts)) < 0)
            return r;
        std::lock_guard lock(self.mutex_);
        self.calls_.push_back("LoopSetup");
        if (!self.script_.loopSetupError.empty())
            return sd_bus_error_set(error, self.script_.loopSetupError.c_str(), "scripted");
        // The kernel names the backing file by the open file's path.
        char path[4096] = {};
        const std::string link = "/proc/self/fd/" + std::to_string(fd);
        if (readlink(link.c_str(), path, sizeof path - 1) < 0)
            return sd_bus_error_set(error, "org.freedesktop.UDisks2.Error.Failed", "bad fd");
        Loop loop;
        loop.backingFile = path;
        loop.readOnly = flags["read-only"];
        loop.noPartScan = flags["no-part-scan"];
        loop.hasFilesystem = self.script_.newLoopsHaveFilesystem;
        const int number = self.next_++;
        self.loops_[number] = loop;
        const std::string object = std::string(kBlocks) + "/loop" + std::to_string(number);
        return sd_bus_reply_method_return(m, "o", object.c_str());
    }

    static int Mount(sd_bus_message* m, void* userdata, sd_bus_error* error) {
        ScriptedUdisks& self = *Self(userdata);
        std::map<std::string, bool> flags;
        std::map<std::string, std::string> texts;
        if (const int r = ReadOptions(m, flags, texts); r < 0)
            return r;
        std::lock_guard lock(self.mutex_);
        const char* path = sd_bus_message_get_path(m);
        Loop* loop = self.Find(path);
        self.calls_.push_back("Mount loop" + std::to_string(LoopOf(path)));
        if (!self.script_.mountError.empty())
            return sd_bus_error_set(error, self.script_.mountError.c_str(), "scripted");
        if (!loop->mountPoints.empty())
            return sd_bus_error_set(error, "org.freedesktop.UDisks2.Error.AlreadyMounted",
                                    "already mounted");
        const std::filesystem::path point = self.media_ / ("loop" + std::to_string(LoopOf(path)));
        std::filesystem::create_directories(point);
        loop->mountPoints.push_back(point.string());
        loop->mountOptions = texts["options"];
        return sd_bus_reply_method_return(m, "s", point.c_str());
    }

    static int Unmount(sd_bus_message* m, void* userdata, sd_bus_error* error) {
        ScriptedUdisks& self = *Self(userdata);
        std::lock_guard lock(self.mutex_);
        const char* path = sd_bus_message_get_path(m);
        Loop* loop = self.Find(path);
        self.calls_.push_back("Unmount loop" + std::to_string(LoopOf(path)));
        if (!self.script_.unmountError.empty())
            return sd_bus_error_set(error, self.script_.unmountError.c_str(), "scripted");
        if (loop->mountPoints.empty())
            return sd_bus_error_set(error, "org.freedesktop.UDisks2.Error.NotMounted",
                                    "not mounted");
        std::error_code ec;
        std::filesystem::remove(loop->mountPoints.back(), ec);
        loop->mountPoints.pop_back();
        return sd_bus_reply_method_return(m, "");
    }

    // Stricter than udisks: a mounted loop device is not deleted.
    static int Delete(sd_bus_message* m, void* userdata, sd_bus_error* error) {
        ScriptedUdisks& self = *Self(userdata);
        std::lock_guard lock(self.mutex_);
        const char* path = sd_bus_message_get_path(m);
        self.calls_.push_back("Delete loop" + std::to_string(LoopOf(path)));
        if (!self.Find(path)->mountPoints.empty())
            return sd_bus_error_set(error, "org.freedesktop.UDisks2.Error.DeviceBusy", "mounted");
        self.loops_.erase(LoopOf(path));
        return sd_bus_reply_method_return(m, "");
    }

    static constexpr uint64_t kUnprivileged = SD_BUS_VTABLE_UNPRIVILEGED;
    static constexpr uint64_t kConst = SD_BUS_VTABLE_PROPERTY_CONST;
    static constexpr uint64_t kChanging = SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE;
    static constexpr sd_bus_vtable kManagerTable[] = {
        SD_BUS_VTABLE_START(0), SD_BUS_PROPERTY("Version", "s", GetVersion, 0, kConst),
        SD_BUS_METHOD("LoopSetup", "ha{sv}", "o", LoopSetup, kUnprivileged), SD_BUS_VTABLE_END};
    static constexpr sd_bus_vtable kBlockTable[] = {
        SD_BUS_VTABLE_START(0), SD_BUS_PROPERTY("Device", "ay", GetDevice, 0, kConst),
        SD_BUS_VTABLE_END};
    static constexpr sd_bus_vtable kLoopTable[] = {
        SD_BUS_VTABLE_START(0), SD_BUS_PROPERTY("BackingFile", "ay", GetBackingFile, 0, kChanging),
        SD_BUS_METHOD("Delete", "a{sv}", "", Delete, kUnprivileged), SD_BUS_VTABLE_END};
    static constexpr sd_bus_vtable kFilesystemTable[] = {
        SD_BUS_VTABLE_START(0), SD_BUS_PROPERTY("MountPoints", "aay", GetMountPoints, 0, kChanging),
        SD_BUS_METHOD("Mount", "a{sv}", "s", Mount, kUnprivileged),
        SD_BUS_METHOD("Unmount", "a{sv}", "", Unmount, kUnprivileged), SD_BUS_VTABLE_END};

    std::filesystem::path media_;
    sd_bus* bus_ = nullptr;
    int wake_ = -1;
    std::thread worker_;
    std::string error_;
    mutable std::mutex mutex_;
    Script script_;
    std::map<int, Loop> loops_;
    int next_ = 0;
    std::vector<std::string> calls_;
};

}  // namespace plattmix::test
