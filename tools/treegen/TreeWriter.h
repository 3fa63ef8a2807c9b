// Writes the entries of a fixture below its root and keeps the record of what it made.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "MadeTree.h"

namespace plattmix::treegen {

class TreeWriter {
  public:
    // Creates root when it is missing.
    explicit TreeWriter(std::filesystem::path root);

    // Each takes a path relative to the root; folders above it are created (and recorded).
    void Folder(const std::string& relative);
    void File(const std::string& relative, int64_t size, uint64_t seed);
    void Link(const std::string& relative, const std::string& target);

    const std::filesystem::path& Root() const { return root_; }
    const MadeTree& Made() const { return made_; }

  private:
    void Parents(const std::string& relative);

    std::filesystem::path root_;
    MadeTree made_;
};

}  // namespace plattmix::treegen
