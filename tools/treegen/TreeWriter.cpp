#include "TreeWriter.h"

#include <algorithm>

#include "FileContent.h"

namespace plattmix::treegen {

namespace fs = std::filesystem;

TreeWriter::TreeWriter(fs::path root) : root_(std::move(root)) {
    fs::create_directories(root_);
}

void TreeWriter::Folder(const std::string& relative) {
    Parents(relative);
    if (fs::create_directory(root_ / relative))
        made_.folders.push_back(relative);
}

void TreeWriter::File(const std::string& relative, int64_t size, uint64_t seed) {
    Parents(relative);
    WriteContentFile(root_ / relative, size, seed);
    made_.files.push_back(relative);
    made_.bytes += size;
}

void TreeWriter::Link(const std::string& relative, const std::string& target) {
    Parents(relative);
    fs::create_symlink(target, root_ / relative);
    made_.links.push_back(relative);
}

void TreeWriter::Parents(const std::string& relative) {
    for (size_t slash = relative.find('/'); slash != std::string::npos;
         slash = relative.find('/', slash + 1)) {
        const std::string parent = relative.substr(0, slash);
        if (std::find(made_.folders.begin(), made_.folders.end(), parent) == made_.folders.end())
            Folder(parent);
    }
}

}  // namespace plattmix::treegen
