// Bytes that make no sense as any file: what a damaged or foreign file holds instead of text.
#pragma once

#include <cstddef>
#include <string>

namespace plattmix::test {

// size bytes of every value, in no order a text has.
inline std::string JunkBytes(size_t size) {
    std::string junk(size, '\0');
    for (size_t i = 0; i < size; ++i)
        junk[i] = static_cast<char>((i * 7919 + i / 13) & 0xFF);
    return junk;
}

}  // namespace plattmix::test
