#include "UdisksBus.h"

#include <systemd/sd-bus.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string_view>
#include <utility>

namespace plattmix::vdrive {

namespace {

constexpr const char* kService = "org.freedesktop.UDisks2";
constexpr const char* kRoot = "/org/freedesktop/UDisks2";
constexpr const char* kManagerPath = "/org/freedesktop/UDisks2/Manager";
constexpr const char* kManager = "org.freedesktop.UDisks2.Manager";
constexpr const char* kBlock = "org.freedesktop.UDisks2.Block";
constexpr const char* kLoop = "org.freedesktop.UDisks2.Loop";
constexpr const char* kFilesystem = "org.freedesktop.UDisks2.Filesystem";

// Starting udisks on demand takes a moment; a call that may ask the user for a password (polkit)
// gets the time to type it.
constexpr uint64_t kAnswerTimeout = 10'000'000;
constexpr uint64_t kActionTimeout = 120'000'000;

struct MessageOwner {
    sd_bus_message* message = nullptr;
    ~MessageOwner() { sd_bus_message_unref(message); }
};

struct ErrorOwner {
    sd_bus_error error = SD_BUS_ERROR_NULL;
    ~ErrorOwner() { sd_bus_error_free(&error); }
    std::string Text(int code) const {
        if (error.name != nullptr)
            return std::string(error.name) + ": " + (error.message ? error.message : "");
        return std::strerror(-code);
    }
};

// udisks sends paths as byte arrays that end in a NUL byte.
bool ReadByteString(sd_bus_message* m, std::string& text) {
    const void* data = nullptr;
    size_t size = 0;
    if (sd_bus_message_read_array(m, 'y', &data, &size) < 0)
        return false;
    std::string_view bytes(static_cast<const char*>(data), size);
    if (const size_t end = bytes.find('\0'); end != std::string_view::npos)
        bytes = bytes.substr(0, end);
    text.assign(bytes);
    return true;
}

// One property's value: the three udisks shows that matter here, others skipped.
int ReadProperty(sd_bus_message* m, std::string_view interface, UdisksBlock& block) {
    const char* name = nullptr;
    int r = sd_bus_message_read(m, "s", &name);
    if (r < 0)
        return r;
    const std::string_view property = name;
    std::string* text = nullptr;
    if (interface == kBlock && property == "Device")
        text = &block.device;
    else if (interface == kLoop && property == "BackingFile")
        text = &block.backingFile;
    if (text != nullptr) {
        if ((r = sd_bus_message_enter_container(m, 'v', "ay")) < 0)
            return r;
        if (!ReadByteString(m, *text))
            return -EBADMSG;
        return sd_bus_message_exit_container(m);
    }
    if (interface == kFilesystem && property == "MountPoints") {
        if ((r = sd_bus_message_enter_container(m, 'v', "aay")) < 0 ||
            (r = sd_bus_message_enter_container(m, 'a', "ay")) < 0)
            return r;
        for (;;) {
            if ((r = sd_bus_message_at_end(m, false)) != 0)
                break;
            std::string point;
            if (!ReadByteString(m, point))
                return -EBADMSG;
            block.mountPoints.push_back(point);
        }
        if (r < 0 || (r = sd_bus_message_exit_container(m)) < 0)
            return r;
        return sd_bus_message_exit_container(m);
    }
    return sd_bus_message_skip(m, "v");
}

// One object of GetManagedObjects: its path and a{sa{sv}}.
int ReadObject(sd_bus_message* m, UdisksBlock& block) {
    const char* path = nullptr;
    int r = sd_bus_message_read(m, "o", &path);
    if (r < 0 || (r = sd_bus_message_enter_container(m, 'a', "{sa{sv}}")) < 0)
        return r;
    block.object = path;
    while ((r = sd_bus_message_enter_container(m, 'e', "sa{sv}")) > 0) {
        const char* interface = nullptr;
        if ((r = sd_bus_message_read(m, "s", &interface)) < 0 ||
            (r = sd_bus_message_enter_container(m, 'a', "{sv}")) < 0)
            return r;
        if (std::string_view(interface) == kFilesystem)
            block.hasFilesystem = true;
        while ((r = sd_bus_message_enter_container(m, 'e', "sv")) > 0) {
            if ((r = ReadProperty(m, interface, block)) < 0 ||
                (r = sd_bus_message_exit_container(m)) < 0)
                return r;
        }
        if (r < 0 || (r = sd_bus_message_exit_container(m)) < 0 ||
            (r = sd_bus_message_exit_container(m)) < 0)
            return r;
    }
    if (r < 0)
        return r;
    return sd_bus_message_exit_container(m);
}

}  // namespace

struct UdisksBus::Connection {
    sd_bus* bus = nullptr;
    ~Connection() { sd_bus_flush_close_unref(bus); }

    // Calls a method; append adds the arguments. The reply is left in reply.
    int Call(const char* path, const char* interface, const char* member, uint64_t timeout,
             const std::function<int(sd_bus_message*)>& append, MessageOwner& reply,
             std::string& why) {
        MessageOwner call;
        int r =
            sd_bus_message_new_method_call(bus, &call.message, kService, path, interface, member);
        if (r >= 0 && append)
            r = append(call.message);
        if (r < 0) {
            why = std::string(member) + ": " + std::strerror(-r);
            return r;
        }
        ErrorOwner error;
        r = sd_bus_call(bus, call.message, timeout, &error.error, &reply.message);
        if (r < 0)
            why = error.Text(r);
        return r;
    }

    // A call whose arguments end in an empty or read-only option list and whose reply is a
    // string or object path (or nothing).
    UdisksReply Action(const char* path, const char* interface, const char* member,
                       const char* replyType, const std::function<int(sd_bus_message*)>& append) {
        MessageOwner reply;
        UdisksReply result;
        if (Call(path, interface, member, kActionTimeout, append, reply, result.error) < 0)
            return result;
        const char* value = nullptr;
        if (replyType != nullptr) {
            const int r = sd_bus_message_read(reply.message, replyType, &value);
            if (r < 0) {
                result.error = std::string(member) + ": " + std::strerror(-r);
                return result;
            }
        }
        result.ok = true;
        result.value = value != nullptr ? value : "";
        return result;
    }
};

UdisksBus::UdisksBus(std::unique_ptr<Connection> connection) : connection_(std::move(connection)) {}

UdisksBus::~UdisksBus() = default;

std::unique_ptr<UdisksBus> UdisksBus::Connect(const std::string& address, std::string& why) {
    auto connection = std::make_unique<Connection>();
    int r = 0;
    if (address.empty()) {
        r = sd_bus_open_system(&connection->bus);
    } else if ((r = sd_bus_new(&connection->bus)) >= 0 &&
               (r = sd_bus_set_address(connection->bus, address.c_str())) >= 0 &&
               (r = sd_bus_set_bus_client(connection->bus, 1)) >= 0) {
        r = sd_bus_start(connection->bus);
    }
    if (r < 0) {
        why = std::string("system bus: ") + std::strerror(-r);
        return nullptr;
    }
    return std::unique_ptr<UdisksBus>(new UdisksBus(std::move(connection)));
}

bool UdisksBus::Answers(std::string& why) {
    MessageOwner reply;
    const auto append = [](sd_bus_message* m) {
        return sd_bus_message_append(m, "ss", kManager, "Version");
    };
    return connection_->Call(kManagerPath, "org.freedesktop.DBus.Properties", "Get", kAnswerTimeout,
                             append, reply, why) >= 0;
}

std::vector<UdisksBlock> UdisksBus::Blocks(std::string& why) {
    MessageOwner reply;
    if (connection_->Call(kRoot, "org.freedesktop.DBus.ObjectManager", "GetManagedObjects",
                          kAnswerTimeout, nullptr, reply, why) < 0)
        return {};
    std::vector<UdisksBlock> blocks;
    sd_bus_message* m = reply.message;
    int r = sd_bus_message_enter_container(m, 'a', "{oa{sa{sv}}}");
    while (r >= 0 && (r = sd_bus_message_enter_container(m, 'e', "oa{sa{sv}}")) > 0) {
        UdisksBlock block;
        if ((r = ReadObject(m, block)) < 0 || (r = sd_bus_message_exit_container(m)) < 0)
            break;
        if (!block.device.empty())
            blocks.push_back(std::move(block));
    }
    if (r < 0) {
        why = std::string("GetManagedObjects: ") + std::strerror(-r);
        return {};
    }
    return blocks;
}

UdisksReply UdisksBus::LoopSetup(int fd) {
    return connection_->Action(kManagerPath, kManager, "LoopSetup", "o", [fd](sd_bus_message* m) {
        return sd_bus_message_append(m, "ha{sv}", fd, 2, "read-only", "b", 1, "no-part-scan", "b",
                                     1);
    });
}

UdisksReply UdisksBus::Mount(const std::string& object) {
    return connection_->Action(object.c_str(), kFilesystem, "Mount", "s", [](sd_bus_message* m) {
        return sd_bus_message_append(m, "a{sv}", 1, "options", "s", "ro");
    });
}

UdisksReply UdisksBus::Unmount(const std::string& object) {
    return connection_->Action(
        object.c_str(), kFilesystem, "Unmount", nullptr,
        [](sd_bus_message* m) { return sd_bus_message_append(m, "a{sv}", 0); });
}

UdisksReply UdisksBus::Delete(const std::string& object) {
    return connection_->Action(object.c_str(), kLoop, "Delete", nullptr, [](sd_bus_message* m) {
        return sd_bus_message_append(m, "a{sv}", 0);
    });
}

}  // namespace plattmix::vdrive
