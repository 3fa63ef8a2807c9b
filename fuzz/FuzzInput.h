// What the fuzz targets share: the input cut into length-prefixed parts, scratch files for
// parsers that read files by name, and the rule that every refusal says why.
#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <string_view>

namespace plattmix::fuzz {

// The input as parts, each a two-byte big-endian length and that many bytes; a length beyond the
// end takes the rest. Parts the input does not reach are empty.
class Parts {
  public:
    Parts(const uint8_t* data, size_t size) : rest_(data, size) {}

    std::span<const uint8_t> Next() {
        if (rest_.size() < 2)
            return rest_ = {};
        const size_t length =
            std::min<size_t>((size_t{rest_[0]} << 8) | rest_[1], rest_.size() - 2);
        const auto part = rest_.subspan(2, length);
        rest_ = rest_.subspan(2 + length);
        return part;
    }
    uint8_t NextByte() {
        const auto part = Next();
        return part.empty() ? 0 : part[0];
    }

  private:
    std::span<const uint8_t> rest_;
};

inline std::string_view AsText(std::span<const uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// A folder of this process (in /dev/shm when there is one), removed when the process ends.
inline const std::string& ScratchFolder() {
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
    static const Scratch scratch;
    return scratch.path;
}

// Writes bytes into the scratch folder's file name, replacing it, and answers its path.
inline std::string ScratchFile(std::string_view name, std::string_view bytes) {
    const std::string path = ScratchFolder() + std::string(name);
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!file.write(bytes.data(), static_cast<std::streamsize>(bytes.size())) || !file.flush())
        std::abort();
    return path;
}

// Whether a parser refused its input; a refusal without a reason is a finding.
template <typename Result>
bool Refused(const Result& result) {
    if (!result.ok() && result.Error().empty())
        std::abort();
    return !result.ok();
}

}  // namespace plattmix::fuzz
