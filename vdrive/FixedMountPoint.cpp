#include "FixedMountPoint.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace plattmix::vdrive {

std::string UserMountPointLink() {
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && runtime[0] == '/')
        return std::string(runtime) + "/plattmix/L";
    const std::string uid = std::to_string(getuid());
    std::error_code ec;
    if (std::filesystem::is_directory("/run/user/" + uid, ec))
        return "/run/user/" + uid + "/plattmix/L";
    const char* home = std::getenv("HOME");
    return std::string(home != nullptr ? home : "") + "/.cache/plattmix/L";
}

}  // namespace plattmix::vdrive
