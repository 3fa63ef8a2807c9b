#include "DriveAccess.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>

namespace plattmix::scsi {

namespace {

// The name for an id in /etc/group or /etc/passwd ("name:x:id:..."). The files are read
// directly rather than through the name service: device groups and the accounts that join
// them are local, and the programs that carry this into the test bed are linked statically.
std::string NameInFile(const char* file, unsigned id) {
    std::ifstream in(file);
    const std::string wanted = std::to_string(id);
    for (std::string line; std::getline(in, line);) {
        const auto first = line.find(':');
        const auto second = first == std::string::npos ? first : line.find(':', first + 1);
        const auto third = second == std::string::npos ? second : line.find(':', second + 1);
        if (third != std::string::npos && line.compare(second + 1, third - second - 1, wanted) == 0)
            return line.substr(0, first);
    }
    return {};
}

}  // namespace

std::optional<RefusedDrive> RefusedAccess(const std::string& node) {
    const int fd = ::open(node.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd >= 0) {
        ::close(fd);
        return std::nullopt;
    }
    if (errno != EACCES && errno != EPERM)
        return std::nullopt;
    RefusedDrive refused{node, {}, false, NameInFile("/etc/passwd", ::geteuid())};
    struct stat status {};
    if (::stat(node.c_str(), &status) == 0) {
        refused.group = NameInFile("/etc/group", status.st_gid);
        if (refused.group.empty())
            refused.group = std::to_string(status.st_gid);
        refused.groupGrants = (status.st_mode & S_IRGRP) != 0 && status.st_gid != 0;
    }
    return refused;
}

std::optional<RefusedDrive> RefusedFirstDrive(ISCSI& transport, const std::string& devDir) {
    if (transport.DriveCount() < 1)
        return std::nullopt;
    int16_t first = 1;
    const std::string name = transport.DriveChar(transport.DriveHandle(first));
    if (name.empty() || name.find('/') != std::string::npos)
        return std::nullopt;
    return RefusedAccess(devDir + "/" + name);
}

std::string RefusedAccessMessage(const RefusedDrive& refused) {
    std::string text = "Auf das Laufwerk " + refused.node + " besteht kein Zugriff.\r\n";
    if (refused.group.empty() || !refused.groupGrants)
        return text + "Die Zugriffsrechte des Laufwerks kann nur der Administrator ändern.";
    text += "Zugriff haben die Mitglieder der Gruppe \"" + refused.group +
            "\". Nehmen Sie Ihr Benutzerkonto in diese Gruppe auf";
    if (!refused.user.empty())
        text += " (als Administrator: adduser " + refused.user + " " + refused.group + ")";
    return text + " und melden Sie sich danach neu an.";
}

}  // namespace plattmix::scsi
