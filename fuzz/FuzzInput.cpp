#include "FuzzInput.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace plattmix::fuzz {

namespace {

// The folder, removed when the process ends.
struct Scratch {
    Scratch() {
        const char* base = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
        path = std::string(base) + "/plattmix-fuzz-" + std::to_string(getpid()) + "/";
        mkdir(path.c_str(), 0700);
    }
    ~Scratch() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    std::string path;
};

}  // namespace

const std::string& ScratchFolder() {
    static const Scratch scratch;
    return scratch.path;
}

std::string ScratchFile(std::span<const uint8_t> bytes, std::string_view suffix) {
    const std::string path = ScratchFolder() + "input" + std::string(suffix);
    FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) {
        std::abort();
    }
    if (!bytes.empty() && std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size()) {
        std::abort();
    }
    std::fclose(file);
    return path;
}

}  // namespace plattmix::fuzz
