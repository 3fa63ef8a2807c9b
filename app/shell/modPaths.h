// Path helpers and where the program's own files are.
#pragma once

#include <string>
#include <vector>

namespace plattmix::shell {

// path with "/" appended unless it already ends in one; "" becomes "/".
std::string AddBackslash(const std::string& path);

// For a non-empty path: folder gets the path without its last component (no trailing "/"
// except for the root "/"), fileName the last component. Both stay as they are for "".
void SplitPath(const std::string& fullPath, std::string& folder, std::string& fileName);

// "ISO Dateien|*.iso|Alle|*.*" as description/pattern pairs.
struct FileFilter {
    std::string description;
    std::string pattern;
};
std::vector<FileFilter> ParseFilter(const std::string& filter);

// The folder of the running executable, ending in "/".
std::string ExecutableFolder();
// "Languages/" beside the executable in a build tree, <prefix>/share/plattmix/Languages/ when
// installed (the first that exists), ending in "/".
std::string LanguagesFolder();

// The user's home folder, ending in "/" (stands in for the system drive's root).
std::string HomeFolder();

}  // namespace plattmix::shell
