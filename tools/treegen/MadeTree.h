// What a tree fixture made below its root: paths relative to the root, "/"-separated.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace plattmix::treegen {

struct MadeTree {
    std::vector<std::string> folders;  // parents before their sub-folders
    std::vector<std::string> files;
    std::vector<std::string> links;
    int64_t bytes = 0;  // the files' sizes added up
};

}  // namespace plattmix::treegen
