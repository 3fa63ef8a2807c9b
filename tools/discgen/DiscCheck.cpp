#include "DiscCheck.h"

#include <cstdio>
#include <system_error>
#include <vector>

#include "Crc32.h"

namespace plattmix::discgen {

using audiocd::Crc32;

namespace {

// Reads a whole small file; nothing when it cannot be read.
bool ReadText(const std::filesystem::path& path, std::string& text) {
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (f == nullptr) {
        return false;
    }
    char buffer[4096];
    size_t n = 0;
    text.clear();
    while ((n = std::fread(buffer, 1, sizeof buffer, f)) > 0) {
        text.append(buffer, n);
    }
    const bool ok = std::ferror(f) == 0;
    std::fclose(f);
    return ok;
}

// Size first (cheap), then the checksum of the content.
std::string CheckBin(const FileInfo& file) {
    std::error_code ec;
    const auto size = std::filesystem::file_size(file.path, ec);
    if (ec || size != static_cast<uintmax_t>(file.bytes)) {
        return "Fehlt oder falsche Groesse: " + file.path.string();
    }
    std::FILE* f = std::fopen(file.path.c_str(), "rb");
    if (f == nullptr) {
        return "Kann nicht geoeffnet werden: " + file.path.string();
    }
    std::vector<uint8_t> buffer(1 << 20);
    Crc32 crc;
    size_t n = 0;
    while ((n = std::fread(buffer.data(), 1, buffer.size(), f)) > 0) {
        crc.Update(std::span<const uint8_t>(buffer.data(), n));
    }
    const bool readOk = std::ferror(f) == 0;
    std::fclose(f);
    if (!readOk || crc.Value() != file.crc32) {
        return "Inhalt weicht ab: " + file.path.string();
    }
    return "";
}

}  // namespace

std::string CheckDiscFiles(const DiscDescription& expected) {
    std::string cue;
    if (!ReadText(expected.cuePath, cue) || cue != expected.cueText) {
        return "CUE-Datei fehlt oder wurde geaendert: " + expected.cuePath.string();
    }
    for (const FileInfo& file : expected.files) {
        if (std::string why = CheckBin(file); !why.empty()) {
            return why;
        }
    }
    return "";
}

}  // namespace plattmix::discgen
