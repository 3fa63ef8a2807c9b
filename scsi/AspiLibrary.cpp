#include "AspiLibrary.h"

#include <filesystem>
#include <system_error>

namespace plattmix::scsi {

namespace fs = std::filesystem;

std::vector<std::string> AspiLibraryCandidates(const std::string& programFolder) {
    std::vector<std::string> candidates;
    if (!programFolder.empty()) {
        const fs::path folder(programFolder);
        candidates.push_back((folder / kAspiLibraryName).string());
        candidates.push_back(
            (folder.parent_path() / PLATTMIX_ASPI_INSTALL_SUBDIR / kAspiLibraryName).string());
    }
    candidates.push_back((fs::path(PLATTMIX_ASPI_INSTALL_DIR) / kAspiLibraryName).string());
    candidates.push_back((fs::path(PLATTMIX_ASPI_BUILD_DIR) / kAspiLibraryName).string());
    return candidates;
}

std::string FindAspiLibrary() {
    std::error_code ec;
    const fs::path program = fs::read_symlink("/proc/self/exe", ec);
    for (const auto& candidate :
         AspiLibraryCandidates(ec ? std::string() : program.parent_path().string())) {
        if (fs::is_regular_file(candidate, ec))
            return candidate;
    }
    return kAspiLibraryName;
}

}  // namespace plattmix::scsi
