#include "Mp4FreeformTags.h"

#include <cstdint>
#include <cstring>
#include <fstream>
#include <optional>
#include <span>

namespace plattmix::encode {
namespace {

struct Box {
    size_t start = 0;  // of its header
    size_t size = 0;   // header included
    size_t body = 0;   // where its children start
};

uint32_t ReadBig32(const uint8_t* at) {
    return uint32_t{at[0]} << 24 | uint32_t{at[1]} << 16 | uint32_t{at[2]} << 8 | at[3];
}

void WriteBig32(uint8_t* at, uint32_t value) {
    for (int i = 0; i < 4; ++i)
        at[i] = static_cast<uint8_t>(value >> (24 - 8 * i));
}

// The child box of the given type among [from, to) of bytes; 32-bit sizes only, as the boxes
// around the tags always have.
std::optional<Box> Child(std::span<const uint8_t> bytes, size_t from, size_t to, const char* type) {
    while (from + 8 <= to) {
        const size_t size = ReadBig32(&bytes[from]);
        if (size < 8 || from + size > to)
            return std::nullopt;
        if (std::memcmp(&bytes[from + 4], type, 4) == 0) {
            // "meta" is a full box: version and flags before its children.
            const size_t body = from + 8 + (std::strcmp(type, "meta") == 0 ? 4 : 0);
            return Box{from, size, body};
        }
        from += size;
    }
    return std::nullopt;
}

void AppendBox(std::vector<uint8_t>& out, const char* type, const std::string& payload,
               size_t prefixZeros) {
    const size_t at = out.size();
    out.resize(at + 8 + prefixZeros);
    WriteBig32(&out[at], static_cast<uint32_t>(8 + prefixZeros + payload.size()));
    std::memcpy(&out[at + 4], type, 4);
    out.insert(out.end(), payload.begin(), payload.end());
}

std::vector<uint8_t> FreeformEntry(const std::string& name, const std::string& value) {
    std::vector<uint8_t> inner;
    AppendBox(inner, "mean", "com.apple.iTunes", 4);
    AppendBox(inner, "name", name, 4);
    // Type 1 (UTF-8), then the locale, both 32 bits.
    const size_t data = inner.size();
    AppendBox(inner, "data", value, 8);
    inner[data + 11] = 1;
    std::vector<uint8_t> entry;
    AppendBox(entry, "----", std::string(inner.begin(), inner.end()), 0);
    return entry;
}

// The last top-level box's start and size; nothing when the sizes do not add up.
std::optional<std::pair<uint64_t, uint64_t>> LastTopLevelBox(std::ifstream& file, uint64_t length) {
    uint64_t at = 0;
    while (true) {
        uint8_t header[16];
        file.seekg(static_cast<std::streamoff>(at));
        if (!file.read(reinterpret_cast<char*>(header), 8))
            return std::nullopt;
        uint64_t size = ReadBig32(header);
        if (size == 1) {
            if (!file.read(reinterpret_cast<char*>(header + 8), 8))
                return std::nullopt;
            size = uint64_t{ReadBig32(header + 8)} << 32 | ReadBig32(header + 12);
        } else if (size == 0) {
            size = length - at;
        }
        if (size < 8 || at + size > length)
            return std::nullopt;
        if (at + size == length)
            return std::make_pair(at, size);
        at += size;
    }
}

}  // namespace

bool AddMp4FreeformTags(const std::string& path,
                        const std::vector<std::pair<std::string, std::string>>& tags) {
    std::vector<uint8_t> moov;
    uint64_t moovStart = 0;
    {
        std::ifstream file(path, std::ios::binary | std::ios::ate);
        if (!file)
            return false;
        const auto length = static_cast<uint64_t>(file.tellg());
        const auto last = LastTopLevelBox(file, length);
        if (!last || last->second > (uint64_t{1} << 30))
            return false;
        moovStart = last->first;
        moov.resize(static_cast<size_t>(last->second));
        file.seekg(static_cast<std::streamoff>(moovStart));
        if (!file.read(reinterpret_cast<char*>(moov.data()),
                       static_cast<std::streamsize>(moov.size())) ||
            std::memcmp(&moov[4], "moov", 4) != 0 || ReadBig32(moov.data()) != moov.size())
            return false;
    }
    const auto udta = Child(moov, 8, moov.size(), "udta");
    const auto meta = udta ? Child(moov, udta->body, udta->start + udta->size, "meta") : udta;
    const auto ilst = meta ? Child(moov, meta->body, meta->start + meta->size, "ilst") : meta;
    if (!ilst)
        return false;
    std::vector<uint8_t> added;
    for (const auto& [name, value] : tags) {
        const auto entry = FreeformEntry(name, value);
        added.insert(added.end(), entry.begin(), entry.end());
    }
    moov.insert(moov.begin() + static_cast<std::ptrdiff_t>(ilst->start + ilst->size), added.begin(),
                added.end());
    // Every box around the new entries grows by their size.
    for (const Box& box : {Box{0, moov.size() - added.size(), 0}, *udta, *meta, *ilst}) {
        WriteBig32(&moov[box.start], static_cast<uint32_t>(box.size + added.size()));
    }
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(static_cast<std::streamoff>(moovStart));
    file.write(reinterpret_cast<const char*>(moov.data()),
               static_cast<std::streamsize>(moov.size()));
    return static_cast<bool>(file.flush());
}

}  // namespace plattmix::encode
