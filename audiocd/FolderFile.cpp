#include "FolderFile.h"

#include "FileIo.h"

namespace plattmix::audiocd {

std::string WriteFileInFolder(const std::string& folder, const std::string& name,
                              std::string_view bytes) {
    const bool slash = !folder.empty() && folder.back() == '/';
    const std::string path = folder + (slash ? "" : "/") + name;
    if (shell::WriteFileAtomically(path, bytes)) {
        return {};
    }
    return "Die Datei " + path + " lässt sich nicht schreiben.";
}

}  // namespace plattmix::audiocd
