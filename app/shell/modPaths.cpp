#include "modPaths.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace plattmix::shell {

namespace {

bool IsFolder(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::is_directory(path, error);
}

std::string HomeFromPasswordDatabase() {
    std::string buffer(16384, '\0');
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 ||
        found == nullptr || found->pw_dir == nullptr) {
        return {};
    }
    return found->pw_dir;
}

}  // namespace

std::string AddBackslash(const std::string& path) {
    return path.ends_with('/') ? path : path + "/";
}

void SplitPath(const std::string& fullPath, std::string& folder, std::string& fileName) {
    if (fullPath.empty()) {
        return;
    }
    // The folder loses the last component; the root keeps its "/".
    const size_t lastSlash = fullPath.rfind('/');
    std::string parent;
    if (lastSlash == 0) {
        parent = "/";
    } else if (lastSlash != std::string::npos) {
        parent = fullPath.substr(0, lastSlash);
    }
    if (parent != fullPath) {
        folder = parent;
    }
    // The name is the last component; a trailing "/" stays with it ("b/" of "/a/b/").
    const size_t searchEnd =
        fullPath.size() > 1 && fullPath.ends_with('/') ? fullPath.size() - 2 : fullPath.size() - 1;
    const size_t nameSlash = fullPath.rfind('/', searchEnd);
    fileName = nameSlash == std::string::npos || fullPath.size() == 1
                   ? fullPath
                   : fullPath.substr(nameSlash + 1);
}

std::vector<FileFilter> ParseFilter(const std::string& filter) {
    std::vector<std::string> parts;
    size_t start = 0;
    while (start <= filter.size()) {
        const size_t bar = filter.find('|', start);
        const size_t end = bar == std::string::npos ? filter.size() : bar;
        parts.push_back(filter.substr(start, end - start));
        start = end + 1;
    }
    // A description without its pattern (also the empty piece after a trailing "|") ends the
    // list, as the double NUL does for the dialog.
    std::vector<FileFilter> pairs;
    for (size_t i = 0; i + 1 < parts.size(); i += 2) {
        if (parts[i].empty() && parts[i + 1].empty()) {
            break;
        }
        pairs.push_back({parts[i], parts[i + 1]});
    }
    return pairs;
}

std::string ExecutableFolder() {
    std::error_code error;
    const auto executable = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error || !executable.has_parent_path()) {
        return "./";
    }
    return AddBackslash(executable.parent_path().string());
}

std::string LanguagesFolder() {
    const std::filesystem::path beside = std::filesystem::path(ExecutableFolder()) / "Languages";
    if (IsFolder(beside)) {
        return AddBackslash(beside.string());
    }
    const auto installed =
        (std::filesystem::path(ExecutableFolder()) / ".." / "share" / "plattmix" / "Languages")
            .lexically_normal();
    if (IsFolder(installed)) {
        return AddBackslash(installed.string());
    }
    return AddBackslash(beside.string());
}

std::string HomeFolder() {
    const char* home = std::getenv("HOME");
    std::string folder = home != nullptr ? home : "";
    if (folder.empty()) {
        folder = HomeFromPasswordDatabase();
    }
    return folder.empty() ? "/" : AddBackslash(folder);
}

}  // namespace plattmix::shell
