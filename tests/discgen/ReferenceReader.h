// A second, deliberately simple reading of a generated disc for the tests: parses the CUE
// sheet on its own, maps disc addresses to BIN bytes and checksums each track's span with a
// byte-wise CRC-32, sharing no code with the generator.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace plattmix::discgen::test {

struct RefTrack {
    int number = 0;
    bool audio = true;
    int session = 1;
    int64_t startLba = 0;
    int64_t length = 0;
    uint32_t crc = 0;
    std::string title;
    std::string performer;
};

struct RefDisc {
    std::string title;
    std::string performer;
    std::vector<RefTrack> tracks;
    std::vector<int64_t> sessionLeadOuts;
    std::string error;  // empty when the sheet made sense
};

inline uint32_t RefCrc(uint32_t crc, const std::string& bytes) {
    static const std::array<uint32_t, 256> table = [] {
        std::array<uint32_t, 256> t{};
        for (uint32_t i = 0; i < 256; ++i) {
            uint32_t c = i;
            for (int k = 0; k < 8; ++k) {
                c = (c & 1u) ? (c >> 1) ^ 0xEDB88320u : c >> 1;
            }
            t[i] = c;
        }
        return t;
    }();
    crc = ~crc;
    for (const char ch : bytes) {
        crc = table[(crc ^ static_cast<uint8_t>(ch)) & 0xFFu] ^ (crc >> 8);
    }
    return ~crc;
}

// A whole file's bytes.
inline std::string RefFileBytes(const std::filesystem::path& path) {
    std::error_code ec;
    const auto size = std::filesystem::file_size(path, ec);
    std::string bytes(ec ? 0 : static_cast<size_t>(size), '\0');
    std::ifstream in(path, std::ios::binary);
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return bytes;
}

inline int64_t RefSectors(const std::string& msf) {
    return std::stoll(msf.substr(0, 2)) * 4500 + std::stoll(msf.substr(3, 2)) * 75 +
           std::stoll(msf.substr(6, 2));
}

inline std::string RefQuoted(std::istringstream& in) {
    std::string rest;
    std::getline(in, rest);
    const auto first = rest.find('"');
    const auto last = rest.rfind('"');
    return first == std::string::npos || last == first ? rest
                                                       : rest.substr(first + 1, last - first - 1);
}

// One piece of the disc: count sectors from a file (or zeros when file is empty).
struct RefExtent {
    int64_t lba = 0;
    int64_t count = 0;
    std::filesystem::path file;
    int64_t sectorBytes = 2352;
    int64_t fileSector = 0;
};

struct RefCueTrack {
    RefTrack info;
    size_t file = 0;
    int64_t pregap = 0;
    int64_t index0 = -1;
    int64_t index1 = -1;
};

inline std::vector<RefCueTrack> RefParse(const std::filesystem::path& cue, RefDisc& disc,
                                         std::vector<std::filesystem::path>& files) {
    std::ifstream in(cue);
    std::vector<RefCueTrack> tracks;
    int session = 1;
    for (std::string line; std::getline(in, line);) {
        std::istringstream words(line);
        std::string word;
        words >> word;
        if (word == "REM") {
            std::string what;
            words >> what >> session;
        } else if (word == "FILE") {
            files.push_back(cue.parent_path() / RefQuoted(words));
        } else if (word == "TRACK") {
            RefCueTrack t;
            std::string mode;
            words >> t.info.number >> mode;
            t.info.audio = mode == "AUDIO";
            t.info.session = session;
            t.file = files.size() - 1;
            tracks.push_back(t);
        } else if (word == "TITLE" || word == "PERFORMER") {
            std::string& field = tracks.empty() ? (word == "TITLE" ? disc.title : disc.performer)
                                                : (word == "TITLE" ? tracks.back().info.title
                                                                   : tracks.back().info.performer);
            field = RefQuoted(words);
        } else if (word == "PREGAP") {
            std::string msf;
            words >> msf;
            tracks.back().pregap = RefSectors(msf);
        } else if (word == "INDEX") {
            int index = 0;
            std::string msf;
            words >> index >> msf;
            (index == 0 ? tracks.back().index0 : tracks.back().index1) = RefSectors(msf);
        }
    }
    return tracks;
}

inline std::string RefReadSpan(const std::vector<RefExtent>& extents, int64_t lba, int64_t n) {
    std::string out;
    for (const RefExtent& e : extents) {
        const int64_t from = std::max(lba, e.lba);
        const int64_t to = std::min(lba + n, e.lba + e.count);
        if (from >= to) {
            continue;
        }
        if (e.file.empty()) {
            out.append(static_cast<size_t>((to - from) * e.sectorBytes), '\0');
            continue;
        }
        std::ifstream bin(e.file, std::ios::binary);
        bin.seekg((e.fileSector + from - e.lba) * e.sectorBytes);
        std::string bytes(static_cast<size_t>((to - from) * e.sectorBytes), '\0');
        bin.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        out += bytes;
    }
    return out;
}

// Lays the sheet's files out on the disc (a new session 11400 sectors after the previous
// lead-out) and checksums every track from INDEX 01 to the next track or the lead-out.
inline RefDisc ReadBack(const std::filesystem::path& cue) {
    RefDisc disc;
    std::vector<std::filesystem::path> files;
    std::vector<RefCueTrack> tracks = RefParse(cue, disc, files);
    std::vector<RefExtent> extents;
    int64_t lba = 0;
    for (size_t i = 0; i < tracks.size(); ++i) {
        RefCueTrack& t = tracks[i];
        const int64_t bytes = t.info.audio ? 2352 : 2048;
        if (i > 0 && t.info.session != tracks[i - 1].info.session) {
            disc.sessionLeadOuts.push_back(lba);
            lba += 11400;
        }
        const int64_t fileStart = t.index0 >= 0 ? t.index0 : t.index1;
        int64_t fileEnd = static_cast<int64_t>(std::filesystem::file_size(files[t.file])) / bytes;
        if (i + 1 < tracks.size() && tracks[i + 1].file == t.file) {
            const RefCueTrack& next = tracks[i + 1];
            fileEnd = next.index0 >= 0 ? next.index0 : next.index1;
        }
        if (t.pregap > 0) {
            extents.push_back({lba, t.pregap, {}, bytes, 0});
            lba += t.pregap;
        }
        t.info.startLba = lba + (t.index1 - fileStart);
        extents.push_back({lba, fileEnd - fileStart, files[t.file], bytes, fileStart});
        lba += fileEnd - fileStart;
    }
    disc.sessionLeadOuts.push_back(lba);
    for (size_t i = 0; i < tracks.size(); ++i) {
        const bool last =
            i + 1 == tracks.size() || tracks[i + 1].info.session != tracks[i].info.session;
        const size_t session = static_cast<size_t>(tracks[i].info.session - 1);
        const int64_t end = last ? disc.sessionLeadOuts[session] : tracks[i + 1].info.startLba;
        RefTrack& info = tracks[i].info;
        info.length = end - info.startLba;
        info.crc = RefCrc(0, RefReadSpan(extents, info.startLba, info.length));
        disc.tracks.push_back(info);
    }
    return disc;
}

}  // namespace plattmix::discgen::test
