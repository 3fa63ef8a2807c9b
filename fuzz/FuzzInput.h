// What the fuzz targets share: the input cut into length-prefixed parts, and a scratch file that
// parsers which read files by name are given.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace plattmix::fuzz {

// The input as parts, each a two-byte big-endian length and that many bytes; a length beyond the
// end takes the rest. Parts the input does not reach are empty.
class Parts {
  public:
    Parts(const uint8_t* data, size_t size) : rest_(data, size) {}

    std::span<const uint8_t> Next() {
        if (rest_.size() < 2) {
            rest_ = {};
            return {};
        }
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

// Writes bytes into this process's scratch file (in /dev/shm when there is one) and answers its
// path; the file is replaced on every call.
std::string ScratchFile(std::span<const uint8_t> bytes, std::string_view suffix = "");

// A folder of this process for files a target makes once.
const std::string& ScratchFolder();

}  // namespace plattmix::fuzz
